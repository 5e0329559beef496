/* SPDX-License-Identifier: Apache-2.0 */
#include "exchange.h"

#include <malloc.h>
#include <string.h>

#include "common/packet.h"
#include "handlers.h"
#include "log.h"

enum {
    /* The memory that must be left beside that of a message. Without it a request is refused: GLib
     * ends a process that has no memory for something small. */
    SPARE_MEMORY = 512 * 1024,
    /* What a message and its answers take at most, as a multiple of its length. A list of short
     * names takes most. */
    MEMORY_FOR_A_BYTE = 32,
};

static void unref_bytes(gpointer bytes)
{
    g_bytes_unref(bytes);
}

static void drop_answers(struct exchange *exchange)
{
    g_queue_clear_full(&exchange->answers, unref_bytes);
}

static mdm_msg_t *open_quietly(const uint8_t *bytes, uint32_t length, ipc_fault_t *fault)
{
    const mdm_log_level_t level = log_pause();
    mdm_msg_t *msg = ipc_open(bytes, length, fault);
    log_resume(level);
    return msg;
}

static uint8_t *seal_quietly(mdm_msg_t *msg, uint32_t *length, ipc_fault_t *fault)
{
    const mdm_log_level_t level = log_pause();
    uint8_t *bytes = ipc_seal(msg, length, fault);
    log_resume(level);
    return bytes;
}

GBytes *exchange_seal_refusal(uint32_t number, protocol_reason_t reason, const char *text)
{
    mdm_msg_t refusal = {
        .type = MDM_TYPE_ADMIN_2,
        .hdr_word1 = number,
        .hdr_word2 = (uint32_t)MDM_RESULT_FAILED,
    };
    uint32_t length = 0;
    if (!mdm_admin_set_general(&refusal, ADMIN_REFUSED, reason, NULL, text)) {
        return NULL;
    }
    uint8_t *bytes = seal_quietly(&refusal, &length, NULL);
    return bytes != NULL ? g_bytes_new_take(bytes, length) : NULL;
}

bool exchange_refuse(struct exchange *exchange, protocol_reason_t reason, const char *text)
{
    drop_answers(exchange);
    exchange->reason = reason;
    GBytes *refusal = exchange_seal_refusal(exchange->number, reason, text);
    if (refusal != NULL) {
        g_queue_push_tail(&exchange->answers, refusal);
    }
    return false;
}

bool exchange_refuse_limit(struct exchange *exchange, const struct excess *excess)
{
    char *text = excess_describe(excess);
    exchange->excess = *excess;
    exchange_refuse(exchange, PROTOCOL_LIMIT, text);
    g_free(text);
    return false;
}

/* The library refuses without memory, whatever the message. */
static bool refuse_fault(struct exchange *exchange, protocol_reason_t reason,
                         const ipc_fault_t *fault)
{
    if (strcmp(fault->path, "memory") == 0) {
        const struct excess excess = {"bytes of memory free", 0, fault->needed};
        exchange->lacks_memory = true;
        return exchange_refuse_limit(exchange, &excess);
    }
    char *text = ipc_fault_describe(fault);
    exchange_refuse(exchange, reason, text);
    g_free(text);
    return false;
}

bool exchange_answer(struct exchange *exchange, mdm_msg_t *answer)
{
    ipc_fault_t fault;
    uint32_t length = 0;
    answer->hdr_word1 = exchange->number;
    uint8_t *bytes = seal_quietly(answer, &length, &fault);
    if (bytes == NULL) {
        return refuse_fault(exchange, PROTOCOL_INVALID, &fault);
    }
    const uint32_t limit = (uint32_t)exchange->service->limits->message;
    if (length > limit) {
        const struct excess excess = {"bytes in the answer", length, limit};
        g_free(bytes);
        return exchange_refuse_limit(exchange, &excess);
    }
    g_queue_push_tail(&exchange->answers, g_bytes_new_take(bytes, length));
    return true;
}

static bool refuse_result(struct exchange *exchange, policies_result_t result,
                          const struct excess *excess)
{
    return result == POLICIES_LIMIT ? exchange_refuse_limit(exchange, excess)
                                    : exchange_refuse(exchange, PROTOCOL_NOT_STORED,
                                                      "the policies cannot be stored now");
}

/* Every body begins with its discriminator. */
static uint32_t discriminator_of(const mdm_msg_t *msg)
{
    return msg->body.res.type;
}

/* Sets a policy. It is stored only if there is an answer that can travel. */
static bool set_policy(struct exchange *exchange, handler_t *handler, const uint8_t *bytes,
                       uint32_t length)
{
    const mdm_msg_t *request = exchange->request;
    if (!handler(exchange, request)) {
        return false;
    }
    struct excess excess = {0};
    const policies_result_t result =
        policies_set(exchange->service->policies, exchange->peer->uid, request->type,
                     discriminator_of(request), bytes, length, &excess);
    return result == POLICIES_DONE || refuse_result(exchange, result, &excess);
}

