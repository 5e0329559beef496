/* SPDX-License-Identifier: Apache-2.0 */
#include "show.h"

#include <stddef.h>
#include <stdio.h>

#include "protocol.h"

static const char *text_or_dash(const char *text)
{
    return text != NULL ? text : "-";
}

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

static void show_raw(uint32_t type, uint32_t param, int32_t data_size, const void *data)
{
    printf("type=%u param=%u data_size=%d", type, param, data_size);
    if (data_size >= 1 && data != NULL) {
        printf(" data='%.*s'", data_size, (const char *)data);
    }
}

static void show_pwd(const mdm_body_t *body)
{
    const mdm_pwd_info_t *info = &body->pwd;
    if (info->type != PWD_POLICY || info->data_size < 1 || info->data == NULL) {
        show_raw(info->type, info->param, info->data_size, info->data);
        return;
    }
    const mdm_pwd_policy_t *policy = info->data;
    printf("type=%u param=%u num0..8=%u,%u,%u,%u,%u,%u,%u,%u,%u str9=%s str10=%s", info->type,
           info->param, policy->num0, policy->num1, policy->num2, policy->num3, policy->num4,
           policy->num5, policy->num6, policy->num7, policy->num8, text_or_dash(policy->str9),
           text_or_dash(policy->str10));
}

static void show_firewall(const mdm_body_t *body)
{
    const mdm_firewall_info_t *info = &body->firewall;
    show_raw(info->type, info->param, info->data_size, info->data);
}

static void show_vpn(const mdm_body_t *body)
{
    const mdm_vpn_info_t *info = &body->vpn;
    show_raw(info->type, info->param, info->data_size, info->data);
}

static void show_nothing(const mdm_body_t *body)
{
    (void)body;
}

struct category {
    uint8_t request; /* a reply's type is one more */
    const char *name;
    void (*show)(const mdm_body_t *body);
};

static const struct category *category_of(uint8_t type)
{
    static const struct category categories[] = {
        {TYPE_ADMIN, "admin", show_admin},
        {TYPE_PWD, "pwd", show_pwd},
        {TYPE_VPN, "vpn", show_vpn},
        {TYPE_FIREWALL, "firewall", show_firewall},
    };
    static const struct category unknown = {0, "?", show_nothing};
    for (size_t i = 0; i < sizeof categories / sizeof categories[0]; ++i) {
        if (type == categories[i].request || type == categories[i].request + 1) {
            return &categories[i];
        }
    }
    return &unknown;
}

void show_head(const char *side)
{
    printf("%s     no  type  category  bytes  result  fields\n", side);
}

void show_message(const char *side, const char *direction, const mdm_msg_t *msg, uint32_t length)
{
    const struct category *category = category_of(msg->type);
    printf("%s  %s %2u  %4u  %-8s  %5u  %6d  ", side, direction, msg->hdr_word1, msg->type,
           category->name, length, (int32_t)msg->hdr_word2);
    category->show(&msg->body);
    putchar('\n');
}
