/* SPDX-License-Identifier: Apache-2.0 */
/* Prints messages as rows of a table for a person. */
#ifndef SHOW_H
#define SHOW_H

#include <stdint.h>

#include <mdm/message.h>

/* Prints the head of the table. Each side does it once. */
void show_head(const char *side);

/* Prints one message that `side` sent ("->") or got ("<-"), and its length in bytes. */
void show_message(const char *side, const char *direction, const mdm_msg_t *msg, uint32_t length);

/* Prints the status of a key. */
void show_status(const char *side, const char *key);

#endif
