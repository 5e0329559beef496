/* SPDX-License-Identifier: Apache-2.0 */
#include "handlers.h"

#include <string.h>

#include <mdm/noti.h>
#include <mdm/util.h>
#include <mdm/util_policy.h>

#include "log.h"

/* The header of an answer. Its body is still empty. */
static mdm_msg_t answer_to(const struct exchange *exchange)
{
    return (mdm_msg_t){.type = (uint8_t)(exchange->request->type + 1)};
}

/* For a category without rules of its own: the policy is in force as it is. The answer borrows its
 * body. */
static bool put_in_force(struct exchange *exchange, const mdm_msg_t *policy)
{
    mdm_msg_t answer = answer_to(exchange);
    answer.body = policy->body;
    return exchange_answer(exchange, &answer);
}

static bool refuse_stored(struct exchange *exchange)
{
    return exchange_refuse(exchange, PROTOCOL_NOT_STORED, "the clients cannot be stored now");
}

/* Whether the status differs from what the database has, as far as this process knows. */
static bool is_status_due = true;

/* Of many failures in a row only the first is logged. */
static void write_status(uint32_t clients)
{
    static bool has_failed = false;
    const mdm_log_level_t level = log_pause();
    const int32_t result = mdm_write_noti(PROTOCOL_STATUS_CLIENTS, (int32_t)clients);
    log_resume(level);
    if (result != MDM_RESULT_SUCCESS && !has_failed) {
        log_warn("the status %s cannot be written", PROTOCOL_STATUS_CLIENTS);
    }
    has_failed = result != MDM_RESULT_SUCCESS;
}

void handlers_publish_status(struct policies *policies)
{
    uint32_t clients = 0;
    if (is_status_due && policies_count(policies, &clients) == POLICIES_DONE) {
        is_status_due = false;
        write_status(clients);
    }
}

static bool answer_registration(struct exchange *exchange, const mdm_admin_info_t *asked)
{
    uint32_t clients = 0;
    if (policies_count(exchange->service->policies, &clients) != POLICIES_DONE) {
        return refuse_stored(exchange);
    }
    is_status_due = true;
    mdm_msg_t answer = answer_to(exchange);
    return mdm_admin_set_general(&answer, ADMIN_REGISTER, clients, asked->pkg, asked->text) &&
           exchange_answer(exchange, &answer);
}

/* Whoever registers a package first has it. */
static bool register_client(struct exchange *exchange, const mdm_admin_info_t *asked)
{
    if (!mdm_is_valid_package_name(asked->pkg)) {
        return exchange_refuse(exchange, PROTOCOL_INVALID, "no package name");
    }
    struct excess excess = {0};
    switch (
        policies_register(exchange->service->policies, exchange->peer->uid, asked->pkg, &excess)) {
    case POLICIES_DONE:
        return answer_registration(exchange, asked);
    case POLICIES_TAKEN:
        return exchange_refuse(exchange, PROTOCOL_FORBIDDEN, "another user has this package");
    case POLICIES_LIMIT:
        return exchange_refuse_limit(exchange, &excess);
    default:
        return refuse_stored(exchange);
    }
}

/* A user learns nothing about the packages of others. */
static bool answer_query(struct exchange *exchange, const char *package)
{
    uid_t owner = 0;
    const policies_result_t result =
        package != NULL ? policies_owner(exchange->service->policies, package, &owner)
                        : POLICIES_ABSENT;
    if (result == POLICIES_FAILED) {
        return refuse_stored(exchange);
    }
    mdm_msg_t answer = answer_to(exchange);
    return mdm_admin_set_query(&answer, package,
                               result == POLICIES_DONE && owner == exchange->peer->uid) &&
           exchange_answer(exchange, &answer);
}

bool handlers_serve_admin(struct exchange *exchange)
{
    const mdm_admin_info_t *query = mdm_admin_query(exchange->request);
    if (query != NULL) {
        return answer_query(exchange, query->pkg);
    }
    const mdm_admin_info_t *general = mdm_admin_general(exchange->request);
    if (general != NULL && general->type == ADMIN_REGISTER) {
        return register_client(exchange, general);
    }
    return exchange_refuse(exchange, PROTOCOL_NOT_SERVED, "no request of admin");
}

static bool serve_wifi(struct exchange *exchange, const mdm_msg_t *policy)
{
    const mdm_wifi_network_t *network = mdm_wifi_network(policy);
    if (network != NULL && network->ssid == NULL) {
        return exchange_refuse(exchange, PROTOCOL_INVALID, "a network without a name");
    }
    return put_in_force(exchange, policy);
}

/* A callback tells how many packages there are. The answer lists them; the value of each is the
 * length of its name. */
