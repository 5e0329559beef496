// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 9 and 10: Bluetooth. The body head, then
//
//   device-name lists   a count and strings
//   any other           data_size raw bytes
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { names, raw };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 91:
    case 220:
    case 221:
    case 222:
    case 223:
    case 224:
    case 225:
    case 227:
    case 230:
    case 231:
    case 233:
    case 234:
    case 235:
    case 237:
        return Shape::names;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(bluetooth);

const char *unsound_part(const mdm_bluetooth_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(bluetooth);
    const bool is_announced = info.data_size >= 1;
    if (shape_of(info.type) == Shape::raw) {
        return unsound_payload(is_announced, info.data, paths);
    }
    if (const char *path = unsound_list(is_announced, info.data, paths)) {
        return path;
    }
    return has_null_element(info.data) ? "bluetooth.names" : nullptr;
}

// Only these lists are released; every other payload stays with the owner of the message.
constexpr bool is_released(uint32_t type)
{
    return type == 91 || type == 223 || type == 227 || type == 233 || type == 237;
}

}  // namespace

uint32_t _size_of_bluetooth(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    const mdm_bluetooth_info_t &info = body->bluetooth;
    MDM_INFO("data_size : %d", info.data_size);
    uint32_t size = body_head_size;
    if (info.data_size < 1) {
        return MDM_EXIT(size);
    }
    if (shape_of(info.type) == Shape::raw) {
        return MDM_EXIT(size + static_cast<uint32_t>(info.data_size));
    }
    MDM_INFO("len : %d", length_of(info.data));
    size += word_size;
    for (const char *device_name : elements<char>(info.data)) {
        if (device_name == nullptr) {  // no "device_name" line: it is for a text
            MDM_CRITICAL("device_name is NULL");
            return MDM_EXIT(no_room);
        }
        MDM_INFO("device_name : %s", device_name);
        size += size_of_str(device_name);
    }
    return MDM_EXIT(size);
}

template <class Out>
static bool _set_bluetooth(Out &out, const mdm_bluetooth_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);
    }
    if (shape_of(info->type) == Shape::raw) {
        out.bytes(info->data, info->data_size, "bluetooth.data");
        return MDM_EXIT(true);
    }
    MDM_INFO("length : %d", length_of(info->data));
    out.strings_or_gaps(info->data, info->data_size, "bluetooth.names");
    return MDM_EXIT(true);
}

template <class In>
static bool _get_bluetooth(In &in, mdm_bluetooth_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);  // `data` stays as it was
    }
    if (shape_of(info->type) == Shape::raw) {
        info->data = in.bytes(info->data_size, "bluetooth.data");
        return MDM_EXIT(true);
    }
    const int32_t count = in.count("bluetooth.names", word_size);
    MDM_INFO("length : %d", count);
    auto names = in.new_list();
    for (int32_t i = 0; in && i < count; ++i) {
        char *device_name = in.str("bluetooth.names");
        MDM_INFO("device_name : %s", device_name);
        names.append(device_name);
    }
    info->data = names.head();
    return MDM_EXIT(true);
}

MDM_HANDLERS(bluetooth)

void _free_bluetooth(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_bluetooth_info_t &info = body->bluetooth;
    if (is_released(info.type)) {
        if (info.data == nullptr) {
            return MDM_EXIT();  // `data_size` keeps its value
        }
        release_elements(info.data);
        info.data = nullptr;
    }
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
