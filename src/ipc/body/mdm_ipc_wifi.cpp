// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 7 and 8 (Wi-Fi) is the body head and a payload:
//
//   type 305, 307, 309, 311, 313, 315, 317,
//        324, 326, 328, 330, 332, 339        a pair: ssid, value
//   type 290, 344, 346, 348, 349, 350, 352   a count, then the SSIDs
//   type 88                                  DHCP settings: str0 to str4
//   type 319                                 a triple: str0, str1, str2
//   type 345                                 a network: ssid, detail_kind, and the detail that
//                                            detail_kind selects
//   any other                                data_size raw bytes
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto pair_fields = MDM_FIELDS(mdm_wifi_pair_t, "wifi.pair", ssid, value);
constexpr auto dhcp_fields = MDM_FIELDS(mdm_wifi_dhcp_t, "wifi.dhcp", str0, str1, str2, str3, str4);
constexpr auto triple_fields = MDM_FIELDS(mdm_wifi_triple_t, "wifi.triple", str0, str1, str2);
constexpr auto network_fields = MDM_FIELDS(mdm_wifi_network_t, "wifi.network", ssid, detail_kind);

// A word of the detail is a string or a number.
#define MDM_DETAIL(word, arm) \
    MDM_FIELD(mdm_wifi_detail_t, "wifi.network.detail." #word, word, decltype(mdm_wifi_word_t::arm))
#define MDM_TEXT(word) MDM_DETAIL(word, text)
#define MDM_NUMBER(word) MDM_DETAIL(word, number)
constexpr auto number_fields = MDM_FIELD_LIST(mdm_wifi_detail_t, MDM_NUMBER(w0));
constexpr auto text_fields = MDM_FIELD_LIST(mdm_wifi_detail_t, MDM_TEXT(w0));
constexpr auto mixed_fields =
    MDM_FIELD_LIST(mdm_wifi_detail_t, MDM_TEXT(w0), MDM_TEXT(w1), MDM_TEXT(w2), MDM_NUMBER(w3),
                   MDM_TEXT(w4), MDM_TEXT(w5));
constexpr auto texts_fields =
    MDM_FIELD_LIST(mdm_wifi_detail_t, MDM_TEXT(w0), MDM_TEXT(w1), MDM_TEXT(w2), MDM_TEXT(w3),
                   MDM_TEXT(w4), MDM_TEXT(w5), MDM_TEXT(w6));

// The fields of a detail that travel. The form `none` has no fields and must not be passed.
constexpr Fields fields_of(mdm_wifi_detail_form_t form)
{
    switch (form) {
    case MDM_WIFI_DETAIL_TEXT:
        return text_fields;
    case MDM_WIFI_DETAIL_MIXED:
        return mixed_fields;
    case MDM_WIFI_DETAIL_TEXTS:
        return texts_fields;
    case MDM_WIFI_DETAIL_NUMBER:
    case MDM_WIFI_DETAIL_NONE:
        break;
    }
    return number_fields;
}

uint32_t size_of_network(const mdm_wifi_network_t &network)
{
    const mdm_wifi_detail_form_t form = mdm_wifi_detail_form(network.detail_kind);
    const uint32_t size = size_of_fields(&network, network_fields);
    // Q-WIFI-2: a number is counted even without a detail.
    return form == MDM_WIFI_DETAIL_NONE ? size
                                        : size + size_of_fields(network.detail, fields_of(form));
}

void write_network(Writer &out, const mdm_wifi_network_t &network)
{
    const mdm_wifi_detail_form_t form = mdm_wifi_detail_form(network.detail_kind);
    out.fields(&network, network_fields);
    if (network.detail != nullptr && form != MDM_WIFI_DETAIL_NONE) {  // Q-WIFI-2
        out.fields(network.detail, fields_of(form));
    }
}

mdm_wifi_network_t *read_network(Reader &in)
{
    auto *network = in.record(network_fields);
    const mdm_wifi_detail_form_t form = mdm_wifi_detail_form(network->detail_kind);
    if (form != MDM_WIFI_DETAIL_NONE) {
        network->detail = static_cast<mdm_wifi_detail_t *>(in.record(fields_of(form)));
    }
    return network;
}

// Q-WIFI-4: the network's record and a detail that is a number stay allocated.
void release_network(const mdm_wifi_network_t &network)
{
    g_free(network.ssid);
    if (mdm_wifi_detail_has_texts(network.detail_kind)) {
        release_record(network.detail, fields_of(mdm_wifi_detail_form(network.detail_kind)));
    }
}

// A network whose detail is a number may lack its detail, which arrives as 0.
const char *validate_network(const mdm_wifi_network_t &network)
{
    return mdm_wifi_detail_has_texts(network.detail_kind) && network.detail == nullptr
               ? "wifi.network.detail"
               : nullptr;
}

}  // namespace

const char *_validate_wifi(const mdm_body_t &body, Names names)
{
    const mdm_wifi_info_t &info = body.wifi;
    const mdm_form_t form = mdm_wifi_form(info.type);
    const bool is_announced = info.data_size >= 1;
    const char *path = form == MDM_FORM_WIFI_SSIDS
                           ? validate_list(is_announced, info.data, names)
                           : validate_payload(is_announced, info.data, names);
    if (path != nullptr || !is_announced) {
        return path;
    }
    switch (form) {
    case MDM_FORM_WIFI_PAIR:
    case MDM_FORM_WIFI_DHCP:
    case MDM_FORM_WIFI_TRIPLE:
        return is_padding(info.data_size) ? nullptr : names.data_size();
    case MDM_FORM_WIFI_SSIDS:
        return has_null_element(info.data) ? "wifi.ssids" : nullptr;
    case MDM_FORM_WIFI_NETWORK:
        return validate_network(payload<mdm_wifi_network_t>(info));
    case MDM_FORM_WIFI_DATA:
    default:
        break;
    }
    return nullptr;
}

