/* SPDX-License-Identifier: Apache-2.0 */
/* What the server bears. Every member is an option of the command line: limits.c has the table. */
#ifndef LIMITS_H
#define LIMITS_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

struct limits {
    int clients;          /* connections at once */
    int clients_per_user; /* connections of one user at once */
    int connects;         /* new connections of one user in a second */
    int message;          /* bytes of a message */
    int queued;           /* bytes of unread answers for a connection */
    int policy;           /* bytes of stored policies of one user */
    int faults;           /* malformed messages of a connection */
    int fault_delay;      /* milliseconds until the next message is read after a malformed one */
    int first_timeout;    /* seconds until the first request */
    int idle_timeout;     /* seconds between requests */
    int answer_timeout;   /* seconds until an answer is read */
    int stop_timeout;     /* seconds that stopping takes at most */
};

/* The limits that hold if no option says otherwise. */
void limits_init(struct limits *limits);

/* The options that change `limits`. The texts show the defaults. The array ends with an empty
 * entry. It and its texts stay until the process ends. */
const GOptionEntry *limits_options(struct limits *limits);

/* Returns false and names the option if a limit is outside of its range. */
bool limits_check(const struct limits *limits, GError **error);

/* A limit that is reached. */
struct excess {
    const char *what; /* a static text, for example "connections used" */
    int64_t used;
    int64_t limit;
};

/* A sentence: "32 of 32 connections used". The caller releases it with g_free(). */
char *excess_describe(const struct excess *excess);

#endif
