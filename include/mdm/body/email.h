/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 39 and 40: mail accounts.
 */
#ifndef MDM_BODY_EMAIL_H
#define MDM_BODY_EMAIL_H

#include "mdm/body/head.h"

/**
 * A mail account; any string may be null. A list element carries every field in order. A single
 * account carries `num0`, `num1`, `num2`, `num4`, `num6`, `num3`, `num5` and `str13` to `str21`,
 * settings carry three strings; the other fields are zero after decoding.
 */
typedef struct mdm_email_account {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    uint32_t num1;
    uint32_t num2;
    uint32_t num3;
    uint32_t num4;
    uint32_t num5;
    uint32_t num6;
    uint32_t num7; /**< Travels in lists only, like the five fields that follow. */
    uint32_t num8;
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
    /** @} */
} mdm_email_account_t;

/** A number and a text, sent in this order; the text may be null. */
typedef struct mdm_email_value {
    /** @{ Its meaning is between server and clients. */
    uint32_t num0;
    char *str1;
    /** @} */
} mdm_email_value_t;

/**
 * Body of the e-mail category.
 *
 * | `type`    | `data` points to                                                                |
 * |-----------|---------------------------------------------------------------------------------|
 * | 359       | one ::mdm_email_account_t                                                       |
 * | 362       | one ::mdm_email_account_t of which `str16`, `str15`, `str14` travel, so ordered |
 * | 363       | GList of ::mdm_email_account_t                                                  |
 * | any other | one ::mdm_email_value_t                                                         |
 *
 * `data_size` is tested against zero: 0, or a null `data`, sends the head alone; a received 0
 * makes `data` null; any other value, negative ones included, means that a payload follows.
 * The sender sets it to a non-zero value; sending stores the computed size, which for a
 * list counts the whole body, head and count included. A list must not hold a null
 * element.
 *
 * ipc_free() releases the payload but leaves `data` and `data_size`, so a message is freed once.
 * Of a `type` 362 payload it releases the three strings and leaves the record allocated; of a
 * `type` 359 record it does not release `str9` to `str12`, which are null after decoding.
 */
typedef struct mdm_email_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_email_info_t;

#endif
