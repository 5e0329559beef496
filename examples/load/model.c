/* SPDX-License-Identifier: Apache-2.0 */
#include "load/model.h"

#include <string.h>

#include <mdm/log.h>
#include <mdm/util_policy.h>

#include "common/packet.h"

enum { OFFSET_OF_TYPE = 4 };

bool model_has_policies(uint8_t type)
{
    switch (mdm_category_of(type)) {
    case MDM_CATEGORY_NONE:
    case MDM_CATEGORY_ADMIN:
    case MDM_CATEGORY_APP_CB:
    case MDM_CATEGORY_MISC_CB:
        return false;
    default:
        return type % 2 == 1;
    }
}

static struct expected refusal(uint32_t number, protocol_reason_t reason)
{
    return (struct expected){.number = number, .reason = reason};
}

/* A message that cannot be sealed is refused. */
static void add(struct expected *expected, mdm_msg_t *msg)
{
    uint32_t length = 0;
    msg->hdr_word1 = expected->number;
    uint8_t *bytes = ipc_seal(msg, &length, NULL);
    if (bytes == NULL) {
        const uint32_t number = expected->number;
        expected_clear(expected);
        *expected = refusal(number, PROTOCOL_INVALID);
    } else if (expected->messages != NULL) {
        g_ptr_array_add(expected->messages, g_bytes_new_take(bytes, length));
    } else {
        g_free(bytes);
    }
}

static void unref_bytes(gpointer bytes)
{
    g_bytes_unref(bytes);
}

static struct expected messages(uint32_t number)
{
    return (struct expected){g_ptr_array_new_with_free_func(unref_bytes), number, 0, NULL};
}

static void add_packages(struct expected *expected, const mdm_msg_t *policy)
{
    const GList *packages = mdm_app_packages(policy);
    mdm_msg_t callback = {.type = MDM_TYPE_APP_CB};
    mdm_msg_t answer = {.type = MDM_TYPE_APP_RES};
    GList *items = NULL;
    for (const GList *cell = packages; cell != NULL; cell = cell->next) {
        mdm_app_res_item_t *item = g_new0(mdm_app_res_item_t, 1);
        item->name = cell->data;
        item->value = (uint32_t)strlen(item->name);
        items = g_list_prepend(items, item);
    }
    items = g_list_reverse(items);
    if (mdm_app_cb_set_detail(&callback, MDM_APP_CB_DETAIL_0, g_list_length(items), "done",
                              policy->body.app.pkg) &&
        mdm_app_res_set_items(&answer, MDM_APP_RES_ITEMS_140, items)) {
        answer.body.app_res.pkg = policy->body.app.pkg;
        add(expected, &callback);
        add(expected, &answer);
    }
    g_list_free_full(items, g_free);
}

static void add_book_callback(struct expected *expected, const mdm_msg_t *policy)
{
    mdm_msg_t callback = {.type = MDM_TYPE_MISC_CB};
    if (mdm_misc_cb_set_detail(&callback, MDM_MISC_CB_DETAIL_0, 1, (uint32_t)policy->body.misc.type,
                               "done")) {
        add(expected, &callback);
    }
}

static bool is_valid(const mdm_msg_t *policy)
{
    const mdm_wifi_network_t *network = mdm_wifi_network(policy);
    const mdm_phone_res_ext_t *ext = mdm_phone_res_ext(policy);
    int32_t type = 0;
    int32_t limit[MDM_PHONE_RES_LIMIT_VALUES];
    return (network == NULL || network->ssid != NULL) &&
           (ext == NULL ||
            mdm_phone_res_limit_deserialize(ext->detail->str2, &type, limit) == MDM_RESULT_SUCCESS);
}

/* The answer has the head alone, with another field of it. */
static void add_head(struct expected *expected, const mdm_msg_t *policy)
{
    mdm_msg_t answer = {.type = (uint8_t)(policy->type + 1)};
    answer.body.res.type = policy->body.res.type;
    if (policy->type == MDM_TYPE_APP) {
        answer.body.app_res.pkg = policy->body.app.pkg;
    } else if (policy->type != MDM_TYPE_ROAMING) {
        answer.body.res.param = (uint32_t)policy->body.res.data_size;
    }
    add(expected, &answer);
}

