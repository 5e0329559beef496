/* SPDX-License-Identifier: Apache-2.0 */
/* Texts that others have chosen, for a terminal or a log. */
#ifndef TEXT_H
#define TEXT_H

#include <stddef.h>

/*
 * Returns the text with backslashes escaped, and every byte that is no printable ASCII character: a
 * terminal would act on control characters. A null text becomes an empty one. The caller releases
 * the result with g_free().
 */
char *text_escaped(const char *text);

/* The same for `length` bytes, which may hold zeros. */
char *text_escaped_bytes(const void *bytes, size_t length);

#endif
