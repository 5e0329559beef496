/* SPDX-License-Identifier: Apache-2.0 */
/* A connection of the load generator on GLib's main loop. */
#ifndef CONNECTION_H
#define CONNECTION_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include "common/packet.h"

struct connection;

/* What its owner hears of it. When it is `closed`, the owner has to call connection_close(). */
struct connection_owner {
    void (*received)(void *owner, const uint8_t *bytes, uint32_t length);
    void (*closed)(void *owner);
};

/* Connects as a user, for which the process must be root unless it is its own. Returns null if that
 * is not possible now. A connection that does not read leaves the answers in the kernel. */
struct connection *connection_open(const char *path, uid_t uid, bool reads,
                                   const struct connection_owner *functions, void *owner);

packet_result_t connection_send(struct connection *connection, const uint8_t *bytes,
                                uint32_t length);

/* Closes it without a word to the owner. Null is allowed. */
void connection_close(struct connection *connection);

#endif
