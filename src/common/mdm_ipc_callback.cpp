// SPDX-License-Identifier: Apache-2.0
#include "mdm_ipc_callback.hpp"

namespace mdm {
namespace {

// Both heads are alike, and that of app_cb stands for either.
using Head = mdm_app_cb_info_t;
static_assert(offsetof(Head, data_size) == offsetof(mdm_misc_cb_info_t, data_size));
static_assert(offsetof(Head, type) == offsetof(mdm_misc_cb_info_t, type));

// Of a callback type that is not known the head travels alone.
bool is_known(const Log &log, uint32_t type, const Callback &callback)
{
    if (type < 2) {
        return true;
    }
    MDM_CRITICAL("Unknown %s callback type [%d]", callback.title, type);
    return false;
}

}  // namespace

// Stores the body's size in `data_size`, which the set handler sends: a receiver that finds 0 there
// reads no payload.
uint32_t size_of_callback(const Log &log, mdm_body_t *body, const Callback &callback)
{
    MDM_ENTER();
    if (body == nullptr) {
        MDM_CRITICAL("info is NULL");
        return MDM_EXIT(0);
    }
    Head &head = body->app_cb;
    MDM_INFO("Callback detail request [%d]", head.type);
    head.data_size = size_of_fields(body, callback.head);
    if (is_known(log, head.type, callback)) {
        head.data_size += size_of_fields(body, callback.payload);
    }
    MDM_INFO("Size = %d", head.data_size);
    return MDM_EXIT(head.data_size);
}

bool set_callback(Writer &out, mdm_body_t *body, const Callback &callback)
{
    const Log &log = out.log();
    MDM_ENTER();
    if (!out) {
        MDM_CRITICAL("p_msg is NULL");
        return MDM_EXIT(false);
    }
    if (body == nullptr) {
        MDM_CRITICAL("p_data is NULL");
        return MDM_EXIT(false);
    }
    out.fields(body, callback.head);
    MDM_INFO("Callback detail request [%d]", body->app_cb.type);
    if (is_known(log, body->app_cb.type, callback)) {
        out.fields(body, callback.payload);
    }
    return MDM_EXIT(true);
}

bool get_callback(Reader &in, mdm_body_t *body, const Callback &callback)
{
    const Log &log = in.log();
    MDM_ENTER();
    if (!in) {
        MDM_CRITICAL("p_msg is NULL");
        return MDM_EXIT(false);
    }
    if (body == nullptr) {
        MDM_CRITICAL("p_data is NULL");
        return MDM_EXIT(false);
    }
    in.fields(body, callback.head);
    if (!in || body->app_cb.data_size == 0) {
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
        MDM_CRITICAL("info is NULL");
        return MDM_EXIT();
    }
    MDM_INFO("Callback detail request [%d]", body->app_cb.type);
    if (is_known(log, body->app_cb.type, callback)) {
        release_strings(body, callback.payload);
    }
    return MDM_EXIT();
}

}  // namespace mdm
