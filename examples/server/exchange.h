/* SPDX-License-Identifier: Apache-2.0 */
/* One request on its way to its answers. */
#ifndef EXCHANGE_H
#define EXCHANGE_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

#include <mdm/guarded.h>

#include "common/protocol.h"
#include "limits.h"
#include "peer.h"
#include "policies.h"
#include "rules.h"

/* What every request needs. */
struct service {
    const struct limits *limits;
    const struct rules *rules;
    struct policies *policies;
};

struct exchange {
    const struct service *service;
    const struct peer *peer;
    const mdm_msg_t *request; /* null if the bytes are no message */
    uint32_t number;          /* of the request */
    GQueue answers;           /* the sealed messages, each a GBytes, in their order */
    protocol_reason_t reason; /* of the refusal; 0 if the request is not refused */
    struct excess excess;     /* if the reason is PROTOCOL_LIMIT */
    bool lacks_memory;        /* whether that limit is memory */
};

/*
 * Serves the bytes of a packet: fills `answers`, which the caller then owns. There is always an
 * answer, unless there is no memory for it. The state is changed, but not yet committed.
 */
void exchange_serve(struct exchange *exchange, const uint8_t *bytes, uint32_t length);

/* Whether there is memory to serve a message. */
bool exchange_has_memory_for(uint32_t length, struct excess *excess);

/* Adds an answer. Returns false if it was refused instead, because it cannot travel. */
bool exchange_answer(struct exchange *exchange, mdm_msg_t *answer);

/* Answers with a refusal in place of all other answers. Each returns false. */
bool exchange_refuse(struct exchange *exchange, protocol_reason_t reason, const char *text);
bool exchange_refuse_limit(struct exchange *exchange, const struct excess *excess);

/* A sealed refusal outside of an exchange. Null without memory. */
GBytes *exchange_seal_refusal(uint32_t number, protocol_reason_t reason, const char *text);

#endif
