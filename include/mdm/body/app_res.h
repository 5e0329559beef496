/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 14: lists of application policies.
 */
#ifndef MDM_BODY_APP_RES_H
#define MDM_BODY_APP_RES_H

#include "mdm/body/app_head.h"

/** A named number: `name` is sent first. */
typedef struct mdm_app_res_item {
    char *name; /**< An item without a name is counted and sized, but not sent: it arrives at the
                     list's end, as an item without name and value. */
    uint32_t value; /**< Its meaning is between server and clients. */
} mdm_app_res_item_t;

/** One client's package list. */
typedef struct mdm_app_control_info {
    int32_t client_id; /**< The client that the list belongs to. */
    GList *pkg_list;   /**< GList of strings (package names); null when empty. */
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
 * The codec never changes the sender's `data_size`. A value of 0 or less sends the head alone and
 * the receiver's `data` becomes null. A null element ends a list on the wire although the count
 * still counts it: do not send one, nor send on a received list with an empty name. Raw bytes
 * arrive as a new string with a terminator.
 *
 * ipc_free() releases `pkg` and, if `data_size` is 1 or more, the payload, with these exceptions:
 * the ::mdm_app_control_info_t records stay allocated, with their `pkg_list` released and nothing
 * that points at them; an item list's `data` keeps its old value; and when `data_size` is 1 or more
 * while `data` is null, nothing is released, `pkg` included. A received empty list is such a body:
 * its `pkg` stays with the owner of the message.
 *
 * The log, at level 1: ipc_serialize() logs the package names of a list. ipc_deserialize() logs
 * those of each ::mdm_app_control_info_t. Both, and ipc_free(), log the items. See mdm/ipc.h and
 * docs/security.md.
 */
typedef struct mdm_app_res_info {
    /** @{ One of the fields of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_res_info_t;

#endif
