/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 45 and 46: kiosk-mode policies.
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
 *     const mdm_kiosk_key_pair_t home = {.key = 1, .value = 0};
 *     const mdm_kiosk_key_pair_t back = {.key = 2, .value = 1};
 *     GList *pairs = g_list_append(NULL, mdm_unconst(&home));
 *     pairs = g_list_append(pairs, mdm_unconst(&back));
 *     mdm_msg_t sent = {0};
 *     const bool is_filled = mdm_kiosk_set_key_pairs(&sent, pairs);
 *     uint32_t length = 0;
 *     uint8_t *bytes = is_filled ? ipc_seal(&sent, &length, NULL) : NULL;
 *     g_list_free(pairs);  // the cells are ours, and the pairs stay ours
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     for (const GList *cell = mdm_kiosk_key_pairs(received); cell != NULL;
 *          cell = cell->next) {
 *         const mdm_kiosk_key_pair_t *pair =
 *             (const mdm_kiosk_key_pair_t *)cell->data;
 *         printf("key %u: %u\n", pair->key, pair->value);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: key 1: 0
 * // prints: key 2: 1
 * @endcode
 */
#ifndef MDM_BODY_KIOSK_H
#define MDM_BODY_KIOSK_H

#include "mdm/body/head.h"

/** The setting of one hardware key. */
typedef struct mdm_kiosk_key_pair_t {
    uint32_t key;   /**< 1st. The hardware key. */
    uint32_t value; /**< 2nd. Its setting. */
} mdm_kiosk_key_pair_t;

/**
 * Body of the kiosk category.
 *
 * | `type`    | constants             | `data` points to                                               |
 * |-----------|-----------------------|----------------------------------------------------------------|
 * | 612, 614  | `MDM_KIOSK_TEXT_*`    | a string                                                       |
 * | 618, 621  | `MDM_KIOSK_KEYS_*`    | GList of pointers to `uint32_t` (hardware keys) |
 * | 619       | `MDM_KIOSK_KEY_PAIRS` | GList of ::mdm_kiosk_key_pair_t                                |
 * | any other |                       | `data_size` raw bytes                                          |
 *
 * `data_size` is compared with 0 (Q-BODY-2). If it is 0, or if `data` is null, the head travels
 * alone (Q-BODY-3). A received 0 makes `data` null. The sender sets another value. For the string
 * and the lists sending stores the size of the payload; for a list without the 4 bytes of the count
 * (Q-KIOSK-2). For raw bytes `data_size` must not be negative (Q-BODY-4). Do not send null elements
 * of a list: the count and the size include them, but they are not written. They arrive as zeros at
 * the end of the list (Q-KIOSK-1). Give a list by its first cell: the elements in front of another
 * one are written, but not counted (Q-KIOSK-5).
 *
 * ipc_free() releases the payload. For the string and the lists `data` keeps its old value
 * (Q-BODY-7).
 */
typedef struct mdm_kiosk_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_kiosk_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a string.
 * @param msg   the message.
 * @param type  #MDM_KIOSK_TEXT_612 or another discriminator of this form.
 * @param text  the string; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_kiosk_set_text(mdm_msg_t *msg, uint32_t type, const char *text)
{
    return mdm_kiosk_form(type) == MDM_FORM_KIOSK_TEXT && text != NULL &&
           mdm_fill_head(msg, MDM_TYPE_KIOSK, type, text, 1);
}

/** @param msg  the message. @return Its string, or null. */
MDM_INLINE const char *mdm_kiosk_text(const mdm_msg_t *msg)
{
    return MDM_CAST(const char *, mdm_payload_unless_0(msg, MDM_FORM_KIOSK_TEXT));
}

/**
 * Fills a message with a list of hardware keys.
 * @param msg   the message.
 * @param type  #MDM_KIOSK_KEYS_618 or another discriminator of this form.
 * @param keys  the first cell of a list of `uint32_t`, none null; null is the empty list, for which
 *              the head alone travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_kiosk_set_keys(mdm_msg_t *msg, uint32_t type, const GList *keys)
{
    return mdm_kiosk_form(type) == MDM_FORM_KIOSK_KEYS && mdm_begins_list(keys) &&
           mdm_fill_head(msg, MDM_TYPE_KIOSK, type, keys, keys != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of hardware keys, or null. */
MDM_INLINE const GList *mdm_kiosk_keys(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload_unless_0(msg, MDM_FORM_KIOSK_KEYS));
}

/**
 * Fills a message with a list of settings of hardware keys.
 * @param msg    the message.
 * @param pairs  the first cell of a list of ::mdm_kiosk_key_pair_t, none null; null is the empty
 *               list, for which the head alone travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_kiosk_set_key_pairs(mdm_msg_t *msg, const GList *pairs)
{
    return mdm_begins_list(pairs) &&
           mdm_fill_head(msg, MDM_TYPE_KIOSK, MDM_KIOSK_KEY_PAIRS, pairs, pairs != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of settings of hardware keys, or null. */
MDM_INLINE const GList *mdm_kiosk_key_pairs(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload_unless_0(msg, MDM_FORM_KIOSK_KEY_PAIRS));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_kiosk_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                   size_t size)
{
    return mdm_kiosk_form(type) == MDM_FORM_KIOSK_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_KIOSK, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_kiosk_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_KIOSK_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_kiosk_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_KIOSK, type, NULL, 0);
}

#endif
