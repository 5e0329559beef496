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
 *   record, `mdm_msg_t msg = {0};`, or fill an opened message to send it on.
 * - If several discriminators select the form, the call takes one. A discriminator that does not
 *   select the form is refused, and so is a missing record, string or array. A call that refuses
 *   returns false and changes nothing. A list that is not handed over by its first cell is refused,
 *   too. The calls do not look at its elements: ipc_seal() refuses a list with a null element, and
 *   ipc_serialize() must not get one.
 * - A call prepares one sending. Sending may change `data_size`, so fill the message again before
 *   you send it again: it then has the same bytes. Otherwise apn profiles and eas settings grow
 *   with each sending. docs/data-size.md says for each form what these functions set and what
 *   sending makes of it.
 * - A message of the category keeps its message type. Any other message gets the first message type
 *   of the category. To send the second one, set it after the call.
 * - Set `param` and `pkg` after the call, too. The call keeps them in a message of the category and
 *   in a fresh message, whose type is 0. It first clears the whole body of any other message. The
 *   header stays as it was.
 * - The functions allocate nothing and take over nothing. The payload stays the caller's, and must
 *   live until the message is sent. Do not pass a `mdm_msg_t msg` that was filled to ipc_free(),
 *   which would release the payload. ipc_close() releases an opened message that was filled, too,
 *   and does not release the payload. Call ipc_free() before you fill a deserialised message: its
 *   payload is lost otherwise.
 * - Raw bytes are for text: behind their first zero byte a receiver finds zeros (Q-WIRE-2).
 * - A function `set_head` fills a message without a payload, such as a question. It takes any
 *   discriminator, except one whose payload always travels: misc 127 and 128, callbacks 0 and 1.
 *   The categories without a head and roaming have no such function.
 *
 * Reading:
 *
 * - A call returns the record, the list, the string or the bytes if the message has this form and
 *   the payload is there; otherwise null. It does not return `data` that is not announced.
 * - Null does not say why: the message may have another form (see mdm_form_of()) or no payload, or
 *   its list or text may be empty. A function that returns the body returns null only for another
 *   form, and for a callback that has no detail.
 * - The result belongs to the message and is valid until the message is released or filled. A
 *   released message must not be read.
 *
 * Constants: the functions take pointers to constants, because sending never writes to a payload.
 * The fields of the records are not constant, because received ones are not. mdm_text() makes a
 * field of a literal or another constant text, in C and in C++, and mdm_unconst() an element of a
 * list.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     GList *names = g_list_append(NULL, mdm_text("keyboard"));
 *     mdm_msg_t msg = {0};
 *     const bool is_filled =
 *         mdm_bluetooth_set_names(&msg, MDM_BLUETOOTH_NAMES_223, names);
 *     msg.body.bluetooth.param = 1;  // the call keeps it
 *     if (is_filled) {
 *         const GList *read = mdm_bluetooth_names(&msg);
 *         printf("%zu name: %s\n", mdm_list_length(read),
 *                (char *)read->data);
 *     }
 *     g_list_free(names);  // the list is ours; the message is not released
 *     return is_filled ? 0 : 1;
 * }
 * // prints: 1 name: keyboard
 * @endcode
 *
 * In C a static record takes a literal itself: its fields cannot call functions.
 *
 * The functions are inline: the shared library does not contain them. The message that they get
 * must not be null.
 */
#ifndef MDM_BODY_TYPED_H
#define MDM_BODY_TYPED_H

#include <glib.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/types.h"

#ifndef __cplusplus
/**
 * Removes `const` from data that is only sent. This is the one place that does it. In C++ it is a
 * template, and the result has the type of the data.
 * @param data  the data, or null.
 * @return The same pointer. The library never writes through it while it sends.
 */
MDM_INLINE void *mdm_unconst(const void *data)
{
    const union {
        const void *constant;
        void *plain;
    } pointer = {data};
    return pointer.plain;
}
#else
extern "C++" {
template <class T>
inline T *mdm_unconst(const T *data)
{
    return const_cast<T *>(data);
}
}
#endif

/**
 * A constant text as a field of a record or a header that is only sent.
 * @param text  the text, or null.
 * @return The same pointer. The library never writes through it while it sends.
 */
MDM_INLINE char *mdm_text(const char *text)
{
    return mdm_unconst(text);
}

/**
 * Counts the elements of a list, one by one. GLib's own functions do not take constant lists.
 * @param list  the first cell of a list that was read; null is the empty list.
 * @return The number of elements.
 */
MDM_INLINE size_t mdm_list_length(const GList *list)
{
    return g_list_length(mdm_unconst(list));
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

/* Whether a list is handed over by its first cell; null is the empty list. */
MDM_INLINE bool mdm_begins_list(const GList *list)
{
    return list == NULL || list->prev == NULL;
}

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
