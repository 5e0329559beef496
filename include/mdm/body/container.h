/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 47 and 48: container policies.
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
 *     const mdm_container_item_t item = {
 *         .num0 = 5, .str1 = mdm_text("work"), .str2 = mdm_text("owner")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_container_set_item(&sent, &item)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the item stays ours
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
 *     const mdm_container_item_t *opened = mdm_container_item(received);
 *     if (opened != NULL) {
 *         printf("%u: %s, %s\n", opened->num0, opened->str1, opened->str2);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 5: work, owner
 * @endcode
 */
#ifndef MDM_BODY_CONTAINER_H
#define MDM_BODY_CONTAINER_H

#include "mdm/body/head.h"

/** A number and two strings. */
typedef struct mdm_container_item_t {
    uint32_t num0; /**< 1st. */
    char *str1;    /**< 2nd. */
    char *str2;    /**< 3rd. */
} mdm_container_item_t;

/**
 * A number and a string. The record is the beginning of an ::mdm_container_item_t (Q-CONTAINER-1).
 */
typedef struct mdm_container_short_item_t {
    uint32_t num0; /**< 1st. */
    char *str1;    /**< 2nd. */
} mdm_container_short_item_t;

/**
 * Body of the container category.
 *
 * | `type`        | constants                  | `data` points to                 |
 * |---------------|----------------------------|----------------------------------|
 * | 628           | `MDM_CONTAINER_ITEM`       | one ::mdm_container_item_t       |
 * | 629           | `MDM_CONTAINER_SHORT_ITEM` | one ::mdm_container_short_item_t |
 * | 630, 631, 632 | `MDM_CONTAINER_DATA_*`     | `data_size` raw bytes            |
 * | any other     |                            | nothing: the head travels alone  |
 *
 * `data_size` is compared with 0 (Q-BODY-2). If it is 0, or if `data` is null, the head travels
 * alone (Q-BODY-3). A received 0 makes `data` null. The sender sets another value. For 628 and 629
 * sending stores the size of the payload. For raw bytes `data_size` must not be negative
 * (Q-BODY-4). For any other `type` with a `data_size` other than 0, the receiver's `data` keeps the
 * value of its record (Q-CONTAINER-2).
 *
 * ipc_free() releases the payload. For 628 and 629 `data` keeps its old value (Q-BODY-7).
 */
typedef struct mdm_container_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_container_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a number and two strings.
 * @param msg   the message.
 * @param item  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_container_set_item(mdm_msg_t *msg,
                                                       const mdm_container_item_t *item)
{
    return item != NULL && mdm_fill_head(msg, MDM_TYPE_CONTAINER, MDM_CONTAINER_ITEM, item, 1);
}

/** @param msg  the message. @return Its number and two strings, or null. */
MDM_INLINE const mdm_container_item_t *mdm_container_item(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_container_item_t *,
                    mdm_payload_unless_0(msg, MDM_FORM_CONTAINER_ITEM));
}

/**
 * Fills a message with a number and a string.
 * @param msg   the message.
 * @param item  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_container_set_short_item(mdm_msg_t *msg,
                                                             const mdm_container_short_item_t *item)
{
    return item != NULL &&
           mdm_fill_head(msg, MDM_TYPE_CONTAINER, MDM_CONTAINER_SHORT_ITEM, item, 1);
}

/** @param msg  the message. @return Its number and string, or null. */
MDM_INLINE const mdm_container_short_item_t *mdm_container_short_item(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_container_short_item_t *,
                    mdm_payload_unless_0(msg, MDM_FORM_CONTAINER_SHORT_ITEM));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   #MDM_CONTAINER_DATA_630 or another discriminator of this form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_container_set_data(mdm_msg_t *msg, uint32_t type,
                                                       const void *bytes, size_t size)
{
    return mdm_container_form(type) == MDM_FORM_CONTAINER_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_CONTAINER, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_container_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_CONTAINER_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_container_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_CONTAINER, type, NULL, 0);
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone; otherwise null.
 */
MDM_INLINE const mdm_container_info_t *mdm_container_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_container_info_t *, mdm_body_of(msg, MDM_FORM_CONTAINER_HEAD));
}

#endif
