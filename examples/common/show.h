/* SPDX-License-Identifier: Apache-2.0 */
/* Prints messages as lines for a person. Texts of a message are escaped. */
#ifndef SHOW_H
#define SHOW_H

#include <stdint.h>

/* Prints the fields of a message that was sent ("->") or received ("<-"). Of malformed bytes it
 * prints those in front of the fault, and the fault. */
void show_message(const char *direction, const uint8_t *bytes, uint32_t length);

#endif
