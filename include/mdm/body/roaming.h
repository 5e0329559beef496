/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 15 (roaming) and 16 (roaming_res).
 */
#ifndef MDM_BODY_ROAMING_H
#define MDM_BODY_ROAMING_H

#include "mdm/body/head.h"

/** The record of a roaming policy: one string, which may be null. */
typedef struct mdm_roaming_data {
    char *name; /**< Its meaning is between server and clients. */
} mdm_roaming_data_t;

/**
 * Body of the roaming category.
 *
 * - `data`: one ::mdm_roaming_data_t; must not be null on sending. A received message always has
 *   a new record.
 * - `data_size`: the caller's, sent as it stands; the codec derives nothing from it.
 *
 * ipc_free() releases `name` and sets it to null; the record itself stays allocated, and `data`
 * keeps pointing at it: the owner of the message releases it with g_free().
 */
typedef struct mdm_roaming_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_info_t;

/**
 * Body of the roaming_res category: the head alone. `data_size` is sent as it stands.
 *
 * `data` is neither sent nor read, but ipc_free() follows it as if it pointed at a
 * ::mdm_roaming_data_t, and releases that one's `name`: hand ipc_deserialize() a record in which it
 * is null.
 */
typedef struct mdm_roaming_res_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_res_info_t;

#endif
