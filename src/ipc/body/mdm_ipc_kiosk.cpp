// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 45 and 46 (kiosk mode) is the body head and a payload:
//
//   type 612, 614   a string
//   type 618, 621   a count, then the numbers
//   type 619        a count, then the pairs: key, value
//   any other       data_size raw bytes
//
// Q-BODY-13: no handler logs its entry. Only the free handler logs its exit, for a null body.
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

// An element of a list of keys points to one number.
struct Key {
    uint32_t number;
};
static_assert(sizeof(Key) == sizeof(uint32_t));

constexpr auto key_fields = MDM_FIELDS(Key, "kiosk.key", number);
constexpr auto key_pair_fields = MDM_FIELDS(mdm_kiosk_key_pair_t, "kiosk.key_pair", key, value);
constexpr uint32_t key_pair_size = word_size + word_size;

}  // namespace

const char *_validate_kiosk(const mdm_body_t &body, Names names)
{
    const mdm_kiosk_info_t &info = body.kiosk;
    return mdm_kiosk_form(info.type) == MDM_FORM_KIOSK_DATA
               ? validate_bytes(info.data_size, info.data, names)
               : validate_payload(info.data_size != 0, info.data, names);
}

// Stores the payload's size in `data_size`, except for raw bytes.
// Q-KIOSK-2: the stored size of a list leaves out the 4 bytes of its count.
uint32_t _size_of_kiosk(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(body != nullptr, 0);

    mdm_kiosk_info_t &info = body->kiosk;
    if (!has_payload(info)) {  // Q-BODY-2, Q-BODY-3
        return body_head_size;
    }
    uint32_t base = body_head_size;
    uint32_t payload_size = 0;
    switch (mdm_kiosk_form(info.type)) {
    case MDM_FORM_KIOSK_TEXT:
        payload_size = size_of_str(static_cast<const char *>(info.data));
        break;
    case MDM_FORM_KIOSK_KEYS:
        // Q-KIOSK-1: a null element is sized and counted, but not written.
        // Q-KIOSK-5: the elements in front of the given cell are written, but not sized.
        base = empty_list_size;
        payload_size = length_of(info.data) * word_size;
        break;
    case MDM_FORM_KIOSK_KEY_PAIRS:
        base = empty_list_size;
        payload_size = length_of(info.data) * key_pair_size;
        break;
    case MDM_FORM_KIOSK_DATA:
    default:
        return base + static_cast<uint32_t>(info.data_size);  // Q-BODY-4: a negative one, too
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return base + payload_size;
}

bool _set_kiosk(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(out && body != nullptr, false);

    const mdm_kiosk_info_t &info = body->kiosk;
    out.body_head(info);
    if (!has_payload(info)) {
        return true;
    }
    switch (mdm_kiosk_form(info.type)) {
    case MDM_FORM_KIOSK_TEXT:
        out.str(static_cast<const char *>(info.data), "kiosk.text");
        break;
    case MDM_FORM_KIOSK_KEYS:
        MDM_INFO("MDM_POLICY_GET_ALL_BLOCKED_HARDWARE_KEYS");  // Q-KIOSK-3
        out.records(info.data, "kiosk.keys", key_fields);
        break;
    case MDM_FORM_KIOSK_KEY_PAIRS:
        MDM_INFO("MDM_POLICY_SET_ALLOW_HARDWARE_KEYS");
        out.records(info.data, "kiosk.key_pairs", key_pair_fields);
        break;
    case MDM_FORM_KIOSK_DATA:
    default:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return true;
}

bool _get_kiosk(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(in && body != nullptr, false);

    mdm_kiosk_info_t &info = body->kiosk;
    in.body_head(info);
    if (info.data_size == 0) {
        info.data = nullptr;
        return true;
    }
    switch (mdm_kiosk_form(info.type)) {
    case MDM_FORM_KIOSK_TEXT:
        info.data = in.str("kiosk.text");  // Q-KIOSK-4: null for an empty text
        break;
    case MDM_FORM_KIOSK_KEYS:
        info.data = in.records("kiosk.keys", key_fields);
        break;
    case MDM_FORM_KIOSK_KEY_PAIRS:
        info.data = in.records("kiosk.key_pairs", key_pair_fields);
        break;
    case MDM_FORM_KIOSK_DATA:
    default:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return true;
}

// Q-BODY-7: `data` and `data_size` keep their values, except for raw bytes.
void _free_kiosk(const Log &log, mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_kiosk_info_t &info = body->kiosk;
    if (!has_payload(info)) {  // Q-BODY-5
        return;
    }
    switch (mdm_kiosk_form(info.type)) {
    case MDM_FORM_KIOSK_TEXT:
        g_free(info.data);
        break;
    case MDM_FORM_KIOSK_KEYS:
    case MDM_FORM_KIOSK_KEY_PAIRS:
        release_elements(info.data);
        break;
    case MDM_FORM_KIOSK_DATA:
    default:
        info.data_size = 0;
        release_data(info.data);
        break;
    }
}

}  // namespace mdm
