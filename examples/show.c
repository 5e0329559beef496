/* SPDX-License-Identifier: Apache-2.0 */
#include "show.h"

#include <stddef.h>
#include <stdio.h>

#include <mdm/noti.h>

#include "protocol.h"

static const char *text_or_dash(const char *text)
{
    return text != NULL ? text : "-";
}

static void show_numbers(const char *name, const uint32_t *numbers, size_t count)
{
    printf(" %s=", name);
    for (size_t i = 0; i < count; ++i) {
        printf(i == 0 ? "%u" : ",%u", numbers[i]);
    }
}

static void show_texts(const char *name, char *const *texts, size_t count)
{
    printf(" %s=", name);
    for (size_t i = 0; i < count; ++i) {
        printf(i == 0 ? "%s" : ",%s", text_or_dash(texts[i]));
    }
}

static void show_names(const GList *names)
{
    for (const GList *cell = names; cell != NULL; cell = cell->next) {
        printf("%s%s", cell == names ? " names=" : ",", text_or_dash(cell->data));
    }
}

/* Prints the fields of the body head. */
#define SHOW_HEAD(info) \
    printf("type=%d param=%u data_size=%d", (int)(info)->type, (info)->param, (info)->data_size)

/* Each of these functions shows a body of one category. It shows every field of the form that this
 * demo uses, and only the head of any other form. */

static void show_admin(const mdm_msg_t *msg)
{
    const mdm_admin_info_t *info = &msg->body.admin;
    switch (info->type) {
    case IS_CLIENT_REGISTERED:
        printf("IS_CLIENT_REGISTERED pkg=%s status=%d", text_or_dash(info->pkg), info->status);
        break;
    case ADMIN_REGISTER:
        printf("REGISTER pkg=%s value=%u text=%s", text_or_dash(info->pkg), info->value,
               text_or_dash(info->text));
        break;
    case ADMIN_REFUSED:
        printf("REFUSED text=%s", text_or_dash(info->text));
        break;
    default:
        printf("type=%u", info->type);
    }
}

static void show_pwd(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.pwd);
    const mdm_pwd_policy_t *policy = mdm_pwd_policy(msg);
    if (policy != NULL) {
        show_numbers("num0..8", &policy->num0, 9);
        show_texts("str9..10", &policy->str9, 2);
    }
}

static void show_security(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.security);
    const mdm_security_item_t *item = mdm_security_item(msg);
    if (item != NULL) {
        printf(" num0=%u str1=%s str3=%s str4=%s", item->num0, text_or_dash(item->str1),
               text_or_dash(item->str3), text_or_dash(item->str4));
    }
}

static void show_wifi(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.wifi);
    const mdm_wifi_network_t *network = mdm_wifi_network(msg);
    if (network == NULL) {
        return;
    }
    printf(" ssid=%s detail_kind=%d", text_or_dash(network->ssid), network->detail_kind);
    if (network->detail_kind == 5 && network->detail != NULL) {
        const mdm_wifi_detail_t *detail = network->detail;
        printf(" w0..5=%s,%s,%s,%u,%s,%s", text_or_dash(detail->w0.text),
               text_or_dash(detail->w1.text), text_or_dash(detail->w2.text), detail->w3.number,
               text_or_dash(detail->w4.text), text_or_dash(detail->w5.text));
    }
}

static void show_bluetooth(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.bluetooth);
    show_names(mdm_bluetooth_names(msg));
}

static void show_eas(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.eas);
    const mdm_eas_account_t *account = mdm_eas_account(msg);
    if (account != NULL) {
        show_numbers("num0..5", &account->num0, 6);
        show_texts("str6..14", &account->str6, 9);
    }
}

static void show_app(const mdm_msg_t *msg)
{
    const mdm_app_info_t *info = &msg->body.app;
    SHOW_HEAD(info);
    printf(" pkg=%s", text_or_dash(info->pkg));
    show_names(mdm_app_packages(msg));
}

