// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 7 and 8: Wi-Fi. The body head, then
//
//   per-network settings   ssid, value
//   SSID lists             a count and strings
//   type 88, DHCP          str0 to str4
//   type 319               str0, str1, str2
//   type 345, a network    ssid, detail_kind, then a detail by its kind
//   any other              data_size raw bytes
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { pair, ssids, dhcp, triple, network, raw };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 305:
    case 307:
    case 309:
    case 311:
    case 313:
    case 315:
    case 317:
    case 324:
    case 326:
    case 328:
    case 330:
    case 332:
    case 339:
        return Shape::pair;
    case 290:
    case 344:
    case 346:
    case 348:
    case 349:
    case 350:
    case 352:
        return Shape::ssids;
    case 88:
        return Shape::dhcp;
    case 319:
        return Shape::triple;
    case 345:
        return Shape::network;
    default:
        return Shape::raw;
    }
}

enum class Detail { none, number, text, mixed, texts };

constexpr Detail detail_of(int32_t kind)
{
    switch (kind) {
    case 1:
    case 8:
    case 9:
        return Detail::number;
    case 2:
    case 3:
    case 4:
        return Detail::text;
    case 5:
    case 7:
        return Detail::mixed;
    case 6:
        return Detail::texts;
    default:
        return Detail::none;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(wifi);
constexpr auto pair_fields = MDM_FIELDS(mdm_wifi_pair_t, "wifi.pair", ssid, value);
constexpr auto dhcp_fields = MDM_FIELDS(mdm_wifi_dhcp_t, "wifi.dhcp", str0, str1, str2, str3, str4);
constexpr auto triple_fields = MDM_FIELDS(mdm_wifi_triple_t, "wifi.triple", str0, str1, str2);
constexpr auto network_fields = MDM_FIELDS(mdm_wifi_network_t, "wifi.network", ssid, detail_kind);

// A word of the detail, as a string or as a number.
#define TEXT(word)                                                                     \
    UnionField                                                                         \
    {                                                                                  \
        "wifi.network.detail." #word, &mdm_wifi_detail_t::word, &mdm_wifi_word_t::text \
    }
#define NUMBER(word)                                                                     \
    UnionField                                                                           \
    {                                                                                    \
        "wifi.network.detail." #word, &mdm_wifi_detail_t::word, &mdm_wifi_word_t::number \
    }
constexpr auto number_fields = fields(NUMBER(w0));
constexpr auto text_fields = fields(TEXT(w0));
constexpr auto mixed_fields = fields(TEXT(w0), TEXT(w1), TEXT(w2), NUMBER(w3), TEXT(w4), TEXT(w5));
constexpr auto texts_fields =
    fields(TEXT(w0), TEXT(w1), TEXT(w2), TEXT(w3), TEXT(w4), TEXT(w5), TEXT(w6));

const char *unsound_part_of(const mdm_wifi_network_t &network)
{
    switch (detail_of(network.detail_kind)) {
    case Detail::text:
    case Detail::mixed:
    case Detail::texts:
        return network.detail == nullptr ? "wifi.network.detail" : nullptr;
    case Detail::number:  // arrives as 0
    case Detail::none:
        break;
    }
    return nullptr;
}

const char *unsound_part(const mdm_wifi_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(wifi);
    const Shape shape = shape_of(info.type);
    const bool is_announced = info.data_size >= 1;
    const char *path = shape == Shape::ssids ? unsound_list(is_announced, info.data, paths)
                                             : unsound_payload(is_announced, info.data, paths);
    if (path != nullptr || !is_announced) {
        return path;
    }
    switch (shape) {
    case Shape::pair:
    case Shape::dhcp:
    case Shape::triple:
        return is_padding(info.data_size) ? nullptr : paths.data_size;
    case Shape::ssids:
        return has_null_element(info.data) ? "wifi.ssids" : nullptr;
    case Shape::network:
        return unsound_part_of(payload<mdm_wifi_network_t>(info));
    case Shape::raw:
        break;
    }
    return nullptr;
}

uint32_t size_of_detail(const mdm_wifi_network_t &network)
{
    switch (detail_of(network.detail_kind)) {
    case Detail::number:
        return word_size;  // counted even when there is no detail to write
    case Detail::text:
        return size_of_fields(*network.detail, text_fields);
    case Detail::mixed:
        return size_of_fields(*network.detail, mixed_fields);
    case Detail::texts:
        return size_of_fields(*network.detail, texts_fields);
    case Detail::none:
        break;
    }
    return 0;
}

template <class Out>
void write_network(Out &out, const mdm_wifi_network_t &network)
{
    out.fields(network, network_fields);
    if (network.detail == nullptr) {
        return;
    }
    switch (detail_of(network.detail_kind)) {
    case Detail::number:
        return out.fields(*network.detail, number_fields);
    case Detail::text:
        return out.fields(*network.detail, text_fields);
    case Detail::mixed:
        return out.fields(*network.detail, mixed_fields);
    case Detail::texts:
        return out.fields(*network.detail, texts_fields);
    case Detail::none:
        return;
    }
}

template <class In>
mdm_wifi_network_t *read_network(In &in)
{
    auto *network = in.record(network_fields);
    switch (detail_of(network->detail_kind)) {
    case Detail::number:
        network->detail = in.record(number_fields);
        break;
    case Detail::text:
        network->detail = in.record(text_fields);
        break;
    case Detail::mixed:
        network->detail = in.record(mixed_fields);
        break;
    case Detail::texts:
        network->detail = in.record(texts_fields);
        break;
    case Detail::none:
        break;
    }
    return network;
}

// The network's own record stays allocated, and so does a detail that is a number.
void release_network(const mdm_wifi_network_t &network)
{
    g_free(network.ssid);
    switch (detail_of(network.detail_kind)) {
    case Detail::text:
        release_strings(*network.detail, text_fields);
        break;
    case Detail::mixed:
        release_strings(*network.detail, mixed_fields);
        break;
    case Detail::texts:
        release_strings(*network.detail, texts_fields);
        break;
    case Detail::number:
    case Detail::none:
        return;
    }
    g_free(network.detail);
}

}  // namespace

// The sizes of a pair, a triple and DHCP settings count `data_size` on top of the strings: as many
// bytes stay zero at the end of the body.
uint32_t _size_of_wifi(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    const mdm_wifi_info_t &info = body->wifi;
    uint32_t size = body_head_size;
    if (info.data_size < 1) {
        return MDM_EXIT(size);
    }
    const auto data_size = static_cast<uint32_t>(info.data_size);
    switch (shape_of(info.type)) {
    case Shape::pair: {
        if (info.data == nullptr) {
            MDM_CRITICAL("wifi_info is NULL");
            return MDM_EXIT(no_room);
        }
        const auto &pair = payload<mdm_wifi_pair_t>(info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        size += data_size + size_of_fields(pair, pair_fields);
        break;
    }
    case Shape::triple:
        size += data_size + size_of_fields(info.data, triple_fields);
        break;
    case Shape::dhcp:
        if (info.data == nullptr) {
            MDM_CRITICAL("dhcp_info is NULL");
            return MDM_EXIT(no_room);
        }
        size += data_size + size_of_fields(info.data, dhcp_fields);
        break;
    case Shape::network: {
        const auto &network = payload<mdm_wifi_network_t>(info);
        size += size_of_fields(network, network_fields) + size_of_detail(network);
        break;
    }
    case Shape::ssids:
        MDM_INFO("len : %d", length_of(info.data));
        size += word_size;
        for (const char *ssid : elements<char>(info.data)) {
            if (ssid == nullptr) {  // no "ssid" line: it is for a text
                MDM_CRITICAL("ssid is NULL");
                return MDM_EXIT(no_room);
            }
            MDM_INFO("ssid : %s", ssid);
            size += size_of_str(ssid);
        }
        break;
    case Shape::raw:
        size += data_size;
        break;
    }
    return MDM_EXIT(size);
}

template <class Out>
static bool _set_wifi(Out &out, const mdm_wifi_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::pair: {
        MDM_ASSERT(info->data != nullptr, false);
        const auto &pair = payload<mdm_wifi_pair_t>(*info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        out.fields(pair, pair_fields);
        break;
    }
    case Shape::dhcp:
        MDM_ASSERT(info->data != nullptr, false);
        out.record(info->data, dhcp_fields);
        break;
    case Shape::triple:
        MDM_ASSERT(info->data != nullptr, false);
        out.record(info->data, triple_fields);
        break;
    case Shape::network:
        MDM_ASSERT(info->data != nullptr, false);
        write_network(out, payload<mdm_wifi_network_t>(*info));
        break;
    case Shape::ssids:
        MDM_INFO("length : %d", length_of(info->data));
        out.strings_or_gaps(info->data, info->data_size, "wifi.ssids");
        break;
    case Shape::raw:
        out.bytes(info->data, info->data_size, "wifi.data");
        break;
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_wifi(In &in, mdm_wifi_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size < 1) {
        info->data = nullptr;
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::pair: {
        auto *pair = in.record(pair_fields);
        MDM_INFO("ssid : %s, value : %s", pair->ssid, pair->value);
        info->data = pair;
        break;
    }
    case Shape::dhcp:
        info->data = in.record(dhcp_fields);
        break;
    case Shape::triple:
        info->data = in.record(triple_fields);
        break;
    case Shape::network:
        info->data = read_network(in);
        break;
    case Shape::ssids: {
        const int32_t count = in.count("wifi.ssids", word_size);
        MDM_INFO("length : %d", count);
        auto ssids = in.new_list();
        for (int32_t i = 0; in && i < count; ++i) {
            char *ssid = in.str("wifi.ssids");
            MDM_INFO("ssid : %s", ssid);
            ssids.append(ssid);
        }
        info->data = ssids.head();
        break;
    }
    case Shape::raw:
        info->data = in.bytes(info->data_size, "wifi.data");
        break;
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(wifi)

void _free_wifi(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || body->wifi.data == nullptr) {
        return MDM_EXIT();
    }
    mdm_wifi_info_t &info = body->wifi;
    switch (shape_of(info.type)) {
    case Shape::pair: {
        auto &pair = payload<mdm_wifi_pair_t>(info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        release_strings(pair, pair_fields);
        g_free(&pair);
        break;
    }
    case Shape::dhcp:
        release_record(info.data, dhcp_fields);
        break;
    case Shape::triple:
        release_record(info.data, triple_fields);
        break;
    case Shape::ssids:
        release_elements(info.data);
        break;
    case Shape::network:
        release_network(payload<mdm_wifi_network_t>(info));
        return MDM_EXIT();  // `data` keeps pointing at the network
    case Shape::raw:
        MDM_CRITICAL("Freeing %p", info.data);
        release_data(info);
        return MDM_EXIT();  // `data_size` keeps its value
    }
    info.data = nullptr;
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
