// SPDX-License-Identifier: Apache-2.0
#include "support/typed.hpp"

#include <algorithm>
#include <map>
#include <string>

#include "support/wire.hpp"

namespace mdm::test {
namespace {

// Examples of payloads. They are constant where their type lets them be.

char *text(const char *literal)
{
    return mdm_text(literal);
}

const char raw[raw_size + 1] = "bytes";
const char *const array[array_size] = {"a", nullptr, "c"};
const GList *strings()
{
    static const Cells list = cells({text("a"), text("bc")});
    return list.get();
}
template <class Record>
const GList *list_of_two(const Record &record)
{
    static Record first = record;
    static Record second = record;
    static const Cells list = cells({&first, &second});
    return list.get();
}

const mdm_pwd_policy_t pwd_policy_example = {1, 2, 3, 4, 5, 6, 7, 8, 9, text("nine"), nullptr};
const mdm_security_item_t security_item_example = {1, text("one"), 0, text("three"), text("four")};
const mdm_wifi_pair_t wifi_pair_example = {text("office"), text("secret")};
const mdm_wifi_dhcp_t wifi_dhcp_example = {text("0"), text("1"), nullptr, text("3"), text("4")};
const mdm_wifi_triple_t wifi_triple_example = {text("0"), nullptr, text("2")};
const mdm_eas_value_t eas_value_example = {1, text("one")};
const mdm_app_num_pair_t app_num_pair_example = {1, 2};
const mdm_app_pair_t app_pair_example = {text("first"), text("second")};
const mdm_roaming_data_t roaming_data_example = {text("data")};
const mdm_misc_str_t misc_str_example = {text("value")};
const mdm_book_info_t book_info_example = {text("url"), text("title")};
const mdm_misc_str_pair_t misc_str_pair_example = {text("first"), text("second")};
const mdm_phone_res_item_t phone_res_item_example = {text("zero"), 0, text("two")};
const mdm_email_value_t email_value_example = {1, text("one")};
const mdm_container_item_t container_item_example = {1, text("one"), text("two")};
const mdm_container_short_item_t container_short_item_example = {1, text("one")};
mdm_wifi_detail_t detail_example()
{
    mdm_wifi_detail_t detail{};
    detail.w0.text = text("peap");
    detail.w3.number = 7;
    detail.w5.text = text("five");
    return detail;
}
mdm_wifi_detail_t wifi_detail_example = detail_example();
const mdm_wifi_network_t wifi_network_example = {text("office"), 5, &wifi_detail_example};
mdm_phone_res_detail_t phone_res_detail_example = {1, 2, text("two")};
const mdm_phone_res_ext_t phone_res_ext_example = {text("zero"), 0, &phone_res_detail_example};

template <class Account>
Account account_example(char *Account::*first, char *Account::*last)
{
    Account account{};
    account.num0 = 1;
    account.*first = text("first");
    account.*last = text("last");
    return account;
}
const mdm_eas_account_t eas_account_example =
    account_example(&mdm_eas_account_t::str8, &mdm_eas_account_t::str14);
const mdm_email_account_t email_account_example =
    account_example(&mdm_email_account_t::str14, &mdm_email_account_t::str21);
const mdm_apn_account_t apn_account_example =
    account_example(&mdm_apn_account_t::profile_name, &mdm_apn_account_t::str14);
const mdm_security_account_t security_account_example =
    account_example(&mdm_security_account_t::str4, &mdm_security_account_t::str25);
// Only three strings of the settings travel.
const mdm_eas_account_t eas_settings_example = [] {
    mdm_eas_account_t settings{};
    settings.str13 = text("thirteen");
    return settings;
}();
const mdm_email_account_t email_settings_example = [] {
    mdm_email_account_t settings{};
    settings.str15 = text("fifteen");
    return settings;
}();

mdm_admin_info_t admin_example()
{
    mdm_admin_info_t info{};
    info.value = 1;
    info.pkg = text("com.example.one");
    info.text = text("two");
    info.status = -3;
    return info;
}
const mdm_admin_info_t admin_info_example = admin_example();
const uint8_t byte_example = 0x7F;
mdm_platform_info_t platform_example()
{
    mdm_platform_info_t info{};
    info.text = text("text");
    info.number = 1;
    info.flag = 2;
    return info;
}
const mdm_platform_info_t platform_info_example = platform_example();
mdm_app_cb_info_t app_cb_example()
{
    mdm_app_cb_info_t info{};
    info.num6 = 6;
    info.str7 = text("seven");
    info.str8 = text("eight");
    return info;
}
const mdm_app_cb_info_t app_cb_info_example = app_cb_example();
mdm_misc_cb_info_t misc_cb_example()
{
    mdm_misc_cb_info_t info{};
    info.flag6 = 6;
    info.num7 = 7;
    info.str8 = text("eight");
    return info;
}
const mdm_misc_cb_info_t misc_cb_info_example = misc_cb_example();

GList *controls()
{
    static const Cells packages = cells({text("com.example.one")});
    return packages.get();
}

template <class T>
const T &as(const void *payload)
{
    return *static_cast<const T *>(payload);
}

// How one form is filled: each takes the message and what else filling takes.
#define FILL(call)                                                                             \
    [](mdm_msg_t &msg, [[maybe_unused]] uint32_t type, [[maybe_unused]] const void *payload) { \
        return call;                                                                           \
    }
#define READ(call) [](const mdm_msg_t &msg) -> const void * { return call; }

const TypedForm forms[] = {
    {MDM_FORM_ADMIN_QUERY, MDM_TYPE_ADMIN, true, &admin_info_example,
     FILL(mdm_admin_set_query(&msg, as<mdm_admin_info_t>(payload).pkg,
                              as<mdm_admin_info_t>(payload).status)),
     READ(mdm_admin_query(&msg))},
    {MDM_FORM_ADMIN_GENERAL, MDM_TYPE_ADMIN, false, &admin_info_example,
     FILL(mdm_admin_set_general(&msg, type, as<mdm_admin_info_t>(payload).value,
                                as<mdm_admin_info_t>(payload).pkg,
                                as<mdm_admin_info_t>(payload).text)),
     READ(mdm_admin_general(&msg))},
    {MDM_FORM_PWD_POLICY, MDM_TYPE_PWD, true, &pwd_policy_example,
     FILL(mdm_pwd_set_policy(&msg, static_cast<const mdm_pwd_policy_t *>(payload))),
     READ(mdm_pwd_policy(&msg))},
    {MDM_FORM_PWD_DATA, MDM_TYPE_PWD, false, raw,
     FILL(mdm_pwd_set_data(&msg, type, payload, raw_size)), READ(mdm_pwd_data(&msg, nullptr))},
    {MDM_FORM_SECURITY_ITEM, MDM_TYPE_SECURITY, false, &security_item_example,
     FILL(mdm_security_set_item(&msg, type, static_cast<const mdm_security_item_t *>(payload))),
     READ(mdm_security_item(&msg))},
    {MDM_FORM_SECURITY_STRINGS, MDM_TYPE_SECURITY, false, strings(),
     FILL(mdm_security_set_strings(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_security_strings(&msg))},
    {MDM_FORM_SECURITY_ACCOUNTS, MDM_TYPE_SECURITY, false, list_of_two(security_account_example),
     FILL(mdm_security_set_accounts(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_security_accounts(&msg))},
    {MDM_FORM_SECURITY_DATA, MDM_TYPE_SECURITY, false, raw,
     FILL(mdm_security_set_data(&msg, type, payload, raw_size)),
     READ(mdm_security_data(&msg, nullptr))},
    {MDM_FORM_WIFI_PAIR, MDM_TYPE_WIFI, false, &wifi_pair_example,
     FILL(mdm_wifi_set_pair(&msg, type, static_cast<const mdm_wifi_pair_t *>(payload))),
     READ(mdm_wifi_pair(&msg))},
    {MDM_FORM_WIFI_SSIDS, MDM_TYPE_WIFI, false, strings(),
     FILL(mdm_wifi_set_ssids(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_wifi_ssids(&msg))},
    {MDM_FORM_WIFI_DHCP, MDM_TYPE_WIFI, true, &wifi_dhcp_example,
     FILL(mdm_wifi_set_dhcp(&msg, static_cast<const mdm_wifi_dhcp_t *>(payload))),
     READ(mdm_wifi_dhcp(&msg))},
    {MDM_FORM_WIFI_TRIPLE, MDM_TYPE_WIFI, true, &wifi_triple_example,
     FILL(mdm_wifi_set_triple(&msg, static_cast<const mdm_wifi_triple_t *>(payload))),
     READ(mdm_wifi_triple(&msg))},
    {MDM_FORM_WIFI_NETWORK, MDM_TYPE_WIFI, true, &wifi_network_example,
     FILL(mdm_wifi_set_network(&msg, static_cast<const mdm_wifi_network_t *>(payload))),
     READ(mdm_wifi_network(&msg))},
    {MDM_FORM_WIFI_DATA, MDM_TYPE_WIFI, false, raw,
     FILL(mdm_wifi_set_data(&msg, type, payload, raw_size)), READ(mdm_wifi_data(&msg, nullptr))},
    {MDM_FORM_BLUETOOTH_NAMES, MDM_TYPE_BLUETOOTH, false, strings(),
     FILL(mdm_bluetooth_set_names(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_bluetooth_names(&msg))},
    {MDM_FORM_BLUETOOTH_DATA, MDM_TYPE_BLUETOOTH, false, raw,
     FILL(mdm_bluetooth_set_data(&msg, type, payload, raw_size)),
     READ(mdm_bluetooth_data(&msg, nullptr))},
    {MDM_FORM_EAS_ACCOUNT, MDM_TYPE_EAS, true, &eas_account_example,
     FILL(mdm_eas_set_account(&msg, static_cast<const mdm_eas_account_t *>(payload))),
     READ(mdm_eas_account(&msg))},
    {MDM_FORM_EAS_SETTINGS, MDM_TYPE_EAS, true, &eas_settings_example,
     FILL(mdm_eas_set_settings(&msg, static_cast<const mdm_eas_account_t *>(payload))),
     READ(mdm_eas_settings(&msg))},
    {MDM_FORM_EAS_ACCOUNTS, MDM_TYPE_EAS, true, list_of_two(eas_account_example),
     FILL(mdm_eas_set_accounts(&msg, static_cast<const GList *>(payload))),
     READ(mdm_eas_accounts(&msg))},
    {MDM_FORM_EAS_VALUE, MDM_TYPE_EAS, false, &eas_value_example,
     FILL(mdm_eas_set_value(&msg, type, static_cast<const mdm_eas_value_t *>(payload))),
     READ(mdm_eas_value(&msg))},
    {MDM_FORM_APP_PACKAGES, MDM_TYPE_APP, false, strings(),
     FILL(mdm_app_set_packages(&msg, static_cast<int32_t>(type),
                               static_cast<const GList *>(payload))),
     READ(mdm_app_packages(&msg))},
    {MDM_FORM_APP_NUM_PAIR, MDM_TYPE_APP, false, &app_num_pair_example,
     FILL(mdm_app_set_num_pair(&msg, static_cast<int32_t>(type),
                               static_cast<const mdm_app_num_pair_t *>(payload))),
     READ(mdm_app_num_pair(&msg))},
    {MDM_FORM_APP_PAIR, MDM_TYPE_APP, false, &app_pair_example,
     FILL(mdm_app_set_pair(&msg, static_cast<int32_t>(type),
                           static_cast<const mdm_app_pair_t *>(payload))),
     READ(mdm_app_pair(&msg))},
    {MDM_FORM_APP_DATA, MDM_TYPE_APP, false, raw,
     FILL(mdm_app_set_data(&msg, static_cast<int32_t>(type), payload, raw_size)),
     READ(mdm_app_data(&msg, nullptr))},
    {MDM_FORM_APP_RES_PACKAGES, MDM_TYPE_APP_RES, false, strings(),
     FILL(mdm_app_res_set_packages(&msg, static_cast<int32_t>(type),
                                   static_cast<const GList *>(payload))),
     READ(mdm_app_res_packages(&msg))},
    {MDM_FORM_APP_RES_ITEMS, MDM_TYPE_APP_RES, false,
     list_of_two(mdm_app_res_item_t{text("item"), 5}),
     FILL(mdm_app_res_set_items(&msg, static_cast<int32_t>(type),
                                static_cast<const GList *>(payload))),
     READ(mdm_app_res_items(&msg))},
    {MDM_FORM_APP_RES_CONTROLS, MDM_TYPE_APP_RES, false,
     list_of_two(mdm_app_control_info_t{7, controls()}),
     FILL(mdm_app_res_set_controls(&msg, static_cast<int32_t>(type),
                                   static_cast<const GList *>(payload))),
     READ(mdm_app_res_controls(&msg))},
    {MDM_FORM_APP_RES_DATA, MDM_TYPE_APP_RES, false, raw,
     FILL(mdm_app_res_set_data(&msg, static_cast<int32_t>(type), payload, raw_size)),
     READ(mdm_app_res_data(&msg, nullptr))},
    {MDM_FORM_ROAMING_RECORD, MDM_TYPE_ROAMING, false, &roaming_data_example,
     FILL(mdm_roaming_set_record(&msg, type, static_cast<const mdm_roaming_data_t *>(payload))),
     READ(mdm_roaming_record(&msg))},
    {MDM_FORM_MISC_ARRAY, MDM_TYPE_MISC, true, array,
     FILL(mdm_misc_set_array(&msg, static_cast<const char *const *>(payload), array_size)),
     READ(mdm_misc_array(&msg, nullptr))},
    {MDM_FORM_MISC_TEXT, MDM_TYPE_MISC, false, &misc_str_example,
     FILL(mdm_misc_set_text(&msg, static_cast<int32_t>(type),
                            static_cast<const mdm_misc_str_t *>(payload))),
     READ(mdm_misc_text(&msg))},
    {MDM_FORM_MISC_STRINGS, MDM_TYPE_MISC, false, strings(),
     FILL(mdm_misc_set_strings(&msg, static_cast<int32_t>(type),
                               static_cast<const GList *>(payload))),
     READ(mdm_misc_strings(&msg))},
    {MDM_FORM_MISC_BOOK, MDM_TYPE_MISC, false, &book_info_example,
     FILL(mdm_misc_set_book(&msg, static_cast<int32_t>(type),
                            static_cast<const mdm_book_info_t *>(payload))),
     READ(mdm_misc_book(&msg))},
    {MDM_FORM_MISC_PAIR, MDM_TYPE_MISC, false, &misc_str_pair_example,
     FILL(mdm_misc_set_pair(&msg, static_cast<int32_t>(type),
                            static_cast<const mdm_misc_str_pair_t *>(payload))),
     READ(mdm_misc_pair(&msg))},
    {MDM_FORM_MISC_DATA, MDM_TYPE_MISC, false, raw,
     FILL(mdm_misc_set_data(&msg, static_cast<int32_t>(type), payload, raw_size)),
     READ(mdm_misc_data(&msg, nullptr))},
    {MDM_FORM_APN_PROFILE, MDM_TYPE_APN, false, &apn_account_example,
     FILL(mdm_apn_set_profile(&msg, type, static_cast<const mdm_apn_account_t *>(payload))),
     READ(mdm_apn_profile(&msg))},
    {MDM_FORM_APN_PROFILES, MDM_TYPE_APN, false, list_of_two(apn_account_example),
     FILL(mdm_apn_set_profiles(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_apn_profiles(&msg))},
    {MDM_FORM_APN_DATA, MDM_TYPE_APN, false, raw,
     FILL(mdm_apn_set_data(&msg, type, payload, raw_size)), READ(mdm_apn_data(&msg, nullptr))},
    {MDM_FORM_BROWSER_DATA, MDM_TYPE_BROWSER, false, raw,
     FILL(mdm_browser_set_data(&msg, type, payload, raw_size)),
     READ(mdm_browser_data(&msg, nullptr))},
    {MDM_FORM_DATE_TIME_DATA, MDM_TYPE_DATE_TIME, false, raw,
     FILL(mdm_date_time_set_data(&msg, type, payload, raw_size)),
     READ(mdm_date_time_data(&msg, nullptr))},
    {MDM_FORM_REMOTE_DATA, MDM_TYPE_REMOTE, false, raw,
     FILL(mdm_remote_set_data(&msg, type, payload, raw_size)),
     READ(mdm_remote_data(&msg, nullptr))},
    {MDM_FORM_VPN_DATA, MDM_TYPE_VPN, false, raw,
     FILL(mdm_vpn_set_data(&msg, type, payload, raw_size)), READ(mdm_vpn_data(&msg, nullptr))},
    {MDM_FORM_FIREWALL_DATA, MDM_TYPE_FIREWALL, false, raw,
     FILL(mdm_firewall_set_data(&msg, type, payload, raw_size)),
     READ(mdm_firewall_data(&msg, nullptr))},
    {MDM_FORM_RES_DATA, MDM_TYPE_RES, false, raw,
     FILL(mdm_res_set_data(&msg, type, payload, raw_size)), READ(mdm_res_data(&msg, nullptr))},
    {MDM_FORM_PHONE_RES_ITEM, MDM_TYPE_PHONE_RES, false, &phone_res_item_example,
     FILL(mdm_phone_res_set_item(&msg, static_cast<int32_t>(type),
                                 static_cast<const mdm_phone_res_item_t *>(payload))),
     READ(mdm_phone_res_item(&msg))},
    {MDM_FORM_PHONE_RES_EXT, MDM_TYPE_PHONE_RES, true, &phone_res_ext_example,
     FILL(mdm_phone_res_set_ext(&msg, static_cast<const mdm_phone_res_ext_t *>(payload))),
     READ(mdm_phone_res_ext(&msg))},
    {MDM_FORM_PHONE_RES_RAW_ITEM, MDM_TYPE_PHONE_RES, false, raw, nullptr,
     READ(mdm_phone_res_raw_item(&msg, nullptr))},
    {MDM_FORM_PHONE_RES_DATA, MDM_TYPE_PHONE_RES, false, raw,
     FILL(mdm_phone_res_set_data(&msg, static_cast<int32_t>(type), payload, raw_size)),
     READ(mdm_phone_res_data(&msg, nullptr))},
    {MDM_FORM_ENTERPRISE_DATA, MDM_TYPE_ENTERPRISE, false, raw,
     FILL(mdm_enterprise_set_data(&msg, type, payload, raw_size)),
     READ(mdm_enterprise_data(&msg, nullptr))},
    {MDM_FORM_EMAIL_ACCOUNT, MDM_TYPE_EMAIL, true, &email_account_example,
     FILL(mdm_email_set_account(&msg, static_cast<const mdm_email_account_t *>(payload))),
     READ(mdm_email_account(&msg))},
    {MDM_FORM_EMAIL_SETTINGS, MDM_TYPE_EMAIL, true, &email_settings_example,
     FILL(mdm_email_set_settings(&msg, static_cast<const mdm_email_account_t *>(payload))),
     READ(mdm_email_settings(&msg))},
    {MDM_FORM_EMAIL_ACCOUNTS, MDM_TYPE_EMAIL, true, list_of_two(email_account_example),
     FILL(mdm_email_set_accounts(&msg, static_cast<const GList *>(payload))),
     READ(mdm_email_accounts(&msg))},
    {MDM_FORM_EMAIL_VALUE, MDM_TYPE_EMAIL, false, &email_value_example,
     FILL(mdm_email_set_value(&msg, type, static_cast<const mdm_email_value_t *>(payload))),
     READ(mdm_email_value(&msg))},
    {MDM_FORM_KIOSK_TEXT, MDM_TYPE_KIOSK, false, "text",
     FILL(mdm_kiosk_set_text(&msg, type, static_cast<const char *>(payload))),
     READ(mdm_kiosk_text(&msg))},
    {MDM_FORM_KIOSK_KEYS, MDM_TYPE_KIOSK, false, list_of_two(uint32_t{17}),
     FILL(mdm_kiosk_set_keys(&msg, type, static_cast<const GList *>(payload))),
     READ(mdm_kiosk_keys(&msg))},
    {MDM_FORM_KIOSK_KEY_PAIRS, MDM_TYPE_KIOSK, true, list_of_two(mdm_kiosk_key_pair_t{1, 2}),
     FILL(mdm_kiosk_set_key_pairs(&msg, static_cast<const GList *>(payload))),
     READ(mdm_kiosk_key_pairs(&msg))},
    {MDM_FORM_KIOSK_DATA, MDM_TYPE_KIOSK, false, raw,
     FILL(mdm_kiosk_set_data(&msg, type, payload, raw_size)), READ(mdm_kiosk_data(&msg, nullptr))},
    {MDM_FORM_CONTAINER_ITEM, MDM_TYPE_CONTAINER, true, &container_item_example,
     FILL(mdm_container_set_item(&msg, static_cast<const mdm_container_item_t *>(payload))),
     READ(mdm_container_item(&msg))},
    {MDM_FORM_CONTAINER_SHORT_ITEM, MDM_TYPE_CONTAINER, true, &container_short_item_example,
     FILL(mdm_container_set_short_item(&msg,
                                       static_cast<const mdm_container_short_item_t *>(payload))),
     READ(mdm_container_short_item(&msg))},
    {MDM_FORM_CONTAINER_DATA, MDM_TYPE_CONTAINER, false, raw,
     FILL(mdm_container_set_data(&msg, type, payload, raw_size)),
     READ(mdm_container_data(&msg, nullptr))},
    {MDM_FORM_LOG_MANAGER_TEXT, MDM_TYPE_LOG_MANAGER, true, "text",
     FILL(mdm_log_manager_set_text(&msg, static_cast<const char *>(payload))),
     READ(mdm_log_manager_text(&msg))},
    {MDM_FORM_LOG_MANAGER_BYTE, MDM_TYPE_LOG_MANAGER, false, &byte_example,
     FILL(mdm_log_manager_set_byte(&msg, type, as<uint8_t>(payload))),
     READ(mdm_log_manager_byte(&msg))},
    {MDM_FORM_PLATFORM_FLAG, MDM_TYPE_PLATFORM, true, &platform_info_example,
     FILL(mdm_platform_set_flag(&msg, as<mdm_platform_info_t>(payload).text,
                                as<mdm_platform_info_t>(payload).number,
                                as<mdm_platform_info_t>(payload).flag)),
     READ(mdm_platform_flag(&msg))},
    {MDM_FORM_PLATFORM_NUMBER, MDM_TYPE_PLATFORM, true, &platform_info_example,
     FILL(mdm_platform_set_number(&msg, as<mdm_platform_info_t>(payload).text,
                                  as<mdm_platform_info_t>(payload).number)),
     READ(mdm_platform_number(&msg))},
    {MDM_FORM_PLATFORM_TEXT, MDM_TYPE_PLATFORM, false, &platform_info_example,
     FILL(mdm_platform_set_text(&msg, type, as<mdm_platform_info_t>(payload).text)),
     READ(mdm_platform_text(&msg))},
    {MDM_FORM_APP_CB_DETAIL, MDM_TYPE_APP_CB, false, &app_cb_info_example,
     FILL(mdm_app_cb_set_detail(&msg, type, as<mdm_app_cb_info_t>(payload).num6,
                                as<mdm_app_cb_info_t>(payload).str7,
                                as<mdm_app_cb_info_t>(payload).str8)),
     READ(mdm_app_cb_detail(&msg))},
    {MDM_FORM_MISC_CB_DETAIL, MDM_TYPE_MISC_CB, false, &misc_cb_info_example,
     FILL(mdm_misc_cb_set_detail(&msg, type, as<mdm_misc_cb_info_t>(payload).flag6,
                                 as<mdm_misc_cb_info_t>(payload).num7,
                                 as<mdm_misc_cb_info_t>(payload).str8)),
     READ(mdm_misc_cb_detail(&msg))},
};

const TypedHead heads[] = {
    {MDM_TYPE_PWD, [](mdm_msg_t &msg, uint32_t type) { return mdm_pwd_set_head(&msg, type); }},
    {MDM_TYPE_SECURITY,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_security_set_head(&msg, type); }},
    {MDM_TYPE_WIFI, [](mdm_msg_t &msg, uint32_t type) { return mdm_wifi_set_head(&msg, type); }},
    {MDM_TYPE_BLUETOOTH,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_bluetooth_set_head(&msg, type); }},
    {MDM_TYPE_EAS, [](mdm_msg_t &msg, uint32_t type) { return mdm_eas_set_head(&msg, type); }},
    {MDM_TYPE_APP,
     [](mdm_msg_t &msg, uint32_t type) {
         return mdm_app_set_head(&msg, static_cast<int32_t>(type));
     }},
    {MDM_TYPE_APP_RES,
     [](mdm_msg_t &msg, uint32_t type) {
         return mdm_app_res_set_head(&msg, static_cast<int32_t>(type));
     }},
    {MDM_TYPE_ROAMING_RES,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_roaming_res_set_head(&msg, type); }},
    {MDM_TYPE_MISC,
     [](mdm_msg_t &msg, uint32_t type) {
         return mdm_misc_set_head(&msg, static_cast<int32_t>(type));
     }},
    {MDM_TYPE_APN, [](mdm_msg_t &msg, uint32_t type) { return mdm_apn_set_head(&msg, type); }},
    {MDM_TYPE_BROWSER,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_browser_set_head(&msg, type); }},
    {MDM_TYPE_DATE_TIME,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_date_time_set_head(&msg, type); }},
    {MDM_TYPE_REMOTE,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_remote_set_head(&msg, type); }},
    {MDM_TYPE_VPN, [](mdm_msg_t &msg, uint32_t type) { return mdm_vpn_set_head(&msg, type); }},
    {MDM_TYPE_FIREWALL,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_firewall_set_head(&msg, type); }},
    {MDM_TYPE_RES, [](mdm_msg_t &msg, uint32_t type) { return mdm_res_set_head(&msg, type); }},
    {MDM_TYPE_PHONE_RES,
     [](mdm_msg_t &msg, uint32_t type) {
         return mdm_phone_res_set_head(&msg, static_cast<int32_t>(type));
     }},
    {MDM_TYPE_ENTERPRISE,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_enterprise_set_head(&msg, type); }},
    {MDM_TYPE_EMAIL, [](mdm_msg_t &msg, uint32_t type) { return mdm_email_set_head(&msg, type); }},
    {MDM_TYPE_KIOSK, [](mdm_msg_t &msg, uint32_t type) { return mdm_kiosk_set_head(&msg, type); }},
    {MDM_TYPE_CONTAINER,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_container_set_head(&msg, type); }},
    {MDM_TYPE_LOCATION,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_location_set_head(&msg, type); }},
    {MDM_TYPE_APP_CB,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_app_cb_set_head(&msg, type); }},
    {MDM_TYPE_MISC_CB,
     [](mdm_msg_t &msg, uint32_t type) { return mdm_misc_cb_set_head(&msg, type); }},
};

}  // namespace

std::span<const TypedForm> typed_forms()
{
    return forms;
}

std::span<const TypedHead> typed_heads()
{
    return heads;
}

std::ostream &operator<<(std::ostream &out, const TypedForm &typed)
{
    return out << mdm_form_name(typed.form);
}

mdm_form_t public_form_of(const CategoryFormat &category, const Form &form)
{
    static std::map<const Form *, mdm_form_t> known;
    const auto [place, is_new] = known.try_emplace(&form, MDM_FORM_NONE);
    if (is_new) {
        std::string name = form.name == std::string("data-between") ? "data" : form.name;
        std::ranges::replace(name, '-', '_');
        name = std::string(category.name) + "." + name;
        for (unsigned number = 0; number < 256 && mdm_form_name(place->second) != name; ++number) {
            place->second = static_cast<mdm_form_t>(number);
        }
    }
    return place->second;
}

}  // namespace mdm::test
