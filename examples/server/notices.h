/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Log lines about limits that users reach. Each pair of a user and a limit gets one line a minute,
 * however often he reaches it:
 *
 *     uid 1000: 32 of 32 connections used, refused pid 4711 (launcher); 12 more in the last minute
 */
#ifndef NOTICES_H
#define NOTICES_H

#include <stdint.h>

#include "clock.h"
#include "limits.h"
#include "peer.h"

#define NOTICES_PERIOD (60 * CLOCK_SECOND)

struct notices;

struct notices *notices_new(void);
void notices_free(struct notices *notices);

/* Logs that a limit is reached, at once or with the minute's last line. */
void notices_add(struct notices *notices, const struct peer *peer, const struct excess *excess,
                 int64_t now);

/* Logs what the minutes that have passed held back. */
void notices_tick(struct notices *notices, int64_t now);

/* When something is next due: a line, or the end of a minute. CLOCK_NEVER if nothing is. */
int64_t notices_due(const struct notices *notices);

#endif
