/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A connection: its socket, the queue of its answers, and its limits. It owns the socket, and gives
 * its charge back when it ends.
 *
 * Answers that come after a change of the state are held back until the change is committed.
 */
#ifndef CHANNEL_H
#define CHANNEL_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

#include "common/packet.h"
#include "limits.h"
#include "peer.h"
#include "users.h"

enum {
    /* What an answer in the queue is charged besides its bytes. */
    CHANNEL_CHARGE = 128,
};

struct channel {
    int fd;
    struct peer peer;
    const struct limits *limits;
    struct users *users;
    GQueue answers; /* of GBytes */
    int64_t queued; /* what they are charged */
    guint held;     /* how many of the last answers wait for a commit */
    uint32_t held_number;
    int faults;
    bool has_asked;
    bool is_closing;       /* Nothing more is read. */
    int64_t asked;         /* when the last request came, or the connection */
    int64_t read_by_peer;  /* when the socket last took an answer, or the queue was empty */
    int64_t delayed_until; /* Nothing is read before. */
};

/* Takes over a socket that users_connect() has charged its user for. */
struct channel *channel_new(int fd, const struct peer *peer, const struct limits *limits,
                            struct users *users, int64_t now);
void channel_free(struct channel *channel);

/* Whether the next packet is to be read. A peer that does not read its answers is not read from. */
bool channel_wants_packet(const struct channel *channel, int64_t now);

/* Whether there are answers that may be sent. */
bool channel_has_answers(const struct channel *channel);

/* Counts a packet that was read. */
void channel_count_request(struct channel *channel, int64_t now);

/* Counts a malformed packet, and says how many there were. Returns false if that is too many. */
bool channel_count_fault(struct channel *channel, int64_t now, struct excess *excess);

/* Queues answers, which the channel then owns. */
void channel_queue(struct channel *channel, GQueue *answers, int64_t now);

/* Holds back the answers to one request, which were queued last. */
void channel_hold(struct channel *channel, guint answers, uint32_t number);

/* Lets the answers that are held back go. If they are not true, `refusal` takes their place. It may
 * be null. */
void channel_release(struct channel *channel);
void channel_release_refused(struct channel *channel, GBytes *refusal, int64_t now);

/* Sends what the socket takes. Returns false if the peer is gone. */
bool channel_flush(struct channel *channel, int64_t now);

/* Whether a limit in time is reached. */
bool channel_has_expired(const struct channel *channel, int64_t now, struct excess *excess);

/* When something is next due: a limit in time, or the end of a delay. */
int64_t channel_due(const struct channel *channel, int64_t now);

#endif
