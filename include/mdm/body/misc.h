/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 17 and 18: policies that belong to no other category.
 *
 * The text of a field begins with its position on the wire, within its record. Server and clients
 * agree on the meaning of the fields.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     const mdm_book_info_t book = {
 *         .url = mdm_text("https://example.org/"),
 *         .title = mdm_text("Example")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_misc_set_book(&sent, MDM_MISC_BOOK_281, &book)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the bookmark stays ours
 *     uint8_t *bytes = ipc_seal(&sent, &length, NULL);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     const mdm_book_info_t *opened = mdm_misc_book(received);
 *     if (opened != NULL) {
 *         printf("%s: %s\n", opened->title, opened->url);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: Example: https://example.org/
 * @endcode
 */
#ifndef MDM_BODY_MISC_H
#define MDM_BODY_MISC_H

#include <glib.h>
#include <stdint.h>

/** The record of discriminators 124 to 126: one string. */
typedef struct mdm_misc_str_t {
    char *value; /**< 1st. */
} mdm_misc_str_t;

/** The record of discriminators 281 and 283: a bookmark. */
typedef struct mdm_book_info_t {
    char *url;   /**< 1st. */
    char *title; /**< 2nd. */
} mdm_book_info_t;

/** The record of discriminators 288 and 289: two strings. */
typedef struct mdm_misc_str_pair_t {
    char *first;  /**< 1st. */
    char *second; /**< 2nd. */
} mdm_misc_str_pair_t;

/**
 * Body of the misc category: the body head (see mdm/body/head.h). For two discriminators a list
 * stands in the place of `param`.
 *
 * | `type`        | constants            | payload                                                                  |
 * |---------------|----------------------|--------------------------------------------------------------------------|
 * | 122           | `MDM_MISC_ARRAY`     | `data`: array of `data_size` string pointers; `data_size` counts strings |
 * | 123           | `MDM_MISC_HEAD`      | none, whatever `data_size` says                                          |
 * | 124, 125, 126 | `MDM_MISC_TEXT_*`    | `data`: one ::mdm_misc_str_t                                             |
 * | 127, 128      | `MDM_MISC_STRINGS_*` | `param_list`: GList of strings, sent even when `data_size` is 0          |
 * | 281, 283      | `MDM_MISC_BOOK_*`    | `data`: one ::mdm_book_info_t                                            |
 * | 288, 289      | `MDM_MISC_PAIR_*`    | `data`: one ::mdm_misc_str_pair_t                                        |
 * | any other     |                      | `data`: `data_size` raw bytes                                            |
 *
 * A `data_size` of 0 sends the head alone, and the receiver's `data` becomes null (Q-BODY-2). This
 * does not hold for 127 and 128, whose list always travels (Q-MISC-2).
 *
 * - Records (124 to 126, 281, 283, 288, 289): the sender sets `data_size` to another value, and
 *   sending stores the size of the payload. The record must then not be missing (Q-MISC-5,
 *   Q-MISC-6). With a missing bookmark ipc_serialize() fails or, if the header's text has 967 bytes
 *   or more, writes beyond its buffer (Q-MISC-4).
 * - 122: the array must not be missing while `data_size` is 1 or more. A negative `data_size` sends
 *   no strings (Q-MISC-8).
 * - 123: if `data_size` is not 0, the receiver's `data` keeps the value of its record (Q-MISC-9).
 * - 127 and 128: the low 32 bits of the list's address travel in the place of `param`. The receiver
 *   discards them. Its `data` keeps the value of its record (Q-MISC-1). A null element of the list
 *   arrives at its end; ipc_seal() refuses it (Q-MISC-3).
 * - Raw bytes: `data_size` must not be negative (Q-BODY-4).
 *
 * If `data` is null, ipc_free() releases nothing. So a 127 or 128 that was received into a zeroed
 * record keeps its list: the owner of the message releases it, with
 * `g_list_free_full(param_list, g_free)` (Q-MISC-10). If `data` is not null, ipc_free() releases
 * that list, and `param_list` keeps its old value. For 122, 288 and 289 `data` keeps its old value
 * (Q-BODY-7).
 *
 * The log: ipc_serialize() logs both texts of an ::mdm_book_info_t at level 1 (Q-MISC-12).
 */
typedef struct mdm_misc_info {
    int32_t type; /**< 1st. The discriminator of the policy; selects the payload. */
    uint32_t aux; /**< Never sent, never touched: a word of the caller. */
    union {
        uint32_t param;    /**< 2nd. A parameter of the policy, sent unchanged. */
        GList *param_list; /**< The payload of 127 and 128, sent behind the head; null if empty. */
    };
    int32_t data_size; /**< 3rd. Size of the payload in bytes; for 122 the number of strings. */
    void *data;        /**< The payload of every discriminator except 127 and 128, sent behind the
                            head. */
} mdm_misc_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/** @cond The common parts of the functions below. */

MDM_INLINE bool mdm_fill_misc_head(mdm_msg_t *msg, int32_t type, const void *data,
                                   int32_t data_size)
{
    mdm_misc_info_t *info = MDM_CAST(mdm_misc_info_t *, mdm_begin_body(msg, MDM_TYPE_MISC));
    if (mdm_misc_form(info->type) == MDM_FORM_MISC_STRINGS) {
        info->param_list = NULL;
    }
    info->type = type;
    info->data_size = data_size;
    info->data = data_size != 0 ? mdm_unconst(data) : NULL;
    return true;
}

MDM_INLINE bool mdm_fill_misc_bytes(mdm_msg_t *msg, int32_t type, const void *data, size_t count)
{
    return mdm_is_sendable(data, count) &&
           mdm_fill_misc_head(msg, type, data, MDM_CAST(int32_t, count));
}

MDM_INLINE const void *mdm_misc_counted(const mdm_msg_t *msg, mdm_form_t form, size_t *count)
{
    const mdm_misc_info_t *info = MDM_CAST(const mdm_misc_info_t *, mdm_body_of(msg, form));
    return mdm_counted(info != NULL ? info->data : NULL, info != NULL ? info->data_size : 0, count);
}

MDM_INLINE const void *mdm_misc_payload(const mdm_msg_t *msg, mdm_form_t form)
{
    const mdm_misc_info_t *info = MDM_CAST(const mdm_misc_info_t *, mdm_body_of(msg, form));
    return info != NULL && info->data_size != 0 ? info->data : NULL;
}

/** @endcond */

/**
 * Fills a message with an array of strings.
 * @param msg      the message.
 * @param strings  the array; null only if it is empty. Its strings may be null. In C a `char **`
 *                 needs a cast.
 * @param count    the number of strings. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_array(mdm_msg_t *msg, const char *const *strings,
                                                   size_t count)
{
    return mdm_fill_misc_bytes(msg, MDM_MISC_ARRAY, strings, count);
}

/**
 * @param msg    the message.
 * @param count  receives the number of strings; may be null.
 * @return Its array, or null. The strings may be null.
 */
MDM_INLINE const char *const *mdm_misc_array(const mdm_msg_t *msg, size_t *count)
{
    return MDM_CAST(const char *const *, mdm_misc_counted(msg, MDM_FORM_MISC_ARRAY, count));
}

/**
 * Fills a message with a string.
 * @param msg   the message.
 * @param type  #MDM_MISC_TEXT_124 or another discriminator of this form.
 * @param text  the record that holds the string; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_text(mdm_msg_t *msg, int32_t type,
                                                  const mdm_misc_str_t *text)
{
    return mdm_misc_form(type) == MDM_FORM_MISC_TEXT && text != NULL &&
           mdm_fill_misc_head(msg, type, text, 1);
}

/** @param msg  the message. @return Its string, or null. */
MDM_INLINE const mdm_misc_str_t *mdm_misc_text(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_misc_str_t *, mdm_misc_payload(msg, MDM_FORM_MISC_TEXT));
}

/**
 * Fills a message with a list of strings. `data` is null and `data_size` is 0. The list stands in
 * the place of `param`: do not set `param`, too.
 * @param msg      the message.
 * @param type     #MDM_MISC_STRINGS_127 or another discriminator of this form.
 * @param strings  the first cell of a list of strings, none null; null is the empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_strings(mdm_msg_t *msg, int32_t type,
                                                     const GList *strings)
{
    if (mdm_misc_form(type) != MDM_FORM_MISC_STRINGS || !mdm_begins_list(strings)) {
        return false;
    }
    mdm_misc_info_t *info = MDM_CAST(mdm_misc_info_t *, mdm_begin_body(msg, MDM_TYPE_MISC));
    info->type = type;
    info->param_list = mdm_unconst(strings);
    info->data_size = 0;
    info->data = NULL;
    return true;
}

/** @param msg  the message. @return Its list of strings, or null. */
MDM_INLINE const GList *mdm_misc_strings(const mdm_msg_t *msg)
{
    const mdm_misc_info_t *info =
        MDM_CAST(const mdm_misc_info_t *, mdm_body_of(msg, MDM_FORM_MISC_STRINGS));
    return info != NULL ? info->param_list : NULL;
}

/**
 * Fills a message with a bookmark.
 * @param msg   the message.
 * @param type  #MDM_MISC_BOOK_281 or another discriminator of this form.
 * @param book  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_book(mdm_msg_t *msg, int32_t type,
                                                  const mdm_book_info_t *book)
{
    return mdm_misc_form(type) == MDM_FORM_MISC_BOOK && book != NULL &&
           mdm_fill_misc_head(msg, type, book, 1);
}

/** @param msg  the message. @return Its bookmark, or null. */
MDM_INLINE const mdm_book_info_t *mdm_misc_book(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_book_info_t *, mdm_misc_payload(msg, MDM_FORM_MISC_BOOK));
}

