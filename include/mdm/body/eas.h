/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 11 and 12: Exchange ActiveSync accounts.
 */
#ifndef MDM_BODY_EAS_H
#define MDM_BODY_EAS_H

#include "mdm/body/head.h"

/** An ActiveSync account: six numbers and nine strings, sent in field order; any string may be
 * null. */
typedef struct mdm_eas_account {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    uint32_t num1;
    uint32_t num2;
    uint32_t num3;
    uint32_t num4;
    uint32_t num5;
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
} mdm_eas_account_t;

/** A number and a text, sent in this order; the text may be null. */
typedef struct mdm_eas_value {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    char *str1;
    /** @} */
} mdm_eas_value_t;

/**
 * Body of the Exchange ActiveSync category.
 *
 * | `type`    | `data` points to                                                                |
 * |-----------|---------------------------------------------------------------------------------|
 * | 98        | one ::mdm_eas_account_t                                                         |
 * | 104       | one ::mdm_eas_account_t of which `str8`, `str10` and `str13` travel             |
 * | 106       | GList of ::mdm_eas_account_t, none null                                         |
 * | any other | one ::mdm_eas_value_t                                                           |
 *
 * `data_size` is tested against zero: 0, or a null `data`, sends the head alone; a received 0
 * makes `data` null; any other value, negative ones included, means that a payload follows.
 * The sender sets it to a non-zero value; sending stores the computed size, which for a
 * list counts the whole body, head and count included. For `type` 104 the three string sizes are
 * added to the value already there, which must be positive: each further serialisation of the same
 * body grows it, and as many zero bytes as it held before travel at the end. Its fields that do not
 * travel are zero after decoding.
 *
 * ipc_free() releases the payload but leaves `data` and `data_size`, so a message is freed once.
 */
typedef struct mdm_eas_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_eas_info_t;

#endif
