/* SPDX-License-Identifier: Apache-2.0 */
#include "requests.h"

#include <string.h>

#include <mdm/util_policy.h>

struct visitor {
    requests_visit_t visit;
    void *user_data;
};

static bool pass(const struct visitor *visitor, mdm_msg_t *request)
{
    return visitor->visit(request, visitor->user_data);
}

static bool fill_pwd(const struct visitor *visitor)
{
    const mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, "password", "[a-z]{8,}"};
    mdm_msg_t request = {0};
    return mdm_pwd_set_policy(&request, &policy) && pass(visitor, &request);
}

static bool fill_security(const struct visitor *visitor)
{
    const mdm_security_item_t item = {
        .num0 = 1, .str1 = "internal", .str3 = "aes-xts", .str4 = "work"};
    mdm_msg_t request = {0};
    return mdm_security_set_item(&request, MDM_SECURITY_ITEM_56, &item) && pass(visitor, &request);
}

static bool fill_wifi(const struct visitor *visitor)
{
    mdm_wifi_detail_t detail = {
        .w0.text = "peap", .w1.text = "agent", .w3.number = 2, .w4.text = "mschapv2"};
    const mdm_wifi_network_t network = {"office", 5, &detail};
    mdm_msg_t request = {0};
    return mdm_wifi_set_network(&request, &network) && pass(visitor, &request);
}

static bool fill_bluetooth(const struct visitor *visitor)
{
    GList *names = g_list_append(NULL, mdm_text("keyboard"));
    names = g_list_append(names, mdm_text("mouse"));
    mdm_msg_t request = {0};
    const bool going_on = mdm_bluetooth_set_names(&request, MDM_BLUETOOTH_NAMES_223, names) &&
                          pass(visitor, &request);
    g_list_free(names);
    return going_on;
}

static bool fill_eas(const struct visitor *visitor)
{
    const mdm_eas_account_t account = {
        .num0 = 1, .num5 = 6, .str6 = "agent", .str14 = "example.com"};
    mdm_msg_t request = {0};
    return mdm_eas_set_account(&request, &account) && pass(visitor, &request);
}

static bool fill_app(const struct visitor *visitor)
{
    GList *packages = g_list_append(NULL, mdm_text("com.example.game"));
    packages = g_list_append(packages, mdm_text("com.example.store"));
    mdm_msg_t request = {0};
    const bool is_filled = mdm_app_set_packages(&request, MDM_APP_PACKAGES_4, packages);
    request.body.app.pkg = mdm_text("com.example.agent");
    const bool going_on = is_filled && pass(visitor, &request);
    g_list_free(packages);
    return going_on;
}

static bool fill_roaming(const struct visitor *visitor)
{
    const mdm_roaming_data_t record = {"data"};
    mdm_msg_t request = {0};
    return mdm_roaming_set_record(&request, 1, &record) && pass(visitor, &request);
}

static bool fill_misc(const struct visitor *visitor)
{
    const mdm_book_info_t book = {"https://intranet.example.com", "Intranet"};
    mdm_msg_t request = {0};
    return mdm_misc_set_book(&request, MDM_MISC_BOOK_283, &book) && pass(visitor, &request);
}

static bool fill_apn(const struct visitor *visitor)
{
    const mdm_apn_account_t profile = {
        .num0 = 262, .num1 = 1, .profile_name = "Office", .str3 = "office.example"};
    mdm_msg_t request = {0};
    return mdm_apn_set_profile(&request, MDM_APN_PROFILE_387, &profile) && pass(visitor, &request);
}

/* The function that fills a message with raw bytes of one category. */
typedef bool set_data(mdm_msg_t *msg, uint32_t type, const void *bytes, size_t size);

static bool fill_text(const struct visitor *visitor, set_data *set, uint32_t discriminator,
                      const char *text)
{
    mdm_msg_t request = {0};
    return set(&request, discriminator, text, strlen(text)) && pass(visitor, &request);
}

