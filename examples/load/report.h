/* SPDX-License-Identifier: Apache-2.0 */
/* What a run counts and measures, and the files and the table that it makes of it. */
#ifndef REPORT_H
#define REPORT_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include <glib.h>

/* A latency belongs to the slice of time in which its answer came. */
typedef enum report_slice {
    REPORT_CALM,    /* without hostile and stalled clients */
    REPORT_HOSTILE, /* beside them */
    REPORT_SLICES,
} report_slice_t;

struct report {
    uint64_t sent;        /* requests of honest clients */
    uint64_t hostile;     /* packets of hostile clients */
    uint64_t right;       /* answers that were as they must be, to any client */
    uint64_t wrong;       /* other ones */
    uint64_t lost;        /* answers that did not come in time */
    uint64_t harmed;      /* honest clients that were refused or disconnected */
    uint64_t forbidden;   /* requests that the rules forbid, and that were refused */
    uint64_t stalled;     /* clients that the server has dropped, because they did nothing */
    uint64_t vanished;    /* clients that left in the middle */
    uint64_t reconnected; /* connections of honest clients after the server was gone */
    uint64_t found;       /* acknowledged policies that were found again at the end */
    GArray *latencies[REPORT_SLICES]; /* of uint32_t, in microseconds */
    GArray *samples;                  /* of the server's memory */
    int64_t started;
    int64_t ended;
    pid_t server; /* 0 if it is not watched */
};

void report_init(struct report *report, pid_t server);
void report_clear(struct report *report);

void report_add_latency(struct report *report, report_slice_t slice, int64_t microseconds);

/* Measures the memory and the descriptors of the server. */
void report_sample(struct report *report);

/* Prints the table. */
void report_print(const struct report *report);

/* Writes summary.tsv, calm.tsv, hostile.tsv and memory.tsv. Returns false with `error` set on
 * failure. */
bool report_write(struct report *report, const char *directory, GError **error);

/* Whether every honest client has got every answer. */
bool report_is_good(const struct report *report);

#endif
