/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What the server does with each category. Here a real server puts its policies in force.
 *
 * A handler looks at a policy and answers with what is then in force. It returns false if it has
 * refused. Then the policy is not stored.
 */
#ifndef HANDLERS_H
#define HANDLERS_H

#include <stdbool.h>

#include "exchange.h"

typedef bool handler_t(struct exchange *exchange, const mdm_msg_t *policy);

/* The handler of a category's policies. Null if the category has none: admin has no policies, and
 * no client may send an answer or a callback. */
handler_t *handlers_find(mdm_category_t category);

/* Answers a request of admin, which registers a client or asks about one. */
bool handlers_serve_admin(struct exchange *exchange);

/* Writes the number of registered clients to their status, if somebody has registered since. Every
 * user may read it, so this comes after the commit. */
void handlers_publish_status(struct policies *policies);

#endif
