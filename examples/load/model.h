/* SPDX-License-Identifier: Apache-2.0 */
/* What the server must answer, written from the agreement of protocol.h. */
#ifndef MODEL_H
#define MODEL_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

#include <mdm/guarded.h>

#include "common/protocol.h"
#include "load/corpus.h"

/* Whether requests of a message type set and ask for policies. */
bool model_has_policies(uint8_t type);

/* What comes for a request. Either messages, or a refusal. */
struct expected {
    GPtrArray *messages; /* of GBytes, in their order; null for a refusal */
    uint32_t number;
    protocol_reason_t reason;
    char *text; /* of the refusal; null if any text will do */
};

/* The answer to a client who has set a policy, or has asked and gets it. */
struct expected model_policy(const struct policy *policy, uint32_t number);

/* The answer to a client who asks for what was never set. */
struct expected model_unset(const struct policy *policy, uint32_t number);

/* The refusal of any bytes of a client that is not registered. */
struct expected model_stranger(const uint8_t *bytes, uint32_t length, uint32_t longest);

void expected_clear(struct expected *expected);

/* Compares packets, each a GBytes. */
bool expected_is(const struct expected *expected, const GPtrArray *packets);

/* Whether a packet comes before the answer: a callback. */
bool model_is_callback(const uint8_t *bytes, uint32_t length);

/* The reason of a refusal; 0 if the packet is none. */
protocol_reason_t model_reason(const uint8_t *bytes, uint32_t length);

#endif
