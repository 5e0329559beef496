// SPDX-License-Identifier: Apache-2.0
#include "parts.hpp"

#include "mdm/result.h"

namespace mdm::msg {
namespace {

bool visit_part(const ipc_part_t *part, void *user_data)
{
    (*static_cast<const std::function<void(const ipc_part_t &)> *>(user_data))(*part);
    return true;
}

std::string bracketed(int32_t position)
{
    return "[" + std::to_string(position) + "]";
}

}  // namespace

std::optional<ipc_fault_t> inspect(Bytes message,
                                   const std::function<void(const ipc_part_t &)> &visit)
{
    ipc_fault_t fault;
    auto *user_data = const_cast<std::function<void(const ipc_part_t &)> *>(&visit);
    const int32_t result = ipc_inspect(message.data(), static_cast<uint32_t>(message.size()),
                                       visit_part, user_data, &fault);
    return result == MDM_RESULT_SUCCESS ? std::nullopt : std::optional(fault);
}

std::string name_of(const ipc_part_t &part)
{
    return name_of(part, bracketed(part.element), bracketed(part.inner));
}

// The position in a list stands behind the second name of the path, and the position in a list
// within an element behind the third.
std::string name_of(const ipc_part_t &part, const std::string &element, const std::string &inner)
{
    std::string name = part.path;
    if (part.inner >= 0) {
        name += inner;
    }
    if (part.element >= 0) {
        const size_t second = name.find('.') + 1;
        const size_t end = name.find('.', second);
        name.insert(end == std::string::npos ? name.size() : end, element);
    }
    return name;
}

const char *kind_name(ipc_part_kind_t kind)
{
    switch (kind) {
    case IPC_PART_U8:
        return "u8";
    case IPC_PART_U32:
        return "u32";
    case IPC_PART_I32:
        return "i32";
    case IPC_PART_COUNT:
        return "count";
    case IPC_PART_STR:
        return "str";
    case IPC_PART_BYTES:
        return "bytes";
    case IPC_PART_RESERVED:
        return "reserved";
    case IPC_PART_PADDING:
        return "padding";
    case IPC_PART_REST:
        break;
    }
    return "rest";
}

bool has_sign(std::string_view path, ipc_part_kind_t kind)
{
    return kind == IPC_PART_I32 || (kind == IPC_PART_COUNT && path != "misc.param_list");
}

int64_t number_of(const ipc_part_t &part)
{
    return has_sign(part.path, part.kind) ? static_cast<int32_t>(part.number)
                                          : int64_t{part.number};
}

Bytes bytes_of(const ipc_part_t &part)
{
    return {part.bytes, part.length};
}

bool is_discriminator(const ipc_part_t &part)
{
    const std::string_view path = part.path;
    return path.ends_with(".type") && path.find('.') == path.rfind('.') && path != "header.type";
}

std::string sentence(const ipc_fault_t &fault)
{
    gchar *text = ipc_fault_describe(&fault);
    std::string copy = text;
    g_free(text);
    return copy;
}

}  // namespace mdm::msg