/**
 * Fills a message with two strings.
 * @param msg   the message.
 * @param type  #MDM_MISC_PAIR_288 or another discriminator of this form.
 * @param pair  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_pair(mdm_msg_t *msg, int32_t type,
                                                  const mdm_misc_str_pair_t *pair)
{
    return mdm_misc_form(type) == MDM_FORM_MISC_PAIR && pair != NULL &&
           mdm_fill_misc_head(msg, type, pair, 1);
}

/** @param msg  the message. @return Its two strings, or null. */
MDM_INLINE const mdm_misc_str_pair_t *mdm_misc_pair(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_misc_str_pair_t *, mdm_misc_payload(msg, MDM_FORM_MISC_PAIR));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_data(mdm_msg_t *msg, int32_t type, const void *bytes,
                                                  size_t size)
{
    return mdm_misc_form(type) == MDM_FORM_MISC_DATA && mdm_fill_misc_bytes(msg, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_misc_data(const mdm_msg_t *msg, size_t *size)
{
    return MDM_CAST(const char *, mdm_misc_counted(msg, MDM_FORM_MISC_DATA, size));
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form but a list of strings, which always travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_set_head(mdm_msg_t *msg, int32_t type)
{
    return mdm_misc_form(type) != MDM_FORM_MISC_STRINGS && mdm_fill_misc_head(msg, type, NULL, 0);
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone (123); otherwise null.
 */
MDM_INLINE const mdm_misc_info_t *mdm_misc_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_misc_info_t *, mdm_body_of(msg, MDM_FORM_MISC_HEAD));
}

#endif
