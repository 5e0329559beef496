/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 47 and 48: container policies.
 */
#ifndef MDM_BODY_CONTAINER_H
#define MDM_BODY_CONTAINER_H

#include "mdm/body/head.h"

/**
 * A number and up to two strings, sent in field order; either string may be null. For
 * discriminator 629 the receiver's record ends before `str2`, which must not be touched.
 */
typedef struct mdm_container_item {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    char *str1;
    char *str2; /**< Discriminator 628 only. */
    /** @} */
} mdm_container_item_t;

/**
 * Body of the container category.
 *
 * | `type`        | `data` points to                                                           |
 * |---------------|----------------------------------------------------------------------------|
 * | 628           | one ::mdm_container_item_t                                                 |
 * | 629           | one ::mdm_container_item_t that ends before `str2`                         |
 * | 630, 631, 632 | `data_size` raw bytes, which arrive as a new string with a terminator      |
 * | any other     | nothing: the head travels alone and the receiver's `data` stays as it was  |
 *
 * `data_size` is tested against zero: 0, or a null `data`, sends the head alone; a received 0
 * makes `data` null. The sender sets it to a non-zero value; for 628 and 629 sending stores the
 * payload's byte count in it. It must not be negative for raw bytes.
 *
 * ipc_free() releases the payload; for 628 and 629 `data` keeps its old value, so a message is
 * freed once.
 */
typedef struct mdm_container_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_container_info_t;

#endif