static void show_app_res(const mdm_msg_t *msg)
{
    const mdm_app_res_info_t *info = &msg->body.app_res;
    SHOW_HEAD(info);
    printf(" pkg=%s", text_or_dash(info->pkg));
    for (const GList *cell = mdm_app_res_items(msg); cell != NULL; cell = cell->next) {
        const mdm_app_res_item_t *item = cell->data;
        printf(" %s:%u", text_or_dash(item->name), item->value);
    }
}

static void show_roaming(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.roaming);
    const mdm_roaming_data_t *record = mdm_roaming_record(msg);
    if (record != NULL) {
        printf(" name=%s", text_or_dash(record->name));
    }
}

static void show_misc(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.misc);
    const mdm_book_info_t *book = mdm_misc_book(msg);
    if (book != NULL) {
        printf(" url=%s title=%s", text_or_dash(book->url), text_or_dash(book->title));
    }
}

static void show_apn(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.apn);
    const mdm_apn_account_t *profile = mdm_apn_profile(msg);
    if (profile != NULL) {
        show_numbers("num0..1", &profile->num0, 2);
        printf(" profile_name=%s", text_or_dash(profile->profile_name));
        show_texts("str3..14", &profile->str3, 12);
    }
}

static const char *raw_bytes(const mdm_msg_t *msg, size_t *size)
{
    switch (mdm_form_of(msg)) {
    case MDM_FORM_BROWSER_DATA:
        return mdm_browser_data(msg, size);
    case MDM_FORM_DATE_TIME_DATA:
        return mdm_date_time_data(msg, size);
    case MDM_FORM_REMOTE_DATA:
        return mdm_remote_data(msg, size);
    case MDM_FORM_VPN_DATA:
        return mdm_vpn_data(msg, size);
    case MDM_FORM_FIREWALL_DATA:
        return mdm_firewall_data(msg, size);
    case MDM_FORM_RES_DATA:
        return mdm_res_data(msg, size);
    case MDM_FORM_ENTERPRISE_DATA:
        return mdm_enterprise_data(msg, size);
    default:
        return NULL;
    }
}

/* All categories whose body is the body head alone, or the body head and raw bytes. They declare
 * the same fields, so the body of one stands for all. */
static void show_single_list(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.res);
    size_t size = 0;
    const char *bytes = raw_bytes(msg, &size);
    if (bytes != NULL) {
        printf(" data='%.*s'", (int)size, bytes);
    }
}

static void show_phone_res(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.phone_res);
    const mdm_phone_res_ext_t *ext = mdm_phone_res_ext(msg);
    if (ext != NULL) {
        printf(" str0=%s num0=%u num1=%u str2=%s", text_or_dash(ext->str0), ext->detail->num0,
               ext->detail->num1, text_or_dash(ext->detail->str2));
    }
}

static void show_email(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.email);
    const mdm_email_account_t *account = mdm_email_account(msg);
    if (account != NULL) {
        show_numbers("num0..8", &account->num0, 9);
        show_texts("str9..21", &account->str9, 13);
    }
}

static void show_kiosk(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.kiosk);
    for (const GList *cell = mdm_kiosk_key_pairs(msg); cell != NULL; cell = cell->next) {
        const mdm_kiosk_key_pair_t *pair = cell->data;
        printf(" %u:%u", pair->key, pair->value);
    }
}

static void show_container(const mdm_msg_t *msg)
{
    SHOW_HEAD(&msg->body.container);
    const mdm_container_item_t *item = mdm_container_item(msg);
    if (item != NULL) {
        printf(" num0=%u str1=%s str2=%s", item->num0, text_or_dash(item->str1),
               text_or_dash(item->str2));
    }
}

static void show_log_manager(const mdm_msg_t *msg)
{
    printf("type=%u", msg->body.log_manager.type);
    if (mdm_form_of(msg) == MDM_FORM_LOG_MANAGER_TEXT) {
        printf(" value=%s", text_or_dash(mdm_log_manager_text(msg)));
    }
}

