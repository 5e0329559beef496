/* SPDX-License-Identifier: Apache-2.0 */
#include "text.h"

#include <glib.h>

char *text_escaped(const char *text)
{
    return g_strescape(text != NULL ? text : "", "\"");
}

char *text_escaped_bytes(const void *bytes, size_t length)
{
    const char *text = bytes;
    GString *escaped = g_string_sized_new(length);
    for (size_t i = 0; i < length; ++i) {
        if (g_ascii_isprint(text[i]) && text[i] != '\\') {
            g_string_append_c(escaped, text[i]);
        } else {
            g_string_append_printf(escaped, "\\%03o", (unsigned char)text[i]);
        }
    }
    return g_string_free(escaped, FALSE);
}
