/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 5 and 6: device-security policies.
 */
#ifndef MDM_BODY_SECURITY_H
#define MDM_BODY_SECURITY_H

#include "mdm/body/head.h"

/** The record of discriminators 56 and 76. */
typedef struct mdm_security_item {
    uint32_t num0;  /**< Sent first. */
    char *str1;     /**< Sent second. */
    uint32_t word2; /**< Never sent. Zero in a received record. */
    char *str3;     /**< Sent fourth, after `str4` (Q-SECURITY-1). */
    char *str4;     /**< Sent third. */
} mdm_security_item_t;

/**
 * One account of discriminators 70 and 71: four numbers and twenty-two strings, sent in the order
 * of the fields.
 */
typedef struct mdm_security_account {
    /** @{ Server and clients agree on its meaning. */
    uint32_t num0;
    uint32_t num1;
    uint32_t num2;
    uint32_t num3;
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
    char *str15;
    char *str16;
    char *str17;
    char *str18;
    char *str19;
    char *str20;
    char *str21;
    char *str22;
    char *str23;
    char *str24;
    char *str25;
    /** @} */
} mdm_security_account_t;

/**
 * Body of the security category.
 *
 * | `type`         | `data` points to                  | `data_size`                              |
 * |----------------|-----------------------------------|------------------------------------------|
 * | 56, 76         | one ::mdm_security_item_t         | sending stores the size of the payload   |
 * | 68, 69         | GList of strings                  | sending stores the size of the body      |
 * | 70, 71         | GList of ::mdm_security_account_t | sending stores the size of the body      |
 * | any other      | `data_size` raw bytes             | the sender sets it                       |
 *
 * - An item: `data_size` counts the payload alone. It is 0 for a null item, and the head travels
 *   alone (Q-SECURITY-5).
 * - A list: `data_size` counts the 12 bytes of the head and the 4 bytes of the count as well
 *   (Q-BODY-8). For a null list sending does not store `data_size`, which must be 0: a positive one
 *   would announce a list, but send none (Q-SECURITY-4). A list must not hold a null element. A
 *   list of strings ends there on the wire, although its count includes all elements (Q-BODY-12). A
 *   list of accounts with a null element cannot be sized (Q-BODY-9).
 * - Raw bytes: with a `data_size` of 0 the head travels alone. `data_size` must not be negative
 *   (Q-SECURITY-9).
 *
 * A received `data_size` below 1 leaves `data` as the record held it (Q-BODY-6). A received list of
 * strings has no empty strings: receiving leaves them out (Q-SECURITY-7).
 *
 * ipc_free() releases the payload. `data` of a list keeps its old value (Q-BODY-7). For every
 * string of a received list of strings, one more copy stays allocated, and no pointer to it is left
 * (Q-SECURITY-8).
 */
typedef struct mdm_security_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_security_info_t;

#endif
