/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 3 and 4: password policies.
 */
#ifndef MDM_BODY_PWD_H
#define MDM_BODY_PWD_H

#include "mdm/body/head.h"

/**
 * The password policy record of discriminator 40. Server and clients give the numbers and
 * strings their meaning; the codec sends them in field order. Either string may be null.
 */
typedef struct mdm_pwd_policy {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    uint32_t num1;
    uint32_t num2;
    uint32_t num3;
    uint32_t num4;
    uint32_t num5;
    uint32_t num6;
    uint32_t num7;
    uint32_t num8;
    char *str9;
    char *str10;
    /** @} */
} mdm_pwd_policy_t;

/**
 * Body of the password category.
 *
 * - `data`: for `type` 40 one ::mdm_pwd_policy_t; for every other `type` `data_size` raw bytes,
 *   which arrive as a new string with a terminator (a zero byte inside ends the text early).
 * - `data_size`: set by the sender. Below 1, or with a null `data`, the head travels alone. For
 *   `type` 40 any value of 1 or more switches the record on; its length on the wire follows from
 *   its fields, not from `data_size`.
 *
 * Receiving: a `data_size` below 1 leaves `data` as the record held it, so hand
 * ipc_deserialize() a zeroed record. ipc_free() releases the payload; for `type` 40 `data` keeps
 * pointing at the released record, so such a message is freed once.
 */
typedef struct mdm_pwd_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_pwd_info_t;

#endif
