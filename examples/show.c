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
    printf(" names=");
    for (const GList *cell = names; cell != NULL; cell = cell->next) {
        printf(cell == names ? "%s" : ",%s", text_or_dash(cell->data));
    }
}

/* Prints the fields of the body head. */
#define SHOW_HEAD(info) \
    printf("type=%d param=%u data_size=%d", (int)(info)->type, (info)->param, (info)->data_size)

static void show_bytes(int32_t data_size, const void *data)
{
    if (data_size >= 1 && data != NULL) {
        printf(" data='%.*s'", data_size, (const char *)data);
    }
}

/* Each of these functions shows a body of one category. It shows every field of the form that this
 * demo uses, and only the head of any other form. */

static void show_admin(const mdm_body_t *body)
{
    const mdm_admin_info_t *info = &body->admin;
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

static void show_pwd(const mdm_body_t *body)
{
    const mdm_pwd_info_t *info = &body->pwd;
    SHOW_HEAD(info);
    if (info->type == PWD_POLICY && info->data_size >= 1 && info->data != NULL) {
        const mdm_pwd_policy_t *policy = info->data;
        show_numbers("num0..8", &policy->num0, 9);
        show_texts("str9..10", &policy->str9, 2);
    }
}

static void show_security(const mdm_body_t *body)
{
    const mdm_security_info_t *info = &body->security;
    SHOW_HEAD(info);
    if (info->type == SECURITY_ITEM && info->data != NULL) {
        const mdm_security_item_t *item = info->data;
        printf(" num0=%u str1=%s str3=%s str4=%s", item->num0, text_or_dash(item->str1),
               text_or_dash(item->str3), text_or_dash(item->str4));
    }
}

static void show_wifi(const mdm_body_t *body)
{
    const mdm_wifi_info_t *info = &body->wifi;
    SHOW_HEAD(info);
    if (info->type == WIFI_NETWORK && info->data != NULL) {
        const mdm_wifi_network_t *network = info->data;
        printf(" ssid=%s detail_kind=%d", text_or_dash(network->ssid), network->detail_kind);
        if (network->detail_kind == 5 && network->detail != NULL) {
            const mdm_wifi_detail_t *detail = network->detail;
            printf(" w0..5=%s,%s,%s,%u,%s,%s", text_or_dash(detail->w0.text),
                   text_or_dash(detail->w1.text), text_or_dash(detail->w2.text), detail->w3.number,
                   text_or_dash(detail->w4.text), text_or_dash(detail->w5.text));
        }
    }
}

static void show_bluetooth(const mdm_body_t *body)
{
    const mdm_bluetooth_info_t *info = &body->bluetooth;
    SHOW_HEAD(info);
    if (info->type == BLUETOOTH_NAMES) {
        show_names(info->data);
    }
}

static void show_eas(const mdm_body_t *body)
{
    const mdm_eas_info_t *info = &body->eas;
    SHOW_HEAD(info);
    if (info->type == EAS_ACCOUNT && info->data != NULL) {
        const mdm_eas_account_t *account = info->data;
        show_numbers("num0..5", &account->num0, 6);
        show_texts("str6..14", &account->str6, 9);
    }
}

static void show_app(const mdm_body_t *body)
{
    const mdm_app_info_t *info = &body->app;
    SHOW_HEAD(info);
    printf(" pkg=%s", text_or_dash(info->pkg));
    if (info->type == APP_PACKAGES) {
        show_names(info->data);
    }
}

static void show_app_res(const mdm_body_t *body)
{
    const mdm_app_res_info_t *info = &body->app_res;
    SHOW_HEAD(info);
    printf(" pkg=%s", text_or_dash(info->pkg));
    if (info->type == APP_RES_ITEMS) {
        for (const GList *cell = info->data; cell != NULL; cell = cell->next) {
            const mdm_app_res_item_t *item = cell->data;
            printf(" %s:%u", text_or_dash(item->name), item->value);
        }
    }
}

static void show_roaming(const mdm_body_t *body)
{
    const mdm_roaming_info_t *info = &body->roaming;
    SHOW_HEAD(info);
    if (info->data != NULL) {
        printf(" name=%s", text_or_dash(((const mdm_roaming_data_t *)info->data)->name));
    }
}

static void show_roaming_res(const mdm_body_t *body)
{
    SHOW_HEAD(&body->roaming_res);
}

static void show_misc(const mdm_body_t *body)
{
    const mdm_misc_info_t *info = &body->misc;
    SHOW_HEAD(info);
    if (info->type == MISC_BOOK && info->data != NULL) {
        const mdm_book_info_t *book = info->data;
        printf(" url=%s title=%s", text_or_dash(book->url), text_or_dash(book->title));
    }
}

static void show_apn(const mdm_body_t *body)
{
    const mdm_apn_info_t *info = &body->apn;
    SHOW_HEAD(info);
    if (info->type == APN_PROFILE && info->data != NULL) {
        const mdm_apn_account_t *profile = info->data;
        show_numbers("num0..1", &profile->num0, 2);
        printf(" profile_name=%s", text_or_dash(profile->profile_name));
        show_texts("str3..14", &profile->str3, 12);
    }
}

/* All categories whose payload is raw bytes. */
static void show_single_list(const mdm_body_t *body)
{
    const mdm_res_info_t *info = &body->res;
    SHOW_HEAD(info);
    show_bytes(info->data_size, info->data);
}

static void show_phone_res(const mdm_body_t *body)
{
    const mdm_phone_res_info_t *info = &body->phone_res;
    SHOW_HEAD(info);
    if (info->type == PHONE_RES_EXT && info->data != NULL) {
        const mdm_phone_res_ext_t *ext = info->data;
        printf(" str0=%s num0=%u num1=%u str2=%s", text_or_dash(ext->str0), ext->detail->num0,
               ext->detail->num1, text_or_dash(ext->detail->str2));
    }
}

static void show_email(const mdm_body_t *body)
{
    const mdm_email_info_t *info = &body->email;
    SHOW_HEAD(info);
    if (info->type == EMAIL_ACCOUNT && info->data != NULL) {
        const mdm_email_account_t *account = info->data;
        show_numbers("num0..8", &account->num0, 9);
        show_texts("str9..21", &account->str9, 13);
    }
}

static void show_kiosk(const mdm_body_t *body)
{
    const mdm_kiosk_info_t *info = &body->kiosk;
    SHOW_HEAD(info);
    if (info->type == KIOSK_KEY_PAIRS) {
        for (const GList *cell = info->data; cell != NULL; cell = cell->next) {
            const mdm_kiosk_key_pair_t *pair = cell->data;
            printf(" %u:%u", pair->key, pair->value);
        }
    }
}

static void show_container(const mdm_body_t *body)
{
    const mdm_container_info_t *info = &body->container;
    SHOW_HEAD(info);
    if (info->type == CONTAINER_ITEM && info->data != NULL) {
        const mdm_container_item_t *item = info->data;
        printf(" num0=%u str1=%s str2=%s", item->num0, text_or_dash(item->str1),
               text_or_dash(item->str2));
    }
}

static void show_location(const mdm_body_t *body)
{
    SHOW_HEAD(&body->location);
}

static void show_log_manager(const mdm_body_t *body)
{
    const mdm_log_manager_info_t *info = &body->log_manager;
    printf("type=%u", info->type);
    if (info->type == LOG_MANAGER_TEXT) {
        printf(" value=%s", text_or_dash(info->value.text));
    }
}

static void show_platform(const mdm_body_t *body)
{
    const mdm_platform_info_t *info = &body->platform;
    printf("type=%u text=%s", info->type, text_or_dash(info->text));
    if (info->type == PLATFORM_NUMBER_AND_FLAG) {
        printf(" number=%u flag=%u", info->number, info->flag);
    }
}

static void show_app_cb(const mdm_body_t *body)
{
    const mdm_app_cb_info_t *info = &body->app_cb;
    printf("type=%u param=%u param2=%u data_size=%u num6=%u str7=%s str8=%s", info->type,
           info->param, info->param2, info->data_size, info->num6, text_or_dash(info->str7),
           text_or_dash(info->str8));
}

static void show_misc_cb(const mdm_body_t *body)
{
    const mdm_misc_cb_info_t *info = &body->misc_cb;
    printf("type=%u param=%u param2=%u data_size=%u flag6=%u num7=%u str8=%s", info->type,
           info->param, info->param2, info->data_size, info->flag6, info->num7,
           text_or_dash(info->str8));
}

static void show_nothing(const mdm_body_t *body)
{
    (void)body;
}

struct category {
    const char *name;
    void (*show)(const mdm_body_t *body);
};

static struct category category_of(uint8_t type)
{
    /* By the type of a request or callback. The type of a reply is one more than its request's,
     * unless it is in this table. */
    static const struct category categories[] = {
        [TYPE_ADMIN] = {"admin", show_admin},
        [TYPE_PWD] = {"pwd", show_pwd},
        [TYPE_SECURITY] = {"security", show_security},
        [TYPE_WIFI] = {"wifi", show_wifi},
        [TYPE_BLUETOOTH] = {"bluetooth", show_bluetooth},
        [TYPE_EAS] = {"eas", show_eas},
        [TYPE_APP] = {"app", show_app},
        [TYPE_APP_RES] = {"app_res", show_app_res},
        [TYPE_ROAMING] = {"roaming", show_roaming},
        [TYPE_ROAMING_RES] = {"roaming_res", show_roaming_res},
        [TYPE_MISC] = {"misc", show_misc},
        [TYPE_APN] = {"apn", show_apn},
        [TYPE_BROWSER] = {"browser", show_single_list},
        [TYPE_DATE_TIME] = {"date_time", show_single_list},
        [TYPE_REMOTE] = {"remote", show_single_list},
        [TYPE_VPN] = {"vpn", show_single_list},
        [TYPE_FIREWALL] = {"firewall", show_single_list},
        [TYPE_RES] = {"res", show_single_list},
        [TYPE_PHONE_RES] = {"phone_res", show_phone_res},
        [TYPE_ENTERPRISE] = {"enterprise", show_single_list},
        [TYPE_EMAIL] = {"email", show_email},
        [TYPE_KIOSK] = {"kiosk", show_kiosk},
        [TYPE_CONTAINER] = {"container", show_container},
        [TYPE_LOCATION] = {"location", show_location},
        [TYPE_LOG_MANAGER] = {"log_manager", show_log_manager},
        [TYPE_PLATFORM] = {"platform", show_platform},
        [TYPE_APP_CB] = {"app_cb", show_app_cb},
        [TYPE_MISC_CB] = {"misc_cb", show_misc_cb},
    };
    const size_t count = sizeof categories / sizeof categories[0];
    if (type < count && categories[type].name != NULL) {
        return categories[type];
    }
    if (type >= 1 && type - 1U < count && categories[type - 1].name != NULL) {
        return categories[type - 1];
    }
    return (struct category){"?", show_nothing};
}

void show_head(const char *side)
{
    printf("%s     no  type  category     bytes  result  fields\n", side);
}

void show_message(const char *side, const char *direction, const mdm_msg_t *msg, uint32_t length)
{
    const struct category category = category_of(msg->type);
    printf("%s  %s %2u  %4u  %-11s  %5u  %6d  ", side, direction, msg->hdr_word1, msg->type,
           category.name, length, (int32_t)msg->hdr_word2);
    category.show(&msg->body);
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
