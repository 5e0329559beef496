/* SPDX-License-Identifier: Apache-2.0 */
/* Prints messages as rows of a table for a person. */
#ifndef SHOW_H
#define SHOW_H

#include <stdint.h>

/* Prints the head of the table. Each side does it once. */
void show_head(const char *side);

/* Prints the fields of a message that `side` sent ("->") or got ("<-"). The texts are the peer's: a
 * terminal would act on control characters in them. mdm-msg escapes them. */
void show_message(const char *side, const char *direction, const uint8_t *bytes, uint32_t length);

/* Prints the status of a key. */
void show_status(const char *side, const char *key);

#endif
