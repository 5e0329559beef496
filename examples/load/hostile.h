/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Clients that do harm: they send bytes that are no message, ask for what they may not, send
 * nothing, do not read, or vanish. What the server says to them is compared, too.
 */
#ifndef HOSTILE_H
#define HOSTILE_H

#include "load/load.h"

struct hostile;

struct hostile *hostile_new(struct load *load, load_kind_t kind, int number);
void hostile_free(struct hostile *hostile);

/* Disconnects the client until it is let loose again. */
void hostile_pause(struct hostile *hostile);
void hostile_resume(struct hostile *hostile);

#endif
