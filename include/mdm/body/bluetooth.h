/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 9 and 10: Bluetooth policies.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     GList *names = g_list_append(NULL, mdm_text("keyboard"));
 *     names = g_list_append(names, mdm_text("mouse"));
 *     mdm_msg_t sent = {0};
 *     const bool is_filled =
 *         mdm_bluetooth_set_names(&sent, MDM_BLUETOOTH_NAMES_91, names);
 *     uint32_t length = 0;
 *     uint8_t *bytes = is_filled ? ipc_seal(&sent, &length, NULL) : NULL;
 *     g_list_free(names);  // the cells are ours; the names are literals
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     for (const GList *cell = mdm_bluetooth_names(received); cell != NULL;
 *          cell = cell->next) {
 *         printf("%s\n", (const char *)cell->data);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: keyboard
 * // prints: mouse
 * @endcode
 */
#ifndef MDM_BODY_BLUETOOTH_H
#define MDM_BODY_BLUETOOTH_H

#include "mdm/body/head.h"

/**
 * Body of the Bluetooth category.
 *
 * | `type`                                            | constants               | `data` points to                |
 * |---------------------------------------------------|-------------------------|---------------------------------|
 * | 91, 220 to 225, 227, 230, 231, 233, 234, 235, 237 | `MDM_BLUETOOTH_NAMES_*` | GList of strings (device names) |
 * | any other                                         |                         | `data_size` raw bytes           |
 *
 * The sender sets `data_size`; sending never stores it. A value below 1 sends the head alone, and
 * the receiver's `data` keeps the value of its record (Q-BODY-6). For a list any value of 1 or more
 * will do. A list must not hold a null element (Q-BODY-10).
 *
 * ipc_free() releases the lists of `type` 91, 223, 227, 233 and 237. It then sets `data` to null
 * and `data_size` to 0; for an empty list `data_size` keeps its value (Q-BLUETOOTH-2). For every
 * other `type` it sets `data_size` to 0 and leaves `data`: the owner of the message releases that
 * list or string (Q-BLUETOOTH-1).
 *
 * The log: ipc_serialize() and ipc_deserialize() log the names of a list at level 1 (Q-BODY-14).
 */
typedef struct mdm_bluetooth_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_bluetooth_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a list of names of devices.
 * @param msg    the message.
 * @param type   #MDM_BLUETOOTH_NAMES_91 or another discriminator of this form.
 * @param names  the first cell of a list of strings, none null; null is the empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_bluetooth_set_names(mdm_msg_t *msg, uint32_t type,
                                                        const GList *names)
{
    return mdm_bluetooth_form(type) == MDM_FORM_BLUETOOTH_NAMES && mdm_begins_list(names) &&
           mdm_fill_head(msg, MDM_TYPE_BLUETOOTH, type, names, 1);
}

/** @param msg  the message. @return Its list of names of devices, or null. */
MDM_INLINE const GList *mdm_bluetooth_names(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload(msg, MDM_FORM_BLUETOOTH_NAMES));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_bluetooth_set_data(mdm_msg_t *msg, uint32_t type,
                                                       const void *bytes, size_t size)
{
    return mdm_bluetooth_form(type) == MDM_FORM_BLUETOOTH_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_BLUETOOTH, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_bluetooth_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_BLUETOOTH_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_bluetooth_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_BLUETOOTH, type, NULL, 0);
}

#endif
