/* SPDX-License-Identifier: Apache-2.0 */
#include "load/honest.h"

#include <stdio.h>
#include <string.h>

#include "load/connection.h"
#include "load/model.h"

enum {
    POLICIES = 12,    /* of a client */
    PERCENT_SET = 70, /* of the requests */
    PERCENT_ADMIN = 5,
    FIRST_PAUSE = 20, /* milliseconds until the next try to connect */
    LONGEST_PAUSE = 500,
};

/* What a client knows about the policy of a type and a discriminator. */
struct slot {
    uint8_t type;
    uint32_t discriminator;
    const struct policy *set;   /* the last one that was acknowledged */
    const struct policy *maybe; /* sent later, and never answered */
};

typedef enum request_kind { NOTHING, REGISTER, QUERY, SET, ASK } request_kind_t;

struct honest {
    struct load *load;
    int number;
    char *package;
    struct connection *connection;
    const struct policy *policies[POLICIES];
    int policy_count;
    struct slot slots[POLICIES];
    int slot_count;
    int found; /* slots that were asked for at the end */
    bool is_registered;
    bool is_finishing;
    bool is_done;

    uint32_t request_number;
    request_kind_t kind; /* of the request that is not answered yet */
    const struct policy *policy;
    struct slot *slot;
    int64_t sent;
    GPtrArray *packets;
    guint pause;
};

static void next(struct honest *honest);
static void connect_later(struct honest *honest);

static struct slot *slot_of(struct honest *honest, const struct policy *policy)
{
    for (int i = 0; i < honest->slot_count; ++i) {
        struct slot *slot = &honest->slots[i];
        if (slot->type == policy->type && slot->discriminator == policy->discriminator) {
            return slot;
        }
    }
    honest->slots[honest->slot_count] =
        (struct slot){policy->type, policy->discriminator, NULL, NULL};
    return &honest->slots[honest->slot_count++];
}

/* Clients of the same user must not have the same policies. */
static bool may_have(const struct honest *honest, const struct policy *policy)
{
    const struct load *load = honest->load;
    return load->has_uids ||
           (policy->type * 31U + policy->discriminator) % (uint32_t)load->honest_clients ==
               (uint32_t)honest->number;
}

static void choose_policies(struct honest *honest)
{
    const GPtrArray *corpus = honest->load->corpus;
    for (int tries = 0; tries < 10 * POLICIES && honest->policy_count < POLICIES; ++tries) {
        const guint index = (guint)g_rand_int_range(honest->load->random, 0, (gint32)corpus->len);
        const struct policy *policy = corpus->pdata[index];
        if (may_have(honest, policy)) {
            honest->policies[honest->policy_count++] = policy;
        }
    }
}

static void send_bytes(struct honest *honest, request_kind_t kind, const uint8_t *bytes,
                       uint32_t length)
{
    honest->kind = kind;
    honest->sent = g_get_monotonic_time();
    g_ptr_array_set_size(honest->packets, 0);
    if (connection_send(honest->connection, bytes, length) == PACKET_DONE) {
        ++honest->load->report.sent;
    } else {
        honest->kind = NOTHING; /* `closed` follows */
    }
}

static void send_admin(struct honest *honest, request_kind_t kind)
{
    mdm_msg_t request = {.hdr_word1 = ++honest->request_number};
    uint32_t length = 0;
    if (kind == QUERY) {
        mdm_admin_set_query(&request, honest->package, 0);
    } else if (!mdm_admin_set_general(&request, ADMIN_REGISTER, 0, honest->package, NULL)) {
        return;
    }
    uint8_t *bytes = ipc_seal(&request, &length, NULL);
    send_bytes(honest, kind, bytes, length);
    g_free(bytes);
}

static void send_policy(struct honest *honest, request_kind_t kind, const struct policy *policy)
{
    uint32_t length = 0;
    uint8_t *bytes = corpus_request(policy, kind == SET ? PROTOCOL_SET : PROTOCOL_ASK,
                                    ++honest->request_number, &length);
    honest->policy = policy;
    honest->slot = slot_of(honest, policy);
    send_bytes(honest, kind, bytes, length);
    g_free(bytes);
}

static bool is_admin_answer(const struct honest *honest)
{
    if (honest->packets->len != 1) {
        return false;
    }
    gsize length = 0;
    const uint8_t *bytes = g_bytes_get_data(honest->packets->pdata[0], &length);
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, (uint32_t)length, NULL);
    if (msg == NULL || msg->hdr_word1 != honest->request_number || msg->hdr_word2 != 0) {
        return false;
    }
    const mdm_admin_info_t *query = mdm_admin_query(msg);
    if (honest->kind == QUERY) {
        return query != NULL && query->status == 1 && strcmp(query->pkg, honest->package) == 0;
    }
    const mdm_admin_info_t *general = mdm_admin_general(msg);
    return general != NULL && general->type == ADMIN_REGISTER && general->value > 0 &&
           strcmp(general->pkg, honest->package) == 0;
}

static bool is_answer_with(const struct honest *honest, const struct policy *policy)
{
    struct expected expected = policy != NULL ? model_policy(policy, honest->request_number)
                                              : model_unset(honest->policy, honest->request_number);
    const bool is_right = expected_is(&expected, honest->packets);
    expected_clear(&expected);
    return is_right;
}

/* A policy that is refused does not take the place of the one before. */
static bool is_valid(const struct policy *policy)
{
    struct expected expected = model_policy(policy, 0);
    const bool is_answered = expected.messages != NULL;
    expected_clear(&expected);
    return is_answered;
}

