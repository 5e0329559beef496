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
 * | `type`                                            | `data` points to                  |
 * |---------------------------------------------------|-----------------------------------|
 * | 91, 220 to 225, 227, 230, 231, 233, 234, 235, 237 | GList of strings (device names)   |
 * | any other                                         | `data_size` raw bytes             |
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

#endif
