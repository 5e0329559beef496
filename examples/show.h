/* SPDX-License-Identifier: Apache-2.0 */
/* Prints messages as the rows of a table that a person can read. */
#ifndef SHOW_H
#define SHOW_H

#include <stdint.h>

#include <mdm/message.h>

/* The table's head, printed once by each side. */
void show_head(const char *side);

/* One message that `side` sent ("->") or got ("<-"), and how many bytes it was. */
void show_message(const char *side, const char *direction, const mdm_msg_t *msg, uint32_t length);

/* Prints the status that is kept under a key. */
void show_status(const char *side, const char *key);

#endif
