/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 21 and 22: access-point profiles for mobile data.
 */
#ifndef MDM_BODY_APN_H
#define MDM_BODY_APN_H

#include "mdm/body/head.h"

/** An access-point profile: two numbers and thirteen strings, sent in field order; any string
 * may be null. */
typedef struct mdm_apn_account {
    /** @{ Its meaning is between server and clients. */
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
 * - `data`: for `type` 387 and 393 one ::mdm_apn_account_t; for 389 to 391 a GList of them, none
 *   null; for every other `type` `data_size` raw bytes, which arrive as a new string with a
 *   terminator.
 * - `data_size`: 0, or a null `data`, sends the head alone; a received 0 makes `data` null. The
 *   sender sets it to a non-zero value, positive for raw bytes and a single profile. For a list,
 *   sending replaces it with the size of the whole body, head and count included. For a single
 *   profile, sending adds the profile's size to the value already there: as many zero bytes as it
 *   held before travel at the end, and each further serialisation of the same body grows it.
 *
 * ipc_free() releases the payload; for a profile or a list `data` keeps its old value, so a
 * message is freed once.
 *
 * The log: ipc_serialize() and ipc_deserialize() log `profile_name` of each profile of a list at
 * level 1; see mdm/ipc.h and docs/security.md.
 */
typedef struct mdm_apn_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_apn_info_t;

#endif
