/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 14: lists of application policies.
 */
#ifndef MDM_BODY_APP_RES_H
#define MDM_BODY_APP_RES_H

#include "mdm/body/app_head.h"

/** A number with a name. `name` is sent first. */
typedef struct mdm_app_res_item {
    char *name; /**< Must not be null. The count and the size include an item without a name, but it
                     is not written: it arrives at the end of the list, with no name and the
                     value 0 (Q-APP_RES-1). */
    uint32_t value; /**< Server and clients agree on its meaning. */
} mdm_app_res_item_t;

/** One client's package list. */
typedef struct mdm_app_control_info {
    int32_t client_id; /**< The client that the list belongs to. */
    GList *pkg_list;   /**< GList of strings (package names); null if empty. */
} mdm_app_control_info_t;

/**
 * Body of the app_res category.
 *
 * | `type`                                            | `data` points to                       |
 * |---------------------------------------------------|----------------------------------------|
 * | 3, 155, 159, 162, 168, 169, 170, 171, 176, 177    | GList of strings (package names)       |
 * | 140, 141, 142                                     | GList of ::mdm_app_res_item_t          |
 * | 172, 173, 174, 175                                | GList of ::mdm_app_control_info_t      |
 * | any other                                         | `data_size` raw bytes                  |
 *
 * The sender sets `data_size`; the codec never changes it. A value below 1 sends the head alone,
 * and the receiver's `data` becomes null. For a list any value of 1 or more will do.
 *
 * A list must not hold a null element: the list on the wire ends there, although its count includes
 * all elements (Q-BODY-12). So do not send on a received list with an empty name.
 *
 * If `data_size` is below 1, ipc_free() releases `pkg` alone (Q-BODY-5). If it is 1 or more,
 * ipc_free() releases `pkg` and the payload, with these exceptions:
 *
 * - The ::mdm_app_control_info_t records stay allocated. Their package lists are released, and no
 *   pointer to the records is left (Q-APP_RES-5). To release the records, copy their pointers from
 *   the list before ipc_free(), and pass them to g_free() after it.
 * - `data` of an item list keeps its old value (Q-BODY-7).
 * - If `data` is null, ipc_free() releases nothing, not even `pkg` (Q-APP_RES-4). A received empty
 *   list is such a body: the owner of the message releases its `pkg`.
 *
 * The log, at level 1: ipc_serialize() logs the package names of a list. ipc_deserialize() logs the
 * package names of each ::mdm_app_control_info_t (Q-APP_RES-3). ipc_serialize(), ipc_deserialize()
 * and ipc_free() log the items.
 */
typedef struct mdm_app_res_info {
    /** @{ A field of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_res_info_t;

#endif
