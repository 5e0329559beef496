/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 15 (roaming) and 16 (roaming_res).
 */
#ifndef MDM_BODY_ROAMING_H
#define MDM_BODY_ROAMING_H

#include "mdm/body/head.h"

/** The record of a roaming policy: one string. */
typedef struct mdm_roaming_data {
    char *name; /**< Server and clients agree on its meaning. */
} mdm_roaming_data_t;

/**
 * Body of the roaming category.
 *
 * - `data`: one ::mdm_roaming_data_t. A sender must not pass null (Q-ROAMING-2). A received message
 *   always has a new record.
 * - `data_size`: the caller's number, sent unchanged. The codec derives nothing from it
 *   (Q-ROAMING-1).
 *
 * ipc_free() releases `name` and sets it to null. The record stays allocated, and `data` keeps
 * pointing to it: the owner of the message releases it with g_free() (Q-ROAMING-3).
 */
typedef struct mdm_roaming_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_info_t;

/**
 * Body of the roaming_res category: the head alone. `data_size` is sent unchanged.
 *
 * `data` neither travels nor changes (Q-ROAMING-5). But ipc_free() takes it for a pointer to an
 * ::mdm_roaming_data_t and releases its `name` (Q-ROAMING-4). So pass ipc_deserialize() a record
 * whose `data` is null.
 */
typedef struct mdm_roaming_res_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_res_info_t;

#endif
