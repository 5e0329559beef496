/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 47 and 48: container policies.
 */
#ifndef MDM_BODY_CONTAINER_H
#define MDM_BODY_CONTAINER_H

#include "mdm/body/head.h"

/**
 * A number and up to two strings, sent in the order of the fields. For discriminator 629 the
 * receiver's record ends before `str2`: do not touch that field (Q-CONTAINER-1).
 */
typedef struct mdm_container_item {
    /** @{ Server and clients agree on its meaning. */
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
 * | 630, 631, 632 | `data_size` raw bytes                                                      |
 * | any other     | nothing: the head travels alone                                            |
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

#endif