static bool answer_unset(struct exchange *exchange)
{
    mdm_msg_t answer = {
        .type = (uint8_t)(exchange->request->type + 1),
        .hdr_word2 = PROTOCOL_UNSET,
    };
    answer.body.res.type = discriminator_of(exchange->request);
    return exchange_answer(exchange, &answer);
}

static bool answer_stored(struct exchange *exchange, handler_t *handler, GBytes *stored)
{
    gsize length = 0;
    const uint8_t *bytes = g_bytes_get_data(stored, &length);
    ipc_fault_t fault;
    MDM_AUTO_CLOSE mdm_msg_t *policy = open_quietly(bytes, (uint32_t)length, &fault);
    if (policy == NULL) {
        return refuse_fault(exchange, PROTOCOL_NOT_STORED, &fault);
    }
    return handler(exchange, policy);
}

static bool ask_policy(struct exchange *exchange, handler_t *handler)
{
    const mdm_msg_t *request = exchange->request;
    GBytes *stored = NULL;
    switch (policies_get(exchange->service->policies, exchange->peer->uid, request->type,
                         discriminator_of(request), &stored)) {
    case POLICIES_DONE:
        break;
    case POLICIES_ABSENT:
        return answer_unset(exchange);
    default:
        return exchange_refuse(exchange, PROTOCOL_NOT_STORED, "the policies cannot be read now");
    }
    const bool is_answered = answer_stored(exchange, handler, stored);
    g_bytes_unref(stored);
    return is_answered;
}

static bool serve_policy(struct exchange *exchange, handler_t *handler, const uint8_t *bytes,
                         uint32_t length)
{
    switch (policies_has_package(exchange->service->policies, exchange->peer->uid)) {
    case POLICIES_DONE:
        break;
    case POLICIES_ABSENT:
        return exchange_refuse(exchange, PROTOCOL_NOT_REGISTERED,
                               "this user has not registered a client");
    default:
        return exchange_refuse(exchange, PROTOCOL_NOT_STORED, "the policies cannot be read now");
    }
    switch (exchange->request->hdr_byte) {
    case PROTOCOL_SET:
        return set_policy(exchange, handler, bytes, length);
    case PROTOCOL_ASK:
        return ask_policy(exchange, handler);
    default:
        return exchange_refuse(exchange, PROTOCOL_NOT_SERVED, "neither sets nor asks");
    }
}

static bool serve_request(struct exchange *exchange, const uint8_t *bytes, uint32_t length)
{
    const uint8_t type = exchange->request->type;
    const mdm_category_t category = mdm_category_of(type);
    log_set_category(category);
    handler_t *handler = handlers_find(category);
    const bool is_request = type % 2 == 1 && (category == MDM_CATEGORY_ADMIN || handler != NULL);
    if (!is_request) {
        return exchange_refuse(exchange, PROTOCOL_NOT_SERVED, "no type of a request");
    }
    if (!rules_allow(exchange->service->rules, exchange->peer->uid, category)) {
        char *text =
            g_strdup_printf("uid %lu may not ask for %s", (unsigned long)exchange->peer->uid,
                            mdm_category_name(category));
        exchange_refuse(exchange, PROTOCOL_FORBIDDEN, text);
        g_free(text);
        return false;
    }
    return category == MDM_CATEGORY_ADMIN ? handlers_serve_admin(exchange)
                                          : serve_policy(exchange, handler, bytes, length);
}

/* Blocks that were released before are free, too, though they may be small. */
static bool has_free_blocks(gsize needed)
{
    return mallinfo2().fordblks >= needed;
}

bool exchange_has_memory_for(uint32_t length, struct excess *excess)
{
    const gsize needed = SPARE_MEMORY + (gsize)length * MEMORY_FOR_A_BYTE;
    void *memory = g_try_malloc(needed);
    g_free(memory);
    *excess = (struct excess){"bytes of memory free", 0, (int64_t)needed};
    return memory != NULL || has_free_blocks(needed);
}

static bool open_and_serve(struct exchange *exchange, const uint8_t *bytes, uint32_t length)
{
    struct excess excess;
    if (!exchange_has_memory_for(length, &excess)) {
        exchange->lacks_memory = true;
        return exchange_refuse_limit(exchange, &excess);
    }
    ipc_fault_t fault;
    MDM_AUTO_CLOSE mdm_msg_t *request = open_quietly(bytes, length, &fault);
    if (request == NULL) {
        return refuse_fault(exchange, PROTOCOL_MALFORMED, &fault);
    }
    exchange->request = request;
    const bool is_served = serve_request(exchange, bytes, length);
    exchange->request = NULL;
    return is_served;
}

void exchange_serve(struct exchange *exchange, const uint8_t *bytes, uint32_t length)
{
    exchange->number = packet_number(bytes, length);
    log_begin_request(exchange->peer->uid);
    const bool is_served = open_and_serve(exchange, bytes, length);
    log_info("request %u: %s", exchange->number, is_served ? "served" : "refused");
    log_end_request();
}
