/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Filling and reading bodies by form.
 *
 * The header of each category has a function that fills a message, and one that reads it, for each
 * form of its body: mdm_wifi_set_network() and mdm_wifi_network(), mdm_res_set_data() and
 * mdm_res_data(). The names end like the name of the form: `MDM_FORM_WIFI_NETWORK`.
 *
 * Filling:
 *
 * - A call sets the message type, the discriminator, the payload and exactly the `data_size` that
 *   makes the payload travel. Both ipc_seal() and ipc_serialize() then send it. Start with a zeroed
 *   record, `mdm_msg_t msg = {0};`.
 * - If several discriminators select the form, the call takes one. A discriminator that does not
 *   select the form is refused, and so is a missing payload. A call that refuses returns false and
 *   changes nothing.
 * - A call prepares one sending. Sending may change `data_size`, so fill the message again before
 *   you send it again: it then has the same bytes. docs/data-size.md says for each form what these
 *   functions set and what sending makes of it.
 * - A message of the category keeps its message type, so that its second one can be set before. A
 *   message of another category or of none gets the first one.
 * - The header, `param`, `aux` and `pkg` stay as they were. Only if the message had another
 *   category, the whole body is zero before it is filled.
 * - The functions allocate nothing and take over nothing. The payload stays the caller's. It must
 *   live until the message is sent, and must not be released with it: do not pass the message to
 *   ipc_free() or ipc_close().
 * - Each category with a head also has a function `set_head`, which fills a message without a
 *   payload, such as a question. Where the format always sends a payload, it does not.
 *
 * Reading:
 *
 * - A call returns the record, the list, the string or the bytes if the message has this form and
 *   the payload is there; otherwise null. It does not return `data` that is not announced.
 * - The result belongs to the message and is valid until the message is released or filled. A
 *   released message must not be read.
 *
 * Constants: the functions take pointers to constants, because sending never writes to a payload.
 * The fields of the records are not constant, because received ones are not. mdm_text() makes a
 * field of a literal or another constant text, in C and in C++, and mdm_unconst() an element of a
 * list:
 *
 * @code{.c}
 * mdm_wifi_network_t network = {.ssid = mdm_text("office"), .detail_kind = 0, .detail = NULL};
 * GList *names = g_list_append(NULL, mdm_text("keyboard"));
 * @endcode
 *
 * The functions are inline: the shared library does not contain them.
 */
#ifndef MDM_BODY_TYPED_H
#define MDM_BODY_TYPED_H

#include <glib.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/types.h"

/**
 * Removes `const` from data that is only sent. This is the one place that does it.
 * @param data  the data, or null.
 * @return The same pointer. The library never writes through it while it sends.
 */
MDM_INLINE void *mdm_unconst(const void *data)
{
#ifdef __cplusplus
    return const_cast<void *>(data);
#else
    const union {
        const void *constant;
        void *plain;
    } pointer = {data};
    return pointer.plain;
#endif
}

/**
 * A constant text as a field of a record or a header that is only sent.
 * @param text  the text, or null.
 * @return The same pointer. The library never writes through it while it sends.
 */
MDM_INLINE char *mdm_text(const char *text)
{
    return MDM_CAST(char *, mdm_unconst(text));
}

/**
 * Counts the elements of a list, one by one. GLib's own functions do not take constant lists.
 * @param list  the first cell of a list that was read; null is the empty list.
 * @return The number of elements.
 */
MDM_INLINE size_t mdm_list_length(const GList *list)
{
    return g_list_length(MDM_CAST(GList *, mdm_unconst(list)));
}

/** @cond The common parts of the functions of the body headers. mdm/message.h defines them. */

typedef struct mdm_msg mdm_msg_t;

/* Makes a message one of a category, which its first message type names. Returns the body. */
MDM_INLINE void *mdm_begin_body(mdm_msg_t *msg, uint8_t first_type);

/* These fill a body that begins with the body head or with the application head. */
MDM_INLINE bool mdm_fill_head(mdm_msg_t *msg, uint8_t first_type, uint32_t type, const void *data,
                              int32_t data_size);
MDM_INLINE bool mdm_fill_bytes(mdm_msg_t *msg, uint8_t first_type, uint32_t type, const void *bytes,
                               size_t size);
MDM_INLINE bool mdm_fill_app_head(mdm_msg_t *msg, uint8_t first_type, int32_t type,
                                  const void *data, int32_t data_size);
MDM_INLINE bool mdm_fill_app_bytes(mdm_msg_t *msg, uint8_t first_type, int32_t type,
                                   const void *bytes, size_t size);

/* The body of a message that has the form, or null. */
MDM_INLINE const void *mdm_body_of(const mdm_msg_t *msg, mdm_form_t form);

/* `data` of a message that has the form and announces a payload, or null. */
MDM_INLINE const void *mdm_payload(const mdm_msg_t *msg, mdm_form_t form);
MDM_INLINE const void *mdm_payload_unless_0(const mdm_msg_t *msg, mdm_form_t form);
MDM_INLINE const void *mdm_app_payload(const mdm_msg_t *msg, mdm_form_t form);
MDM_INLINE const char *mdm_bytes(const mdm_msg_t *msg, mdm_form_t form, size_t *size);
MDM_INLINE const char *mdm_app_bytes(const mdm_msg_t *msg, mdm_form_t form, size_t *size);

/* Whether the codec can send these bytes or pointers. */
MDM_INLINE bool mdm_is_sendable(const void *data, size_t count)
{
    return count <= INT32_MAX && (data != NULL || count == 0);
}

/* The data, if there is any, and its count. */
MDM_INLINE const void *mdm_counted(const void *data, int32_t data_size, size_t *count)
{
    const bool is_there = data != NULL && data_size >= 1;
    if (count != NULL) {
        *count = is_there ? MDM_CAST(size_t, data_size) : 0;
    }
    return is_there ? data : NULL;
}

/** @endcond */

/* Each header of a body includes this one between its records and its functions. So the message is
 * complete at the end, whichever header a program includes first. */
#include "mdm/message.h"

#endif
