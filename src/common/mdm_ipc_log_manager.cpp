// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 51 and 52: log manager.
//
//   type 638    type, value as a string
//   any other   type, value as one byte
#include "mdm_ipc_handlers.hpp"

namespace mdm {
namespace {

enum class Form { text, byte };

constexpr Form form_of(uint32_t type)
{
    return type == 638 ? Form::text : Form::byte;
}

}  // namespace

uint32_t _size_of_log_manager(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(body == nullptr, 0, "info is NULL!");
    const mdm_log_manager_info_t &info = body->log_manager;
    const uint32_t value_size =
        form_of(info.type) == Form::text ? size_of_str(info.value.text) : sizeof info.value.byte;
    return MDM_EXIT(word_size + value_size);
}

// Without a body nothing is written, and that is no failure.
bool _set_log_manager(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(!out, false, "buffer is NULL!");
    MDM_FAIL_IF(body == nullptr, true, "info is NULL!");
    const mdm_log_manager_info_t &info = body->log_manager;
    out.u32(info.type, "log_manager.type");
    if (form_of(info.type) == Form::text) {
        out.str(info.value.text, "log_manager.value");
    } else {
        out.u8(info.value.byte, "log_manager.value");
    }
    return MDM_EXIT(true);
}

// Without a body nothing is read, and that is no failure.
bool _get_log_manager(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    MDM_FAIL_IF(body == nullptr, true, "info is NULL!");
    MDM_FAIL_IF(!in, false, "buffer is NULL!");
    mdm_log_manager_info_t &info = body->log_manager;
    info.value.word = 0;
    info.type = in.u32("log_manager.type");
    if (form_of(info.type) == Form::text) {
        info.value.text = in.str("log_manager.value");
    } else {
        info.value.byte = in.u8("log_manager.value");
    }
    return MDM_EXIT(true);
}

// The pointer keeps its old value.
void _free_log_manager(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body != nullptr && form_of(body->log_manager.type) == Form::text) {
        g_free(body->log_manager.value.text);
    }
    return MDM_EXIT();
}

}  // namespace mdm
