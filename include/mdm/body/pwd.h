/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 3 and 4: password policies.
 */
#ifndef MDM_BODY_PWD_H
#define MDM_BODY_PWD_H

#include "mdm/body/head.h"

/** The password policy of discriminator 40. The codec sends the fields in order. */
typedef struct mdm_pwd_policy {
    /** @{ Server and clients agree on its meaning. */
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
 * | `type`    | `data` points to         |
 * |-----------|--------------------------|
 * | 40        | one ::mdm_pwd_policy_t   |
 * | any other | `data_size` raw bytes    |
 *
 * The sender sets `data_size`. If it is below 1, or if `data` is null, the head travels alone
 * (Q-BODY-3). For `type` 40 any value of 1 or more sends the record, whose length follows from its
 * fields (Q-PWD-1). A received value below 1 leaves `data` as the record held it, so pass
 * ipc_deserialize() a zeroed record (Q-BODY-6).
 *
 * ipc_free() releases the payload. For `type` 40 `data` keeps its old value (Q-BODY-7).
 */
typedef struct mdm_pwd_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_pwd_info_t;

#endif
