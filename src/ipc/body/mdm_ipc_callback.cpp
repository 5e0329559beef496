// SPDX-License-Identifier: Apache-2.0
//
// The bodies of message types 61 (application callbacks) and 63 (miscellaneous callbacks) are a
// head of four words and, if `type` is 0 or 1, a payload:
//
//   app_cb    num6, str8, str7
//   misc_cb   flag6, num7, str8
#include "ipc/body/handlers.hpp"

namespace mdm {
namespace {

// How the two callback categories differ.
struct Callback {
    Fields head;
    Fields payload;
    const char *title;  // the category's name in log lines
};

// Q-CALLBACK-1: `data_size` travels second and counts the whole body.
#define MDM_CALLBACK_HEAD_FIELDS(category) \
    MDM_FIELDS(mdm_##category##_info_t, #category, type, data_size, param, param2)
constexpr auto app_head_fields = MDM_CALLBACK_HEAD_FIELDS(app_cb);
// Q-CALLBACK-4: `str8` travels before `str7`.
constexpr auto app_fields = MDM_FIELDS(mdm_app_cb_info_t, "app_cb", num6, str8, str7);
constexpr auto misc_head_fields = MDM_CALLBACK_HEAD_FIELDS(misc_cb);
// Q-CALLBACK-5: one byte comes first, so the number behind it is unaligned.
constexpr auto misc_fields = MDM_FIELDS(mdm_misc_cb_info_t, "misc_cb", flag6, num7, str8);

// Both heads have the same layout and the same known types, so the handlers use those of app_cb.
using Head = mdm_app_cb_info_t;
static_assert(offsetof(Head, data_size) == offsetof(mdm_misc_cb_info_t, data_size));
static_assert(offsetof(Head, type) == offsetof(mdm_misc_cb_info_t, type));

// Q-CALLBACK-3: the head of an unknown callback type travels alone, and each handler logs a
// failure.
bool is_known(const Log &log, uint32_t type, const Callback &callback)
{
    if (mdm_app_cb_form(type) == MDM_FORM_APP_CB_DETAIL) {
        return true;
    }
    MDM_CRITICAL("Unknown %s callback type [%d]", callback.title, type);
    return false;
}

// Stores the body's size in `data_size`.
uint32_t size_of_callback(const Log &log, mdm_body_t *body, const Callback &callback)
{
    MDM_ENTER();
    MDM_FAIL_IF(body == nullptr, 0, "info is NULL");
    Head &head = body->app_cb;
    MDM_INFO("Callback detail request [%d]", head.type);  // Q-CALLBACK-7
    head.data_size = size_of_fields(body, callback.head);
    if (is_known(log, head.type, callback)) {
        head.data_size += size_of_fields(body, callback.payload);
    }
    MDM_INFO("Size = %d", head.data_size);
    return MDM_EXIT(head.data_size);
}

bool set_callback(Writer &out, const Log &log, mdm_body_t *body, const Callback &callback)
{
    MDM_ENTER();
    MDM_FAIL_IF(!out, false, "p_msg is NULL");
    MDM_FAIL_IF(body == nullptr, false, "p_data is NULL");
    out.fields(body, callback.head);
    MDM_INFO("Callback detail request [%d]", body->app_cb.type);
    if (is_known(log, body->app_cb.type, callback)) {
        out.fields(body, callback.payload);
    }
    return MDM_EXIT(true);
}

bool get_callback(Reader &in, const Log &log, mdm_body_t *body, const Callback &callback)
{
    MDM_ENTER();
    MDM_FAIL_IF(!in, false, "p_msg is NULL");
    MDM_FAIL_IF(body == nullptr, false, "p_data is NULL");
    in.fields(body, callback.head);
    if (!in || body->app_cb.data_size == 0) {  // Q-CALLBACK-2
        return MDM_EXIT(true);
    }
    MDM_INFO("Callback detail request [%d]", body->app_cb.type);
    if (is_known(log, body->app_cb.type, callback)) {
        in.fields(body, callback.payload);
    }
    return MDM_EXIT(true);
}

void free_callback(const Log &log, mdm_body_t *body, const Callback &callback)
{
    MDM_ENTER();
    if (body == nullptr) {
        MDM_CRITICAL("info is NULL");  // Q-CALLBACK-6
        return MDM_EXIT();
    }
    MDM_INFO("Callback detail request [%d]", body->app_cb.type);
    if (is_known(log, body->app_cb.type, callback)) {
        release_strings(body, callback.payload);
    }
    return MDM_EXIT();
}

}  // namespace

#define MDM_CALLBACK_HANDLERS(category, callback)                                         \
    uint32_t _size_of_##category(Lengths & /*lengths*/, const Log &log, mdm_body_t *body) \
    {                                                                                     \
        return size_of_callback(log, body, callback);                                     \
    }                                                                                     \
    bool _set_##category(Writer &out, const Log &log, mdm_body_t *body)                   \
    {                                                                                     \
        return set_callback(out, log, body, callback);                                    \
    }                                                                                     \
    bool _get_##category(Reader &in, const Log &log, mdm_body_t *body)                    \
    {                                                                                     \
        return get_callback(in, log, body, callback);                                     \
    }                                                                                     \
    void _free_##category(const Log &log, mdm_body_t *body)                               \
    {                                                                                     \
        free_callback(log, body, callback);                                               \
    }
MDM_CALLBACK_HANDLERS(app_cb, (Callback{app_head_fields, app_fields, "APP"}))
MDM_CALLBACK_HANDLERS(misc_cb, (Callback{misc_head_fields, misc_fields, "MISC"}))

}  // namespace mdm
