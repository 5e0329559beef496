/* SPDX-License-Identifier: Apache-2.0 */
/* A run of the load generator: what all its clients share. */
#ifndef LOAD_H
#define LOAD_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

#include "load/report.h"

struct load {
    const char *socket;
    GPtrArray *corpus;
    struct report report;
    GRand *random;
    int64_t honest_left;  /* requests to send */
    int64_t hostile_left; /* packets to send */
    int honest_clients;
    uid_t first_uid;  /* of the clients; each has his own if the process is root */
    bool has_uids;    /* whether the process may be other users */
    int64_t timeout;  /* of an answer, in microseconds */
    int think;        /* milliseconds between two requests of an honest client */
    uint32_t longest; /* message of the server */
    int faults;       /* of a connection, that the server bears */
    bool survives;    /* The server may go away and come back. */
    report_slice_t slice;
};

/* The user of the n-th client of a kind. Honest clients have one each; hostile ones share a few. */
typedef enum load_kind {
    LOAD_HONEST,
    LOAD_HOSTILE,
    LOAD_STALLED,
    LOAD_VANISHING,
    LOAD_FORBIDDEN,
} load_kind_t;

uid_t load_uid(const struct load *load, load_kind_t kind, int number);

/* Tells of a wrong answer, but not of thousands of them. */
void load_complain(struct load *load, const char *who, const char *what, const GPtrArray *packets);

#endif
