/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 9 and 10: Bluetooth policies.
 */
#ifndef MDM_BODY_BLUETOOTH_H
#define MDM_BODY_BLUETOOTH_H

#include "mdm/body/head.h"

/**
 * Body of the Bluetooth category.
 *
 * - `data`: for `type` 91, 220 to 225, 227, 230, 231, 233, 234, 235 and 237 a GList of strings,
 *   each a device name, none null; for every other `type` `data_size` raw bytes, which arrive as
 *   a new string with a terminator.
 * - `data_size`: set by the sender; sending never stores it. Below 1 the head travels alone and
 *   the receiver's `data` stays as its record held it.
 *
 * ipc_free() releases the lists of `type` 91, 223, 227, 233 and 237 only, and sets `data` to null
 * and `data_size` to 0 (an empty list keeps its `data_size`). For every other value it sets
 * `data_size` to 0 and leaves `data`, which the owner of the message then releases.
 *
 * The log: ipc_serialize() and ipc_deserialize() log the names of a list at level 1; see mdm/ipc.h
 * and docs/security.md.
 */
typedef struct mdm_bluetooth_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_bluetooth_info_t;

#endif