static bool is_set_answer(const struct honest *honest)
{
    if (!is_answer_with(honest, honest->policy)) {
        return false;
    }
    if (is_valid(honest->policy)) {
        honest->slot->set = honest->policy;
        honest->slot->maybe = NULL;
    }
    return true;
}

/* After an answer got lost, the policy may be either one. The first answer tells which. */
static bool is_ask_answer(const struct honest *honest)
{
    struct slot *slot = honest->slot;
    if (slot->maybe != NULL && is_answer_with(honest, slot->maybe)) {
        slot->set = slot->maybe;
    } else if (!is_answer_with(honest, slot->set)) {
        return false;
    }
    slot->maybe = NULL;
    return true;
}

static bool is_right(const struct honest *honest)
{
    switch (honest->kind) {
    case REGISTER:
    case QUERY:
        return is_admin_answer(honest);
    case SET:
        return is_set_answer(honest);
    case ASK:
        return is_ask_answer(honest);
    case NOTHING:
        break;
    }
    return false;
}

static gboolean think_over(gpointer data)
{
    struct honest *honest = data;
    if (honest->connection != NULL && honest->kind == NOTHING) {
        next(honest);
    }
    return G_SOURCE_REMOVE;
}

static void finish_request(struct honest *honest)
{
    struct load *load = honest->load;
    report_add_latency(&load->report, load->slice, g_get_monotonic_time() - honest->sent);
    if (is_right(honest)) {
        ++load->report.right;
        honest->is_registered = true; /* that was the first request */
        if (honest->is_finishing) {
            ++honest->found;
            ++load->report.found;
        }
    } else {
        ++load->report.wrong;
        load_complain(load, honest->package, "a wrong answer", honest->packets);
    }
    honest->kind = NOTHING;
    if (load->think > 0) {
        g_timeout_add((guint)load->think, think_over, honest);
    } else {
        next(honest);
    }
}

static void received(void *owner, const uint8_t *bytes, uint32_t length)
{
    struct honest *honest = owner;
    if (honest->kind == NOTHING) {
        ++honest->load->report.harmed;
        return;
    }
    g_ptr_array_add(honest->packets, g_bytes_new(bytes, length));
    if (!model_is_callback(bytes, length)) {
        finish_request(honest);
    }
}

static void closed(void *owner)
{
    struct honest *honest = owner;
    struct load *load = honest->load;
    connection_close(honest->connection);
    honest->connection = NULL;
    if (honest->kind == SET && is_valid(honest->policy)) {
        honest->slot->maybe = honest->policy;
    }
    honest->kind = NOTHING;
    if (!load->survives) {
        ++load->report.harmed;
    }
    connect_later(honest);
}

static gboolean try_to_connect(gpointer data)
{
    static const struct connection_owner functions = {received, closed};
    struct honest *honest = data;
    struct load *load = honest->load;
    honest->connection = connection_open(load->socket, load_uid(load, LOAD_HONEST, honest->number),
                                         true, &functions, honest);
    if (honest->connection == NULL) {
        connect_later(honest);
        return G_SOURCE_REMOVE;
    }
    honest->pause = FIRST_PAUSE;
    load->report.reconnected += honest->request_number > 0;
    if (honest->is_registered) {
        next(honest);
    } else {
        send_admin(honest, REGISTER);
    }
    return G_SOURCE_REMOVE;
}

static void connect_later(struct honest *honest)
{
    g_timeout_add(honest->pause, try_to_connect, honest);
    honest->pause = MIN(honest->pause * 2, LONGEST_PAUSE);
}

/* At the end, every policy is asked for once more. */
static void finish(struct honest *honest)
{
    struct load *load = honest->load;
    honest->is_finishing = true;
    while (load->survives && honest->found < honest->slot_count) {
        const struct slot *slot = &honest->slots[honest->found];
        const struct policy *known = slot->set != NULL ? slot->set : slot->maybe;
        if (known != NULL) {
            send_policy(honest, ASK, known);
            return;
        }
        ++honest->found;
    }
    honest->is_done = true;
}

static void next(struct honest *honest)
{
    struct load *load = honest->load;
    if (load->honest_left <= 0) {
        finish(honest);
        return;
    }
    --load->honest_left;
    if (honest->policy_count == 0 || g_rand_int_range(load->random, 0, 100) < PERCENT_ADMIN) {
        send_admin(honest, QUERY);
        return;
    }
    const int index = g_rand_int_range(load->random, 0, honest->policy_count);
    const bool sets = g_rand_int_range(load->random, 0, 100) < PERCENT_SET;
    send_policy(honest, sets ? SET : ASK, honest->policies[index]);
}

static void unref_bytes(gpointer bytes)
{
    g_bytes_unref(bytes);
}

struct honest *honest_new(struct load *load, int number)
{
    struct honest *honest = g_new0(struct honest, 1);
    honest->load = load;
    honest->number = number;
    honest->package =
        g_strdup_printf("load.client.%u.%d", load_uid(load, LOAD_HONEST, number), number);
    honest->packets = g_ptr_array_new_with_free_func(unref_bytes);
    honest->pause = FIRST_PAUSE;
    choose_policies(honest);
    try_to_connect(honest);
    return honest;
}

void honest_free(struct honest *honest)
{
    connection_close(honest->connection);
    g_ptr_array_unref(honest->packets);
    g_free(honest->package);
    g_free(honest);
}

bool honest_is_done(const struct honest *honest)
{
    return honest->is_done;
}

void honest_tick(struct honest *honest)
{
    const bool is_late =
        honest->kind != NOTHING && g_get_monotonic_time() - honest->sent > honest->load->timeout;
    if (is_late) {
        ++honest->load->report.lost;
        closed(honest);
    }
}
