/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A client that keeps to the agreement: it registers, then sets and asks for policies, one request
 * after the other, and compares each answer with the one that must come.
 */
#ifndef HONEST_H
#define HONEST_H

#include "load/load.h"

struct honest;

struct honest *honest_new(struct load *load, int number);
void honest_free(struct honest *honest);

/* Whether the client has done its work. In a run that the server survives, that includes asking for
 * every policy that was acknowledged. */
bool honest_is_done(const struct honest *honest);

/* Looks whether an answer is late. */
void honest_tick(struct honest *honest);

#endif
