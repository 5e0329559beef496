// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 9 and 10 (Bluetooth) is the body head and a payload:
//
//   type 91, 220 to 225, 227, 230, 231, 233 to 235, 237   a count, then the device names
//   any other                                             data_size raw bytes
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

// Q-BLUETOOTH-1: only these lists are released.
constexpr bool is_released(uint32_t type)
{
    return is_any(type, MDM_BLUETOOTH_NAMES_91, MDM_BLUETOOTH_NAMES_223, MDM_BLUETOOTH_NAMES_227,
                  MDM_BLUETOOTH_NAMES_233, MDM_BLUETOOTH_NAMES_237);
}

}  // namespace

const char *_validate_bluetooth(const mdm_body_t &body, Names names)
{
    const mdm_bluetooth_info_t &info = body.bluetooth;
    const bool is_announced = info.data_size >= 1;
    if (mdm_bluetooth_form(info.type) == MDM_FORM_BLUETOOTH_DATA) {
        return validate_payload(is_announced, info.data, names);
    }
    if (const char *path = validate_list(is_announced, info.data, names)) {
        return path;
    }
    return has_null_element(info.data) ? "bluetooth.names" : nullptr;
}

uint32_t _size_of_bluetooth(Lengths &lengths, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    const mdm_bluetooth_info_t &info = body->bluetooth;
    MDM_INFO("data_size : %d", info.data_size);
    uint32_t size = body_head_size;
    if (info.data_size < 1) {
        return MDM_EXIT(size);
    }
    if (mdm_bluetooth_form(info.type) == MDM_FORM_BLUETOOTH_DATA) {
        return MDM_EXIT(size + static_cast<uint32_t>(info.data_size));
    }
    MDM_INFO("len : %d", length_of(info.data));
    // Q-BODY-14: the names are logged here and by the get handler.
    size += word_size + lengths.measure(info.data, log, MDM_EACH("device_name : %s"));
    // Q-BODY-10: a list with a null name has no size.
    MDM_FAIL_IF(!lengths.has_all(info.data) && has_null_element(info.data), no_size,
                "device_name is NULL");
    return MDM_EXIT(size);
}

bool _set_bluetooth(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_bluetooth_info_t &info = body->bluetooth;
    out.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);
    }
    if (mdm_bluetooth_form(info.type) == MDM_FORM_BLUETOOTH_DATA) {
        out.raw_bytes(info.data, info.data_size);
        return MDM_EXIT(true);
    }
    MDM_INFO("length : %d", length_of(info.data));
    // Q-BODY-11: a null name is a gap of `data_size` bytes.
    out.strings_with_gaps(info.data, info.data_size, "bluetooth.names");
    return MDM_EXIT(true);
}

bool _get_bluetooth(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_bluetooth_info_t &info = body->bluetooth;
    in.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);  // Q-BODY-6: `data` stays as it was.
    }
    if (mdm_bluetooth_form(info.type) == MDM_FORM_BLUETOOTH_DATA) {
        info.data = in.raw_bytes(info.data_size);
        return MDM_EXIT(true);
    }
    const int32_t count = in.count("bluetooth.names", word_size);
    MDM_INFO("length : %d", count);
    info.data = in.strings(count, "bluetooth.names", MDM_EACH("device_name : %s"));
    return MDM_EXIT(true);
}

void _free_bluetooth(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_bluetooth_info_t &info = body->bluetooth;
    if (is_released(info.type)) {
        if (info.data == nullptr) {
            return MDM_EXIT();  // Q-BLUETOOTH-2: `data_size` keeps its value.
        }
        release_elements(info.data);
        info.data = nullptr;
    }
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
