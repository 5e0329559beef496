// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 45 and 46: kiosk mode. The body head, then
//
//   type 612, 614   a string
//   type 618, 621   a count and numbers
//   type 619        a count and pairs: key, value
//   any other       data_size raw bytes
//
// No handler logs its entry, and only the free handler its exit, for a null body.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { text, keys, key_pairs, raw };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 612:
    case 614:
        return Shape::text;
    case 618:
    case 621:
        return Shape::keys;
    case 619:
        return Shape::key_pairs;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(kiosk);

// What an element of a list of keys points at: a number on its own.
struct Key {
    uint32_t number;
};
static_assert(sizeof(Key) == sizeof(uint32_t));

constexpr auto key_fields = MDM_FIELDS(Key, "kiosk.key", number);
constexpr auto key_pair_fields = MDM_FIELDS(mdm_kiosk_key_pair_t, "kiosk.key_pair", key, value);
constexpr uint32_t key_pair_size = word_size + word_size;

const char *unsound_part(const mdm_kiosk_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(kiosk);
    return shape_of(info.type) == Shape::raw
               ? unsound_bytes(info.data_size, info.data, paths)
               : unsound_payload(info.data_size != 0, info.data, paths);
}

}  // namespace

// Stores the payload's size in `data_size`, but for raw bytes; the size of a list leaves its count
// out there. Null elements are sized and counted, although they are not written.
uint32_t _size_of_kiosk(mdm_body_t *body)
{
    MDM_ASSERT(body != nullptr, 0);

    mdm_kiosk_info_t &info = body->kiosk;
    if (!has_payload(info)) {
        return body_head_size;
    }
    uint32_t base = body_head_size;
    uint32_t payload_size = 0;
    switch (shape_of(info.type)) {
    case Shape::text:
        payload_size = size_of_str(static_cast<const char *>(info.data));
        break;
    case Shape::keys:
        base = empty_list_size;
        payload_size = length_of(info.data) * word_size;
        break;
    case Shape::key_pairs:
        base = empty_list_size;
        payload_size = length_of(info.data) * key_pair_size;
        break;
    case Shape::raw:
        return base + static_cast<uint32_t>(info.data_size);
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return base + payload_size;
}

template <class Out>
static bool _set_kiosk(Out &out, const mdm_kiosk_info_t *info)
{
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (!has_payload(*info)) {
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::text:
        out.str(static_cast<const char *>(info->data), "kiosk.text");
        break;
    case Shape::keys:
        MDM_INFO("MDM_POLICY_GET_ALL_BLOCKED_HARDWARE_KEYS");
        out.records(info->data, "kiosk.keys", key_fields);
        break;
    case Shape::key_pairs:
        MDM_INFO("MDM_POLICY_SET_ALLOW_HARDWARE_KEYS");
        out.records(info->data, "kiosk.key_pairs", key_pair_fields);
        break;
    case Shape::raw:
        out.bytes(info->data, info->data_size, "kiosk.data");
        break;
    }
    return true;
}

template <class In>
static bool _get_kiosk(In &in, mdm_kiosk_info_t *info)
{
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size == 0) {
        info->data = nullptr;
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::text:
        info->data = in.str("kiosk.text");
        break;
    case Shape::keys:
        info->data = in.records("kiosk.keys", key_fields);
        break;
    case Shape::key_pairs:
        info->data = in.records("kiosk.key_pairs", key_pair_fields);
        break;
    case Shape::raw:
        info->data = in.bytes(info->data_size, "kiosk.data");
        break;
    }
    return true;
}

MDM_HANDLERS(kiosk)

// `data` and `data_size` keep their values, but for raw bytes.
void _free_kiosk(mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_kiosk_info_t &info = body->kiosk;
    if (!has_payload(info)) {
        return;
    }
    switch (shape_of(info.type)) {
    case Shape::text:
        g_free(info.data);
        break;
    case Shape::keys:
    case Shape::key_pairs:
        release_elements(info.data);
        break;
    case Shape::raw:
        info.data_size = 0;
        release_data(info);
        break;
    }
}

}  // namespace mdm