static void show_platform(const mdm_msg_t *msg)
{
    const mdm_platform_info_t *info = &msg->body.platform;
    printf("type=%u text=%s", info->type, text_or_dash(info->text));
    if (mdm_platform_flag(msg) != NULL) {
        printf(" number=%u flag=%u", info->number, info->flag);
    }
}

static void show_app_cb(const mdm_msg_t *msg)
{
    const mdm_app_cb_info_t *info = &msg->body.app_cb;
    printf("type=%u param=%u param2=%u data_size=%u num6=%u str7=%s str8=%s", info->type,
           info->param, info->param2, info->data_size, info->num6, text_or_dash(info->str7),
           text_or_dash(info->str8));
}

static void show_misc_cb(const mdm_msg_t *msg)
{
    const mdm_misc_cb_info_t *info = &msg->body.misc_cb;
    printf("type=%u param=%u param2=%u data_size=%u flag6=%u num7=%u str8=%s", info->type,
           info->param, info->param2, info->data_size, info->flag6, info->num7,
           text_or_dash(info->str8));
}

static void show_body(const mdm_msg_t *msg)
{
    static void (*const show[])(const mdm_msg_t *msg) = {
        [MDM_CATEGORY_ADMIN] = show_admin,
        [MDM_CATEGORY_PWD] = show_pwd,
        [MDM_CATEGORY_SECURITY] = show_security,
        [MDM_CATEGORY_WIFI] = show_wifi,
        [MDM_CATEGORY_BLUETOOTH] = show_bluetooth,
        [MDM_CATEGORY_EAS] = show_eas,
        [MDM_CATEGORY_APP] = show_app,
        [MDM_CATEGORY_APP_RES] = show_app_res,
        [MDM_CATEGORY_ROAMING] = show_roaming,
        [MDM_CATEGORY_ROAMING_RES] = show_single_list,
        [MDM_CATEGORY_MISC] = show_misc,
        [MDM_CATEGORY_APN] = show_apn,
        [MDM_CATEGORY_BROWSER] = show_single_list,
        [MDM_CATEGORY_DATE_TIME] = show_single_list,
        [MDM_CATEGORY_REMOTE] = show_single_list,
        [MDM_CATEGORY_VPN] = show_single_list,
        [MDM_CATEGORY_FIREWALL] = show_single_list,
        [MDM_CATEGORY_RES] = show_single_list,
        [MDM_CATEGORY_PHONE_RES] = show_phone_res,
        [MDM_CATEGORY_ENTERPRISE] = show_single_list,
        [MDM_CATEGORY_EMAIL] = show_email,
        [MDM_CATEGORY_KIOSK] = show_kiosk,
        [MDM_CATEGORY_CONTAINER] = show_container,
        [MDM_CATEGORY_LOCATION] = show_single_list,
        [MDM_CATEGORY_LOG_MANAGER] = show_log_manager,
        [MDM_CATEGORY_PLATFORM] = show_platform,
        [MDM_CATEGORY_APP_CB] = show_app_cb,
        [MDM_CATEGORY_MISC_CB] = show_misc_cb,
    };
    const size_t category = mdm_category_of(msg->type);
    if (category < G_N_ELEMENTS(show) && show[category] != NULL) {
        show[category](msg);
    }
}

void show_head(const char *side)
{
    printf("%s     no  type  category     bytes  result  fields\n", side);
}

void show_message(const char *side, const char *direction, const mdm_msg_t *msg, uint32_t length)
{
    printf("%s  %s %2u  %4u  %-11s  %5u  %6d  ", side, direction, msg->hdr_word1, msg->type,
           mdm_category_name(mdm_category_of(msg->type)), length, (int32_t)msg->hdr_word2);
    show_body(msg);
    putchar('\n');
}

void show_status(const char *side, const char *key)
{
    int32_t status = 0;
    if (mdm_read_noti(key, &status) == MDM_RESULT_SUCCESS) {
        printf("%s  status %s is %d\n", side, key, status);
    } else {
        printf("%s  status %s is not there\n", side, key);
    }
}
