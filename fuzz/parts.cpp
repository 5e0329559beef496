// SPDX-License-Identifier: Apache-2.0
#include "parts.hpp"

#include <algorithm>
#include <initializer_list>

namespace mdm::fuzz {
namespace {

bool is_one_of(int64_t type, std::initializer_list<int64_t> types)
{
    return std::ranges::find(types, type) != types.end();
}

bool is_between(int64_t type, int64_t first, int64_t last)
{
    return first <= type && type <= last;
}

template <class... Text>
void add_texts(Parts &parts, Text *&...texts)
{
    const auto add = [&](char *&text) {
        if (text != nullptr) {
            parts.texts.push_back(&text);
        }
    };
    (add(texts), ...);
}

// Records.

void add(Parts &parts, mdm_pwd_policy_t &it)
{
    add_texts(parts, it.str9, it.str10);
}

void add(Parts &parts, mdm_security_item_t &it)
{
    add_texts(parts, it.str1, it.str3, it.str4);
}

void add(Parts &parts, mdm_security_account_t &it)
{
    add_texts(parts, it.str4, it.str5, it.str6, it.str7, it.str8, it.str9, it.str10, it.str11,
              it.str12, it.str13, it.str14, it.str15, it.str16, it.str17, it.str18, it.str19,
              it.str20, it.str21, it.str22, it.str23, it.str24, it.str25);
}

void add(Parts &parts, mdm_wifi_pair_t &it)
{
    add_texts(parts, it.ssid, it.value);
}

void add(Parts &parts, mdm_wifi_dhcp_t &it)
{
    add_texts(parts, it.str0, it.str1, it.str2, it.str3, it.str4);
}

void add(Parts &parts, mdm_wifi_triple_t &it)
{
    add_texts(parts, it.str0, it.str1, it.str2);
}

void add_detail(Parts &parts, mdm_wifi_detail_t &it, int32_t kind)
{
    if (kind == 5 || kind == 7) {
        add_texts(parts, it.w0.text, it.w1.text, it.w2.text, it.w4.text, it.w5.text);
    } else if (is_between(kind, 2, 6)) {
        add_texts(parts, it.w0.text, it.w1.text, it.w2.text, it.w3.text, it.w4.text, it.w5.text,
                  it.w6.text);
    }
}

void add(Parts &parts, mdm_wifi_network_t &it)
{
    add_texts(parts, it.ssid);
    if (it.detail != nullptr) {
        add_detail(parts, *it.detail, it.detail_kind);
        parts.removals.emplace_back([&it] { it.detail = nullptr; });
    }
}

void add(Parts &parts, mdm_eas_account_t &it)
{
    add_texts(parts, it.str6, it.str7, it.str8, it.str9, it.str10, it.str11, it.str12, it.str13,
              it.str14);
}

void add(Parts &parts, mdm_eas_value_t &it)
{
    add_texts(parts, it.str1);
}

void add(Parts &parts, mdm_email_account_t &it)
{
    add_texts(parts, it.str9, it.str10, it.str11, it.str12, it.str13, it.str14, it.str15, it.str16,
              it.str17, it.str18, it.str19, it.str20, it.str21);
}

void add(Parts &parts, mdm_email_value_t &it)
{
    add_texts(parts, it.str1);
}

void add(Parts &parts, mdm_apn_account_t &it)
{
    add_texts(parts, it.profile_name, it.str3, it.str4, it.str5, it.str6, it.str7, it.str8, it.str9,
              it.str10, it.str11, it.str12, it.str13, it.str14);
}

void add(Parts &parts, mdm_app_pair_t &it)
{
    add_texts(parts, it.first, it.second);
}

void add(Parts & /*parts*/, mdm_app_num_pair_t & /*it*/)
{
}

void add(Parts &parts, mdm_app_res_item_t &it)
{
    add_texts(parts, it.name);
    parts.is_incomplete = parts.is_incomplete || it.name == nullptr;  // it would not be sent
}

void add(Parts &parts, mdm_misc_str_t &it)
{
    add_texts(parts, it.value);
}

void add(Parts &parts, mdm_book_info_t &it)
{
    add_texts(parts, it.url, it.title);
}

void add(Parts &parts, mdm_misc_str_pair_t &it)
{
    add_texts(parts, it.first, it.second);
}

void add(Parts &parts, mdm_phone_res_item_t &it)
{
    add_texts(parts, it.str0, it.str2);
}

void add(Parts &parts, mdm_phone_res_ext_t &it)
{
    add_texts(parts, it.str0);
    if (it.detail != nullptr) {
        add_texts(parts, it.detail->str2);
        parts.removals.emplace_back([&it] { it.detail = nullptr; });
    }
}

void add(Parts & /*parts*/, uint32_t & /*it*/)
{
}

void add(Parts & /*parts*/, mdm_kiosk_key_pair_t & /*it*/)
{
}

void add(Parts &parts, mdm_container_item_t &it)
{
    add_texts(parts, it.str1, it.str2);
}

void add(Parts &parts, mdm_roaming_data_t &it)
{
    add_texts(parts, it.name);
}

// What a body's `data` points to.

template <class Info>
void removable(Parts &parts, Info &info)
{
    parts.removals.emplace_back([&info] { info.data = nullptr; });
}

template <class Info>
bool lacks_payload(const Info &info)
{
    return info.data == nullptr && info.data_size > 0;
}

template <class Record, class Info>
void record(Parts &parts, Info &info)
{
    parts.lacks_payload = lacks_payload(info);
    if (info.data != nullptr) {
        add(parts, *static_cast<Record *>(info.data));
        removable(parts, info);
    }
}

template <class Info>
void list(Parts &parts, Info &info, bool holds_texts)
{
    parts.lists.push_back(
        {static_cast<GList *>(info.data), [&info](GList *head) { info.data = head; }, holds_texts});
}

template <class Info>
void strings(Parts &parts, Info &info)
{
    list(parts, info, true);
}

void add(Parts &parts, mdm_app_control_info_t &it)
{
    parts.lists.push_back({it.pkg_list, [&it](GList *head) { it.pkg_list = head; }, true});
}

template <class Record, class Info>
void records(Parts &parts, Info &info)
{
    for (auto *cell = static_cast<GList *>(info.data); cell != nullptr; cell = cell->next) {
        if (cell->data != nullptr) {
            add(parts, *static_cast<Record *>(cell->data));
        }
    }
    list(parts, info, false);
}

// No more bytes are there than the body's head says.
template <class Info>
void raw(Parts &parts, Info &info)
{
    parts.lacks_payload = lacks_payload(info);
    if (info.data != nullptr) {
        parts.takes_data_size_for_length = true;
        parts.largest_data_size = info.data_size;
        removable(parts, info);
    }
}

// A text in `data` itself.
void text(Parts &parts, mdm_kiosk_info_t &info)
{
    parts.lacks_payload = lacks_payload(info);
    if (info.data != nullptr) {
        parts.data_text = &info.data;
        removable(parts, info);
    }
}

// Bodies. What carries no payload that could be otherwise has no part here.

void body(Parts &parts, mdm_admin_info_t &info)
{
    add_texts(parts, info.pkg, info.text);
}

void body(Parts &parts, mdm_pwd_info_t &info)
{
    info.type == 40 ? record<mdm_pwd_policy_t>(parts, info) : raw(parts, info);
}

void body(Parts &parts, mdm_security_info_t &info)
{
    switch (info.type) {
    case 56:
    case 76:
        return record<mdm_security_item_t>(parts, info);
    case 68:
    case 69:
        parts.drops_empty_texts = true;
        return strings(parts, info);
    case 70:
    case 71:
        return records<mdm_security_account_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_wifi_info_t &info)
{
    if (is_one_of(info.type, {305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339})) {
        return record<mdm_wifi_pair_t>(parts, info);
    }
    if (is_one_of(info.type, {290, 344, 346, 348, 349, 350, 352})) {
        return strings(parts, info);
    }
    switch (info.type) {
    case 88:
        return record<mdm_wifi_dhcp_t>(parts, info);
    case 319:
        return record<mdm_wifi_triple_t>(parts, info);
    case 345:
        return record<mdm_wifi_network_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_bluetooth_info_t &info)
{
    is_one_of(info.type, {91, 220, 221, 222, 223, 224, 225, 227, 230, 231, 233, 234, 235, 237})
        ? strings(parts, info)
        : raw(parts, info);
}

void body(Parts &parts, mdm_eas_info_t &info)
{
    switch (info.type) {
    case 98:
    case 104:
        return record<mdm_eas_account_t>(parts, info);
    case 106:
        return records<mdm_eas_account_t>(parts, info);
    default:
        return record<mdm_eas_value_t>(parts, info);
    }
}

void body(Parts &parts, mdm_email_info_t &info)
{
    switch (info.type) {
    case 359:
    case 362:
        return record<mdm_email_account_t>(parts, info);
    case 363:
        return records<mdm_email_account_t>(parts, info);
    default:
        return record<mdm_email_value_t>(parts, info);
    }
}

void body(Parts &parts, mdm_apn_info_t &info)
{
    switch (info.type) {
    case 387:
    case 393:
        return record<mdm_apn_account_t>(parts, info);
    case 389:
    case 390:
    case 391:
        return records<mdm_apn_account_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_app_info_t &info)
{
    add_texts(parts, info.pkg);
    switch (info.type) {
    case 4:
    case 15:
        return strings(parts, info);
    case 140:
    case 141:
        parts.is_incomplete = info.data_size != sizeof(mdm_app_num_pair_t);
        return record<mdm_app_num_pair_t>(parts, info);
    case 184:
    case 185:
        return record<mdm_app_pair_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_app_res_info_t &info)
{
    add_texts(parts, info.pkg);
    if (is_one_of(info.type, {3, 155, 159, 162, 168, 169, 170, 171, 176, 177})) {
        strings(parts, info);
    } else if (is_between(info.type, 140, 142)) {
        records<mdm_app_res_item_t>(parts, info);
    } else if (is_between(info.type, 172, 175)) {
        records<mdm_app_control_info_t>(parts, info);
    } else {
        raw(parts, info);
    }
}

void body(Parts &parts, mdm_app_cb_info_t &info)
{
    add_texts(parts, info.str7, info.str8);
}

void body(Parts &parts, mdm_misc_cb_info_t &info)
{
    add_texts(parts, info.str8);
}

// The strings of an array, which `data_size` counts.
void array(Parts &parts, mdm_misc_info_t &info)
{
    auto **texts = static_cast<char **>(info.data);
    if (texts == nullptr) {
        return;
    }
    for (int32_t i = 0; i < info.data_size; ++i) {
        add_texts(parts, texts[i]);
    }
    raw(parts, info);
}

void body(Parts &parts, mdm_misc_info_t &info)
{
    switch (info.type) {
    case 122:
        return array(parts, info);
    case 123:
        parts.is_incomplete = false;
        return;
    case 124:
    case 125:
    case 126:
        return record<mdm_misc_str_t>(parts, info);
    case 127:
    case 128:
        parts.is_incomplete = false;
        parts.lists.push_back(
            {info.param_list, [&info](GList *head) { info.param_list = head; }, true});
        return;
    case 281:
    case 283:
        return record<mdm_book_info_t>(parts, info);
    case 288:
    case 289:
        return record<mdm_misc_str_pair_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_phone_res_info_t &info)
{
    if (info.type == 439 || info.type == 440) {
        parts.is_raw_record = info.data != nullptr;
        return raw(parts, info);
    }
    if (info.type == 422) {
        return record<mdm_phone_res_ext_t>(parts, info);
    }
    is_between(info.type, 394, 455) && info.type != 450 && info.type != 451
        ? record<mdm_phone_res_item_t>(parts, info)
        : raw(parts, info);
}

void body(Parts &parts, mdm_kiosk_info_t &info)
{
    switch (info.type) {
    case 612:
    case 614:
        return text(parts, info);
    case 618:
    case 621:
        return records<uint32_t>(parts, info);
    case 619:
        return records<mdm_kiosk_key_pair_t>(parts, info);
    default:
        return raw(parts, info);
    }
}

void body(Parts &parts, mdm_container_info_t &info)
{
    switch (info.type) {
    case 628:
        return record<mdm_container_item_t>(parts, info);
    case 629:
        parts.lacks_payload = lacks_payload(info);
        if (info.data != nullptr) {
            add_texts(parts, static_cast<mdm_container_item_t *>(info.data)->str1);
            removable(parts, info);
        }
        return;
    case 630:
    case 631:
    case 632:
        return raw(parts, info);
    default:
        return;
    }
}

void body(Parts &parts, mdm_roaming_info_t &info)
{
    record<mdm_roaming_data_t>(parts, info);
}

void body(Parts &parts, mdm_log_manager_info_t &info)
{
    if (info.type == 638) {
        add_texts(parts, info.value.text);
    }
}

void body(Parts &parts, mdm_platform_info_t &info)
{
    add_texts(parts, info.text);
}

template <class Info>
void head_alone(Parts &parts, Info &info)
{
    parts.data_size = &info.data_size;
    parts.is_incomplete = info.data_size != 0 && info.data == nullptr;
}

template <class Info>
void sized(Parts &parts, Info &info)
{
    head_alone(parts, info);
    body(parts, info);
}

template <class Info>
void single_list(Parts &parts, Info &info)
{
    head_alone(parts, info);
    raw(parts, info);
}

void body_of(Parts &parts, uint8_t type, mdm_body_t &any)
{
    switch (type) {
    case 1:
    case 2:
        return body(parts, any.admin);
    case 3:
    case 4:
        return sized(parts, any.pwd);
    case 5:
    case 6:
        return sized(parts, any.security);
    case 7:
    case 8:
        return sized(parts, any.wifi);
    case 9:
    case 10:
        return sized(parts, any.bluetooth);
    case 11:
    case 12:
        return sized(parts, any.eas);
    case 13:
        return sized(parts, any.app);
    case 14:
        return sized(parts, any.app_res);
    case 15:
        return sized(parts, any.roaming);
    case 16:
        return head_alone(parts, any.roaming_res);
    case 17:
    case 18:
        return sized(parts, any.misc);
    case 21:
    case 22:
        return sized(parts, any.apn);
    case 23:
    case 24:
        return head_alone(parts, any.browser);
    case 25:
    case 26:
        return single_list(parts, any.date_time);
    case 27:
    case 28:
        return single_list(parts, any.remote);
    case 29:
    case 30:
        return single_list(parts, any.vpn);
    case 31:
    case 32:
        return single_list(parts, any.firewall);
    case 33:
    case 34:
        return single_list(parts, any.res);
    case 35:
    case 36:
        return sized(parts, any.phone_res);
    case 37:
    case 38:
        return head_alone(parts, any.enterprise);
    case 39:
    case 40:
        return sized(parts, any.email);
    case 45:
    case 46:
        return sized(parts, any.kiosk);
    case 47:
    case 48:
        return sized(parts, any.container);
    case 49:
    case 50:
        return head_alone(parts, any.location);
    case 51:
    case 52:
        return body(parts, any.log_manager);
    case 53:
    case 54:
        return body(parts, any.platform);
    case 61:
        return body(parts, any.app_cb);
    case 63:
        return body(parts, any.misc_cb);
    default:
        parts.has_category = false;
    }
}

}  // namespace

Parts parts_of(mdm_msg_t &msg)
{
    Parts parts;
    add_texts(parts, msg.hdr_text);
    body_of(parts, msg.type, msg.body);
    return parts;
}

}  // namespace mdm::fuzz