// Q-WIFI-1: the sizes of a pair, a triple and DHCP settings count `data_size` as well.
uint32_t _size_of_wifi(Lengths &lengths, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    const mdm_wifi_info_t &info = body->wifi;
    uint32_t size = body_head_size;
    if (info.data_size < 1) {
        return MDM_EXIT(size);
    }
    const auto data_size = static_cast<uint32_t>(info.data_size);
    switch (mdm_wifi_form(info.type)) {
    case MDM_FORM_WIFI_PAIR:
    default: {
        // Q-WIFI-3: a missing pair and missing DHCP settings have no size.
        MDM_FAIL_IF(info.data == nullptr, no_size, "wifi_info is NULL");
        const auto &pair = payload<mdm_wifi_pair_t>(info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        size += data_size + size_of_fields(&pair, pair_fields);
        break;
    }
    case MDM_FORM_WIFI_TRIPLE:
        size += data_size + size_of_fields(info.data, triple_fields);
        break;
    case MDM_FORM_WIFI_DHCP:
        MDM_FAIL_IF(info.data == nullptr, no_size, "dhcp_info is NULL");
        size += data_size + size_of_fields(info.data, dhcp_fields);
        break;
    case MDM_FORM_WIFI_NETWORK:
        size += size_of_network(payload<mdm_wifi_network_t>(info));
        break;
    case MDM_FORM_WIFI_SSIDS:
        // Q-BODY-14: the names are logged here and by the get handler.
        MDM_INFO("len : %d", length_of(info.data));
        size += word_size + lengths.measure(info.data, log, MDM_EACH("ssid : %s"));
        // Q-BODY-10: a list with a null SSID has no size.
        MDM_FAIL_IF(!lengths.has_all(info.data) && has_null_element(info.data), no_size,
                    "ssid is NULL");
        break;
    case MDM_FORM_WIFI_DATA:
        size += data_size;
        break;
    }
    return MDM_EXIT(size);
}

bool _set_wifi(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_wifi_info_t &info = body->wifi;
    out.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);
    }
    switch (mdm_wifi_form(info.type)) {
    case MDM_FORM_WIFI_PAIR:
    default: {
        MDM_ASSERT(info.data != nullptr, false);
        const auto &pair = payload<mdm_wifi_pair_t>(info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        out.fields(&pair, pair_fields);
        break;
    }
    case MDM_FORM_WIFI_DHCP:
        MDM_ASSERT(info.data != nullptr, false);
        out.fields(info.data, dhcp_fields);
        break;
    case MDM_FORM_WIFI_TRIPLE:
        MDM_ASSERT(info.data != nullptr, false);
        out.fields(info.data, triple_fields);
        break;
    case MDM_FORM_WIFI_NETWORK:
        MDM_ASSERT(info.data != nullptr, false);
        write_network(out, payload<mdm_wifi_network_t>(info));
        break;
    case MDM_FORM_WIFI_SSIDS:
        MDM_INFO("length : %d", length_of(info.data));
        // Q-BODY-11: a null SSID is a gap of `data_size` bytes.
        out.strings_with_gaps(info.data, info.data_size, "wifi.ssids");
        break;
    case MDM_FORM_WIFI_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

bool _get_wifi(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_wifi_info_t &info = body->wifi;
    in.body_head(info);
    if (info.data_size < 1) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    switch (mdm_wifi_form(info.type)) {
    case MDM_FORM_WIFI_PAIR:
    default: {
        auto *pair = in.record(pair_fields);
        MDM_INFO("ssid : %s, value : %s", pair->ssid, pair->value);
        info.data = pair;
        break;
    }
    case MDM_FORM_WIFI_DHCP:
        info.data = in.record(dhcp_fields);
        break;
    case MDM_FORM_WIFI_TRIPLE:
        info.data = in.record(triple_fields);
        break;
    case MDM_FORM_WIFI_NETWORK:
        info.data = read_network(in);
        break;
    case MDM_FORM_WIFI_SSIDS: {
        const int32_t count = in.count("wifi.ssids", word_size);
        MDM_INFO("length : %d", count);
        info.data = in.strings(count, "wifi.ssids", MDM_EACH("ssid : %s"));
        break;
    }
    case MDM_FORM_WIFI_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

void _free_wifi(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || body->wifi.data == nullptr) {  // Q-BODY-5
        return MDM_EXIT();
    }
    mdm_wifi_info_t &info = body->wifi;
    switch (mdm_wifi_form(info.type)) {
    case MDM_FORM_WIFI_PAIR:
    default: {
        auto &pair = payload<mdm_wifi_pair_t>(info);
        MDM_INFO("ssid : %s, value : %s", pair.ssid, pair.value);
        release_record(&pair, pair_fields);
        break;
    }
    case MDM_FORM_WIFI_DHCP:
        release_record(info.data, dhcp_fields);
        break;
    case MDM_FORM_WIFI_TRIPLE:
        release_record(info.data, triple_fields);
        break;
    case MDM_FORM_WIFI_SSIDS:
        release_elements(info.data);
        break;
    case MDM_FORM_WIFI_NETWORK:
        release_network(payload<mdm_wifi_network_t>(info));
        return MDM_EXIT();  // Q-WIFI-4: `data` and `data_size` keep their values.
    case MDM_FORM_WIFI_DATA:
        MDM_CRITICAL("Freeing %p", info.data);  // Q-WIFI-5: this is no failure.
        release_data(info.data);
        return MDM_EXIT();  // Q-WIFI-6: `data_size` keeps its value.
    }
    info.data = nullptr;
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
