/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 35 and 36: policies on the phone's resources (data, calls, messages).
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
 *     const mdm_phone_res_item_t item = {.str0 = mdm_text("month"),
 *                                        .str2 = mdm_text("500")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_phone_res_set_item(&sent, MDM_PHONE_RES_ITEM_394, &item)) {
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
 *     const mdm_phone_res_item_t *opened = mdm_phone_res_item(received);
 *     if (opened != NULL) {
 *         printf("%s: %s\n", opened->str0, opened->str2);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: month: 500
 * @endcode
 */
#ifndef MDM_BODY_PHONE_RES_H
#define MDM_BODY_PHONE_RES_H

#include <stdint.h>

/** Two strings. */
typedef struct mdm_phone_res_item_t {
    char *str0;     /**< 1st. */
    uint32_t word1; /**< Never sent. Zero in a received record; ipc_free() sets it to zero
                         (Q-PHONE_RES-5). */
    char *str2;     /**< 2nd. */
} mdm_phone_res_item_t;

/** The detail of discriminator 422: two numbers and a string. */
typedef struct mdm_phone_res_detail_t {
    uint32_t num0; /**< 1st. */
    uint32_t num1; /**< 2nd. */
    char *str2;    /**< 3rd. */
} mdm_phone_res_detail_t;

/** The record of discriminator 422. */
typedef struct mdm_phone_res_ext_t {
    char *str0;                     /**< 1st. */
    uint32_t word1;                 /**< Never sent. Zero in a received record; ipc_free() sets it
                                         to zero (Q-PHONE_RES-5). */
    mdm_phone_res_detail_t *detail; /**< 2nd. A sender must not pass null. */
} mdm_phone_res_ext_t;

/**
 * Body of the phone-resource category: the fields of the body head (see mdm/body/head.h), but
 * `type` has a sign.
 *
 * | `type`                             | constants                  | `data` points to                     |
 * |------------------------------------|----------------------------|--------------------------------------|
 * | 394-421, 423-438, 441-449, 452-455 | `MDM_PHONE_RES_ITEM_*`     | one ::mdm_phone_res_item_t           |
 * | 422                                | `MDM_PHONE_RES_EXT`        | one ::mdm_phone_res_ext_t            |
 * | 439, 440                           | `MDM_PHONE_RES_RAW_ITEM_*` | `data_size` raw bytes, but see below |
 * | any other                          |                            | `data_size` raw bytes                |
 *
 * The sender sets `data_size`, which must not be negative (Q-PHONE_RES-3). A value of 1 or more
 * sends a record, which must then not be missing (Q-PHONE_RES-4). A received record has 12 in
 * `data_size` (Q-PHONE_RES-1). A received value below 1 makes `data` null.
 *
 * ipc_free() releases the payload. For the records `data` keeps its old value (Q-BODY-7).
 *
 * 439 and 440 are written and read as raw bytes, but sized and released as an
 * ::mdm_phone_res_item_t (Q-PHONE_RES-2). On the trusting path this is a hazard:
 *
 * - Never pass a received 439 or 440 with a payload to ipc_free(): it would follow the bytes as the
 *   pointers of a record.
 * - ipc_serialize() follows the pointers of the record to size the body, so `data` must point at a
 *   readable ::mdm_phone_res_item_t. The bytes of that record then travel, pointers included. A
 *   `data_size` above 8 plus the length of both texts is written beyond the buffer.
 *
 * On the guarded path ipc_open() and ipc_close() handle them safely, and ipc_seal() refuses them
 * with a payload.
 */
typedef struct mdm_phone_res_info {
    int32_t type;      /**< 1st. The discriminator of the policy; selects the payload. */
    uint32_t aux;      /**< Never sent, never touched: a word of the caller. */
    uint32_t param;    /**< 2nd. A parameter of the policy, sent unchanged. */
    int32_t data_size; /**< 3rd. Size of raw bytes; for a record it only says that there is one. */
    void *data;        /**< The payload, sent behind the head. */
} mdm_phone_res_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with two strings.
 * @param msg   the message.
 * @param type  #MDM_PHONE_RES_ITEM_394 or another discriminator of this form.
 * @param item  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_phone_res_set_item(mdm_msg_t *msg, int32_t type,
                                                       const mdm_phone_res_item_t *item)
{
    return mdm_phone_res_form(type) == MDM_FORM_PHONE_RES_ITEM && item != NULL &&
           mdm_fill_head(msg, MDM_TYPE_PHONE_RES, MDM_CAST(uint32_t, type), item, 1);
}

/** @param msg  the message. @return Its two strings, or null. */
MDM_INLINE const mdm_phone_res_item_t *mdm_phone_res_item(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_phone_res_item_t *, mdm_payload(msg, MDM_FORM_PHONE_RES_ITEM));
}

/**
 * Fills a message with a string and a detail.
 * @param msg  the message.
 * @param ext  the record; null is refused, and so is a null detail.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_phone_res_set_ext(mdm_msg_t *msg,
                                                      const mdm_phone_res_ext_t *ext)
{
    return ext != NULL && ext->detail != NULL &&
           mdm_fill_head(msg, MDM_TYPE_PHONE_RES, MDM_PHONE_RES_EXT, ext, 1);
}

/** @param msg  the message. @return Its string and detail, or null. */
MDM_INLINE const mdm_phone_res_ext_t *mdm_phone_res_ext(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_phone_res_ext_t *, mdm_payload(msg, MDM_FORM_PHONE_RES_EXT));
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null. Nothing fills this form, because ipc_seal() refuses it
 *         (Q-PHONE_RES-2).
 */
MDM_INLINE const char *mdm_phone_res_raw_item(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_PHONE_RES_RAW_ITEM, size);
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_phone_res_set_data(mdm_msg_t *msg, int32_t type,
                                                       const void *bytes, size_t size)
{
    return mdm_phone_res_form(type) == MDM_FORM_PHONE_RES_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_PHONE_RES, MDM_CAST(uint32_t, type), bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_phone_res_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_PHONE_RES_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_phone_res_set_head(mdm_msg_t *msg, int32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_PHONE_RES, MDM_CAST(uint32_t, type), NULL, 0);
}

#endif
