// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 51 and 52 (log manager) has no head. `type` selects its fields:
//
//   type 638    type, value as a string
//   any other   type, value as one byte
#include "ipc/body/handlers.hpp"

namespace mdm {
namespace {

// `value` is a union.
#define MDM_VALUE(type)                    \
    MDM_FIELD_LIST(mdm_log_manager_info_t, \
                   MDM_FIELD(mdm_log_manager_info_t, "log_manager.value", value, type))
constexpr auto text_field = MDM_VALUE(char *);
constexpr auto byte_field = MDM_VALUE(uint8_t);

bool has_text(const mdm_log_manager_info_t &info)
{
    return mdm_log_manager_form(info.type) == MDM_FORM_LOG_MANAGER_TEXT;
}

Fields field_of(const mdm_log_manager_info_t &info)
{
    return has_text(info) ? Fields(text_field) : Fields(byte_field);
}

}  // namespace

uint32_t _size_of_log_manager(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(body == nullptr, 0, "info is NULL!");
    const mdm_log_manager_info_t &info = body->log_manager;
    return MDM_EXIT(word_size + size_of_fields(&info, field_of(info)));
}

// Q-LOG_MANAGER-1: a null body is no failure, and nothing is written.
// Q-LOG_MANAGER-2: the buffer is checked before the body.
bool _set_log_manager(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(!out, false, "buffer is NULL!");
    MDM_FAIL_IF(body == nullptr, true, "info is NULL!");
    const mdm_log_manager_info_t &info = body->log_manager;
    out.u32(info.type, "log_manager.type");
    out.fields(&info, field_of(info));
    return MDM_EXIT(true);
}

// Q-LOG_MANAGER-1: a null body is no failure, and nothing is read.
// Q-LOG_MANAGER-2: the body is checked before the buffer.
bool _get_log_manager(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(body == nullptr, true, "info is NULL!");
    MDM_FAIL_IF(!in, false, "buffer is NULL!");
    mdm_log_manager_info_t &info = body->log_manager;
    info.value.word = 0;  // Q-LOG_MANAGER-3
    info.type = in.u32("log_manager.type");
    in.fields(&info, field_of(info));
    return MDM_EXIT(true);
}

// Q-BODY-7: the pointer keeps its value.
void _free_log_manager(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body != nullptr && has_text(body->log_manager)) {
        g_free(body->log_manager.value.text);
    }
    return MDM_EXIT();
}

}  // namespace mdm