static void add_answers(struct expected *expected, const mdm_msg_t *policy)
{
    switch (mdm_form_of(policy)) {
    case MDM_FORM_APP_PACKAGES:
        add_packages(expected, policy);
        return;
    case MDM_FORM_MISC_BOOK:
        add_book_callback(expected, policy);
        break;
    default:
        break;
    }
    switch (policy->type) {
    case MDM_TYPE_APP:
    case MDM_TYPE_ROAMING:
    case MDM_TYPE_BROWSER:
    case MDM_TYPE_ENTERPRISE:
        add_head(expected, policy);
        return;
    default:
        break;
    }
    mdm_msg_t answer = {.type = (uint8_t)(policy->type + 1), .body = policy->body};
    add(expected, &answer);
}

struct expected model_policy(const struct policy *policy, uint32_t number)
{
    gsize length = 0;
    const uint8_t *bytes = g_bytes_get_data(policy->request, &length);
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, (uint32_t)length, NULL);
    g_assert(msg != NULL);
    if (!is_valid(msg)) {
        return refusal(number, PROTOCOL_INVALID);
    }
    struct expected expected = messages(number);
    add_answers(&expected, msg);
    return expected;
}

struct expected model_unset(const struct policy *policy, uint32_t number)
{
    struct expected expected = messages(number);
    mdm_msg_t answer = {.type = (uint8_t)(policy->type + 1), .hdr_word2 = PROTOCOL_UNSET};
    answer.body.res.type = policy->discriminator;
    add(&expected, &answer);
    return expected;
}

struct expected model_stranger(const uint8_t *bytes, uint32_t length, uint32_t longest)
{
    const uint32_t number = packet_number(bytes, length);
    if (length > longest) {
        return refusal(number, PROTOCOL_LIMIT);
    }
    ipc_fault_t fault;
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, length, &fault);
    if (msg == NULL) {
        struct expected expected = refusal(number, PROTOCOL_MALFORMED);
        expected.text = ipc_fault_describe(&fault);
        return expected;
    }
    return refusal(number,
                   model_has_policies(msg->type) ? PROTOCOL_NOT_REGISTERED : PROTOCOL_NOT_SERVED);
}

void expected_clear(struct expected *expected)
{
    g_clear_pointer(&expected->messages, g_ptr_array_unref);
    g_clear_pointer(&expected->text, g_free);
}

static bool is_refusal(const struct expected *expected, GBytes *packet)
{
    gsize length = 0;
    const uint8_t *bytes = g_bytes_get_data(packet, &length);
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, (uint32_t)length, NULL);
    const mdm_admin_info_t *admin = msg != NULL ? mdm_admin_general(msg) : NULL;
    return admin != NULL && msg->type == MDM_TYPE_ADMIN_2 && msg->hdr_word1 == expected->number &&
           (int32_t)msg->hdr_word2 == MDM_RESULT_FAILED && admin->type == ADMIN_REFUSED &&
           admin->value == expected->reason &&
           (expected->text == NULL || g_strcmp0(admin->text, expected->text) == 0);
}

bool expected_is(const struct expected *expected, const GPtrArray *packets)
{
    if (expected->messages == NULL) {
        return packets->len == 1 && is_refusal(expected, packets->pdata[0]);
    }
    if (packets->len != expected->messages->len) {
        return false;
    }
    for (guint i = 0; i < packets->len; ++i) {
        if (!g_bytes_equal(packets->pdata[i], expected->messages->pdata[i])) {
            return false;
        }
    }
    return true;
}

bool model_is_callback(const uint8_t *bytes, uint32_t length)
{
    return length > OFFSET_OF_TYPE &&
           (bytes[OFFSET_OF_TYPE] == MDM_TYPE_APP_CB || bytes[OFFSET_OF_TYPE] == MDM_TYPE_MISC_CB);
}

protocol_reason_t model_reason(const uint8_t *bytes, uint32_t length)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, length, NULL);
    const mdm_admin_info_t *admin = msg != NULL ? mdm_admin_general(msg) : NULL;
    return admin != NULL && admin->type == ADMIN_REFUSED ? admin->value : 0;
}