static bool fill_single_lists(const struct visitor *visitor)
{
    const char *profile = "office:ikev2:vpn.example.com";
    const char *rules = "allow tcp 443;deny udp 53;";
    return fill_text(visitor, mdm_browser_set_data, 1, "https://example.com") &&
           fill_text(visitor, mdm_date_time_set_data, 1, "Europe/Vienna") &&
           fill_text(visitor, mdm_remote_set_data, 1, "ring") &&
           fill_text(visitor, mdm_vpn_set_data, 1, profile) &&
           fill_text(visitor, mdm_firewall_set_data, 1, rules) &&
           fill_text(visitor, mdm_res_set_data, 1, "camera=off") &&
           fill_text(visitor, mdm_enterprise_set_data, 1, "0123-4567");
}

static bool fill_phone_res(const struct visitor *visitor)
{
    const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {500, 30, 0, -1, 0, 0};
    char *limit_text = NULL;
    uint32_t size = 0;
    if (mdm_phone_res_limit_serialize(1, limit, &limit_text, &size) != MDM_RESULT_SUCCESS) {
        return false;
    }
    mdm_phone_res_detail_t detail = {.num0 = 1, .str2 = limit_text};
    const mdm_phone_res_ext_t ext = {.str0 = "sim1", .detail = &detail};
    mdm_msg_t request = {0};
    const bool going_on = mdm_phone_res_set_ext(&request, &ext) && pass(visitor, &request);
    g_free(limit_text);
    return going_on;
}

static bool fill_email(const struct visitor *visitor)
{
    const mdm_email_account_t account = {.num3 = 993,
                                         .num8 = 1,
                                         .str9 = "not sent",
                                         .str13 = "agent@example.com",
                                         .str21 = "mail.example.com"};
    mdm_msg_t request = {0};
    return mdm_email_set_account(&request, &account) && pass(visitor, &request);
}

static bool fill_kiosk(const struct visitor *visitor)
{
    mdm_kiosk_key_pair_t home = {172, 0};
    mdm_kiosk_key_pair_t volume = {115, 1};
    GList *pairs = g_list_append(g_list_append(NULL, &home), &volume);
    mdm_msg_t request = {0};
    const bool going_on = mdm_kiosk_set_key_pairs(&request, pairs) && pass(visitor, &request);
    g_list_free(pairs);
    return going_on;
}

static bool fill_container(const struct visitor *visitor)
{
    const mdm_container_item_t item = {7, "work", "com.example.mail"};
    mdm_msg_t request = {0};
    return mdm_container_set_item(&request, &item) && pass(visitor, &request);
}

static bool fill_location(const struct visitor *visitor)
{
    mdm_msg_t request = {0};
    return mdm_location_set_head(&request, 1) && pass(visitor, &request);
}

static bool fill_log_manager(const struct visitor *visitor)
{
    mdm_msg_t request = {0};
    return mdm_log_manager_set_text(&request, "net:info") && pass(visitor, &request);
}

static bool fill_platform(const struct visitor *visitor)
{
    mdm_msg_t request = {0};
    return mdm_platform_set_flag(&request, "screen.timeout", 60, 1) && pass(visitor, &request);
}

bool requests_visit(requests_visit_t visit, void *user_data)
{
    const struct visitor visitor = {visit, user_data};
    return fill_pwd(&visitor) && fill_security(&visitor) && fill_wifi(&visitor) &&
           fill_bluetooth(&visitor) && fill_eas(&visitor) && fill_app(&visitor) &&
           fill_roaming(&visitor) && fill_misc(&visitor) && fill_apn(&visitor) &&
           fill_single_lists(&visitor) && fill_phone_res(&visitor) && fill_email(&visitor) &&
           fill_kiosk(&visitor) && fill_container(&visitor) && fill_location(&visitor) &&
           fill_log_manager(&visitor) && fill_platform(&visitor);
}
