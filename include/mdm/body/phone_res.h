/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 35 and 36: policies on the phone's resources (data, calls, messages).
 */
#ifndef MDM_BODY_PHONE_RES_H
#define MDM_BODY_PHONE_RES_H

#include <stdint.h>

/** Two strings, `str0` sent first; either may be null. */
typedef struct mdm_phone_res_item {
    char *str0;     /**< Its meaning is between server and clients. */
    uint32_t word1; /**< Never sent; zero after decoding, set to zero by ipc_free(). */
    char *str2;     /**< Its meaning is between server and clients. */
} mdm_phone_res_item_t;

/** The detail of discriminator 422, sent in field order; the string may be null. */
typedef struct mdm_phone_res_detail {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    uint32_t num1;
    char *str2;
    /** @} */
} mdm_phone_res_detail_t;

/** The record of discriminator 422. */
typedef struct mdm_phone_res_ext {
    char *str0;                     /**< Sent first; may be null. */
    uint32_t word1;                 /**< Never sent; zero after decoding, set to zero by
                                         ipc_free(). */
    mdm_phone_res_detail_t *detail; /**< Sent after `str0`; must not be null on sending. */
} mdm_phone_res_ext_t;

/**
 * Body of the phone-resource category: the fields of the body head (see mdm/body/head.h), with a
 * signed `type`.
 *
 * | `type`                                          | `data` points to                          |
 * |-------------------------------------------------|-------------------------------------------|
 * | 394-421, 423-438, 441-449, 452-455              | one ::mdm_phone_res_item_t                |
 * | 422                                             | one ::mdm_phone_res_ext_t                 |
 * | 439, 440                                        | written and read as `data_size` raw       |
 * |                                                 | bytes, but sized and released as a        |
 * |                                                 | ::mdm_phone_res_item_t                    |
 * | any other                                       | `data_size` raw bytes                     |
 *
 * `data_size` is the sender's: any value of 1 or more sends a record, which must then not be
 * missing; it must not be negative. Received records have 12 there; 0 or less arrives with a null
 * `data`. Raw bytes arrive as a new string with a terminator.
 *
 * ipc_free() releases the payload; for the records `data` keeps its old value, so a message is
 * freed once. A received 439 or 440 must not be handed to ipc_free(): its bytes would be followed
 * as the record's pointers. Sending one follows them as well, to size the body: `data` must point
 * at a readable ::mdm_phone_res_item_t, whose own bytes then travel, and a `data_size` above 8 plus
 * the length of both texts is written beyond the buffer.
 */
typedef struct mdm_phone_res_info {
    int32_t type;      /**< Policy discriminator; selects the payload. */
    uint32_t aux;      /**< The caller's word: never sent, never touched. */
    uint32_t param;    /**< A parameter of the policy, sent as it stands. */
    int32_t data_size; /**< Byte size of a raw payload; a switch for the records. */
    void *data;        /**< The payload. */
} mdm_phone_res_info_t;

#endif
