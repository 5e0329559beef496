/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 13: application-management policies.
 */
#ifndef MDM_BODY_APP_H
#define MDM_BODY_APP_H

#include "mdm/body/app_head.h"

/** Two strings, sent in the order of the fields. */
typedef struct mdm_app_pair {
    /** @{ Server and clients agree on its meaning. */
    char *first;
    char *second;
    /** @} */
} mdm_app_pair_t;

/** Two numbers, sent in the order of the fields. */
typedef struct mdm_app_num_pair {
    /** @{ Server and clients agree on its meaning. */
    uint32_t num1;
    uint32_t num2;
    /** @} */
} mdm_app_num_pair_t;

/**
 * Body of the application category.
 *
 * | `type`    | `data` points to                                                         |
 * |-----------|--------------------------------------------------------------------------|
 * | 4, 15     | GList of strings (package names)                                         |
 * | 140, 141  | one ::mdm_app_num_pair_t; the sender sets `data_size` to 8               |
 * | 184, 185  | one ::mdm_app_pair_t                                                     |
 * | any other | `data_size` raw bytes                                                    |
 *
 * The sender sets `data_size`; the codec never changes it. A value below 1 sends the head alone,
 * and the receiver's `data` becomes null. With 1 or more, a pair must not be missing (Q-APP-2). For
 * a list and a pair (184, 185) any value of 1 or more will do. For 140 and 141 the receiver reads 8
 * bytes, whatever `data_size` says (Q-APP-1).
 *
 * A package list must not hold a null element: the list on the wire ends there, although its count
 * includes all elements (Q-BODY-12). So do not send on a received list with an empty name.
 *
 * ipc_free() always releases `pkg`. It releases the payload, whatever `data_size` says (Q-BODY-5),
 * except a package list (4, 15): the owner of the message releases its cells and strings, with
 * `g_list_free_full(data, g_free)` (Q-APP-4). For 184 and 185 `data` keeps its old value
 * (Q-BODY-7).
 *
 * The log: ipc_serialize() and ipc_deserialize() log the package names of a list (4, 15) and both
 * texts of a pair (184, 185) at level 1.
 */
typedef struct mdm_app_info {
    /** @{ A field of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_info_t;

#endif