static bool serve_packages(struct exchange *exchange, const mdm_msg_t *policy)
{
    const GList *packages = mdm_app_packages(policy);
    mdm_msg_t callback = {0};
    if (!mdm_app_cb_set_detail(&callback, MDM_APP_CB_DETAIL_0, (uint32_t)mdm_list_length(packages),
                               "done", policy->body.app.pkg) ||
        !exchange_answer(exchange, &callback)) {
        return false;
    }
    GQueue items = G_QUEUE_INIT;
    for (const GList *cell = packages; cell != NULL; cell = cell->next) {
        mdm_app_res_item_t *item = g_new0(mdm_app_res_item_t, 1);
        item->name = cell->data;
        item->value = item->name != NULL ? (uint32_t)strlen(item->name) : 0;
        g_queue_push_tail(&items, item);
    }
    mdm_msg_t answer = answer_to(exchange);
    const bool is_filled = mdm_app_res_set_items(&answer, MDM_APP_RES_ITEMS_140, items.head);
    answer.body.app_res.pkg = policy->body.app.pkg;
    const bool is_answered = is_filled && exchange_answer(exchange, &answer);
    g_queue_clear_full(&items, g_free);
    return is_answered;
}

static bool serve_app(struct exchange *exchange, const mdm_msg_t *policy)
{
    if (mdm_form_of(policy) == MDM_FORM_APP_PACKAGES) {
        return serve_packages(exchange, policy);
    }
    mdm_msg_t answer = answer_to(exchange);
    answer.body.app_res.pkg = policy->body.app.pkg;
    return mdm_app_res_set_head(&answer, policy->body.app.type) &&
           exchange_answer(exchange, &answer);
}

static bool serve_roaming(struct exchange *exchange, const mdm_msg_t *policy)
{
    mdm_msg_t answer = answer_to(exchange);
    return mdm_roaming_res_set_head(&answer, policy->body.roaming.type) &&
           exchange_answer(exchange, &answer);
}

/* For a book there is a callback. */
static bool serve_misc(struct exchange *exchange, const mdm_msg_t *policy)
{
    if (mdm_form_of(policy) == MDM_FORM_MISC_BOOK) {
        mdm_msg_t callback = {0};
        if (!mdm_misc_cb_set_detail(&callback, MDM_MISC_CB_DETAIL_0, 1,
                                    (uint32_t)policy->body.misc.type, "done") ||
            !exchange_answer(exchange, &callback)) {
            return false;
        }
    }
    return put_in_force(exchange, policy);
}

/* No receiver reads the payload of browser and enterprise. The answer has its size. */

static bool serve_browser(struct exchange *exchange, const mdm_msg_t *policy)
{
    mdm_msg_t answer = answer_to(exchange);
    answer.body.browser.param = (uint32_t)policy->body.browser.data_size;
    return mdm_browser_set_head(&answer, policy->body.browser.type) &&
           exchange_answer(exchange, &answer);
}

static bool serve_enterprise(struct exchange *exchange, const mdm_msg_t *policy)
{
    mdm_msg_t answer = answer_to(exchange);
    answer.body.enterprise.param = (uint32_t)policy->body.enterprise.data_size;
    return mdm_enterprise_set_head(&answer, policy->body.enterprise.type) &&
           exchange_answer(exchange, &answer);
}

static bool is_limit(const char *text)
{
    int32_t type = 0;
    int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {0};
    const mdm_log_level_t level = mdm_log_get_level();
    mdm_log_set_level(MDM_LOG_NONE); /* the text would be logged */
    const int32_t result = mdm_phone_res_limit_deserialize(text, &type, limit);
    log_resume(level);
    return result == MDM_RESULT_SUCCESS;
}

static bool serve_phone_res(struct exchange *exchange, const mdm_msg_t *policy)
{
    const mdm_phone_res_ext_t *ext = mdm_phone_res_ext(policy);
    if (ext != NULL && !is_limit(ext->detail->str2)) {
        return exchange_refuse(exchange, PROTOCOL_INVALID, "no limit of data or calls");
    }
    return put_in_force(exchange, policy);
}

handler_t *handlers_find(mdm_category_t category)
{
    static handler_t *const handlers[] = {
        [MDM_CATEGORY_PWD] = put_in_force,
        [MDM_CATEGORY_SECURITY] = put_in_force,
        [MDM_CATEGORY_WIFI] = serve_wifi,
        [MDM_CATEGORY_BLUETOOTH] = put_in_force,
        [MDM_CATEGORY_EAS] = put_in_force,
        [MDM_CATEGORY_APP] = serve_app,
        [MDM_CATEGORY_ROAMING] = serve_roaming,
        [MDM_CATEGORY_MISC] = serve_misc,
        [MDM_CATEGORY_APN] = put_in_force,
        [MDM_CATEGORY_BROWSER] = serve_browser,
        [MDM_CATEGORY_DATE_TIME] = put_in_force,
        [MDM_CATEGORY_REMOTE] = put_in_force,
        [MDM_CATEGORY_VPN] = put_in_force,
        [MDM_CATEGORY_FIREWALL] = put_in_force,
        [MDM_CATEGORY_RES] = put_in_force,
        [MDM_CATEGORY_PHONE_RES] = serve_phone_res,
        [MDM_CATEGORY_ENTERPRISE] = serve_enterprise,
        [MDM_CATEGORY_EMAIL] = put_in_force,
        [MDM_CATEGORY_KIOSK] = put_in_force,
        [MDM_CATEGORY_CONTAINER] = put_in_force,
        [MDM_CATEGORY_LOCATION] = put_in_force,
        [MDM_CATEGORY_LOG_MANAGER] = put_in_force,
        [MDM_CATEGORY_PLATFORM] = put_in_force,
    };
    return category < G_N_ELEMENTS(handlers) ? handlers[category] : NULL;
}
