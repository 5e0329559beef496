/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 21 and 22: access-point profiles for mobile data.
 */
#ifndef MDM_BODY_APN_H
#define MDM_BODY_APN_H

#include "mdm/body/head.h"

/** An access-point profile: two numbers and thirteen strings, sent in the order of the fields. */
typedef struct mdm_apn_account {
    /** @{ Server and clients agree on its meaning. */
    uint32_t num0;
    uint32_t num1;
    char *profile_name;
    char *str3;
    char *str4;
    char *str5;
    char *str6;
    char *str7;
    char *str8;
    char *str9;
    char *str10;
    char *str11;
    char *str12;
    char *str13;
    char *str14;
    /** @} */
} mdm_apn_account_t;

/**
 * Body of the APN category.
 *
 * | `type`        | `data` points to                   |
 * |---------------|------------------------------------|
 * | 387, 393      | one ::mdm_apn_account_t            |
 * | 389, 390, 391 | GList of ::mdm_apn_account_t       |
 * | any other     | `data_size` raw bytes              |
 *
 * `data_size` is compared with 0 (Q-BODY-2). If it is 0, or if `data` is null, the head travels
 * alone (Q-BODY-3). A received 0 makes `data` null. The sender sets another value, which must be
 * positive for raw bytes (Q-BODY-4) and for a single profile.
 *
 * - For a list, sending stores the size of the whole body, with the head and the count (Q-BODY-8).
 *   A list must not hold a null element (Q-BODY-9).
 * - For a single profile, sending adds the profile's size to the sender's `data_size`. As many zero
 *   bytes as `data_size` held before follow the profile on the wire. Each further sending of the
 *   same body adds again, so set `data_size` anew each time (Q-APN-1).
 *
 * ipc_free() releases the payload. For a profile or a list `data` keeps its old value (Q-BODY-7).
 *
 * The log: ipc_serialize() and ipc_deserialize() log `profile_name` of each profile of a list at
 * level 1 (Q-APN-2).
 */
typedef struct mdm_apn_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_apn_info_t;

#endif
