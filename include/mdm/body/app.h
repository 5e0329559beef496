/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 13: application-management policies.
 */
#ifndef MDM_BODY_APP_H
#define MDM_BODY_APP_H

#include "mdm/body/app_head.h"

/** Two strings, sent in field order; either may be null. */
typedef struct mdm_app_pair {
    /** @{ Its meaning is between server and clients. */
    char *first;
    char *second;
    /** @} */
} mdm_app_pair_t;

/** Two numbers, sent in field order. */
typedef struct mdm_app_num_pair {
    /** @{ Its meaning is between server and clients. */
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
 * | 140, 141  | one ::mdm_app_num_pair_t; a sender sets `data_size` to 8                 |
 * | 184, 185  | one ::mdm_app_pair_t                                                     |
 * | any other | `data_size` raw bytes, which arrive as a new string with a terminator    |
 *
 * The codec never changes the sender's `data_size`. A value of 0 or less sends the head alone
 * and the receiver's `data` becomes null. A null element ends a package list on the wire although
 * the count still counts it: do not send one, nor send on a received list with an empty name. A
 * pair must not be missing while `data_size` is 1 or more. Of 140 and 141 the receiver reads 8
 * bytes, whatever `data_size` says.
 *
 * ipc_free() releases `pkg` always, and the payload whatever `data_size` says, except a package
 * list (4, 15), whose cells and strings stay with the owner of the message. For 184 and 185 `data`
 * keeps its old value.
 *
 * The log: ipc_serialize() and ipc_deserialize() log the package names of a list (4, 15) and both
 * texts of a pair (184, 185) at level 1; see mdm/ipc.h and docs/security.md.
 */
typedef struct mdm_app_info {
    /** @{ One of the fields of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_info_t;

#endif
