/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 5 and 6: device-security policies.
 */
#ifndef MDM_BODY_SECURITY_H
#define MDM_BODY_SECURITY_H

#include "mdm/body/head.h"

/** The record of discriminators 56 and 76. Any string may be null. */
typedef struct mdm_security_item {
    uint32_t num0;  /**< Sent first. */
    char *str1;     /**< Sent second. */
    uint32_t word2; /**< Never sent; zero after decoding. */
    char *str3;     /**< Sent fourth, after `str4`. */
    char *str4;     /**< Sent third. */
} mdm_security_item_t;

/**
 * One account of discriminators 70 and 71: four numbers and twenty-two strings, sent in field
 * order. Any string may be null.
 */
typedef struct mdm_security_account {
    /** @{ Its meaning is between server and clients. */
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
 * | `type`         | `data` points to                        | `data_size`                     |
 * |----------------|-----------------------------------------|---------------------------------|
 * | 56, 76         | one ::mdm_security_item_t               | stored on sending: payload size |
 * | 68, 69         | GList of strings                        | stored on sending: body size    |
 * | 70, 71         | GList of ::mdm_security_account_t       | stored on sending: body size    |
 * | any other      | `data_size` raw bytes                   | set by the sender               |
 *
 * A list's stored `data_size` counts the 12 bytes of the head and the 4 of the count as well; an
 * item's counts the payload alone, and a null item's is 0. An empty list is a null `data`; its
 * `data_size` is not touched and must be 0 (a positive one announces a list, but sends none). Raw
 * bytes with a `data_size` of 0 send the head alone; it must not be negative. A list must not hold
 * a null element: strings end there although all are counted, and accounts cannot be sized.
 *
 * Receiving: a `data_size` of 0 or less leaves `data` as the record held it. Empty strings of a
 * string list are not appended. Raw bytes arrive as a new string with a terminator.
 *
 * ipc_free() releases the payload; `data` keeps pointing at a released list, so a message of a
 * list discriminator is freed once. For every string of a received string list one more copy
 * stays allocated, which nothing points at.
 */
typedef struct mdm_security_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_security_info_t;

#endif
