// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 51 and 52: log manager.
//
//   type 638    type, value as a string
//   any other   type, value as one byte
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { text, byte };

constexpr Shape shape_of(uint32_t type)
{
    return type == 638 ? Shape::text : Shape::byte;
}

// There is nothing in it that could be missing.
const char *unsound_part(const mdm_log_manager_info_t & /*info*/)
{
    return nullptr;
}

}  // namespace

uint32_t _size_of_log_manager(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr) {
        MDM_CRITICAL("info is NULL!");
        return MDM_EXIT(0);
    }
    const mdm_log_manager_info_t &info = body->log_manager;
    const uint32_t value_size =
        shape_of(info.type) == Shape::text ? size_of_str(info.value.text) : sizeof info.value.byte;
    return MDM_EXIT(word_size + value_size);
}

// Without a body nothing is written, and that is no failure.
template <class Out>
static bool _set_log_manager(Out &out, const mdm_log_manager_info_t *info)
{
    MDM_ENTER();
    if (!out) {
        MDM_CRITICAL("buffer is NULL!");
        return MDM_EXIT(false);
    }
    if (info == nullptr) {
        MDM_CRITICAL("info is NULL!");
        return MDM_EXIT(true);
    }
    out.u32(info->type, "log_manager.type");
    if (shape_of(info->type) == Shape::text) {
        out.str(info->value.text, "log_manager.value");
    } else {
        out.u8(info->value.byte, "log_manager.value");
    }
    return MDM_EXIT(true);
}

// Without a body nothing is read, and that is no failure.
template <class In>
static bool _get_log_manager(In &in, mdm_log_manager_info_t *info)
{
    MDM_ENTER();
    if (info == nullptr) {
        MDM_CRITICAL("info is NULL!");
        return MDM_EXIT(true);
    }
    if (!in) {
        MDM_CRITICAL("buffer is NULL!");
        return MDM_EXIT(false);
    }
    info->value.word = 0;
    info->type = in.u32("log_manager.type");
    if (shape_of(info->type) == Shape::text) {
        info->value.text = in.str("log_manager.value");
    } else {
        info->value.byte = in.u8("log_manager.value");
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(log_manager)

// The pointer keeps its old value.
void _free_log_manager(mdm_body_t *body)
{
    MDM_ENTER();
    if (body != nullptr && shape_of(body->log_manager.type) == Shape::text) {
        g_free(body->log_manager.value.text);
    }
    return MDM_EXIT();
}

}  // namespace mdm
