/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 7 and 8: Wi-Fi policies.
 */
#ifndef MDM_BODY_WIFI_H
#define MDM_BODY_WIFI_H

#include "mdm/body/head.h"

/** A setting of one network. Either string may be null. */
typedef struct mdm_wifi_pair {
    char *ssid;  /**< Network name, sent first. */
    char *value; /**< The setting, sent second. */
} mdm_wifi_pair_t;

/** DHCP settings: five strings, sent in field order; any may be null. */
typedef struct mdm_wifi_dhcp {
    /** @{ Its meaning is between server and clients. */
    char *str0;
    char *str1;
    char *str2;
    char *str3;
    char *str4;
    /** @} */
} mdm_wifi_dhcp_t;

/** Three strings, sent in field order; any may be null. */
typedef struct mdm_wifi_triple {
    /** @{ Its meaning is between server and clients. */
    char *str0;
    char *str1;
    char *str2;
    /** @} */
} mdm_wifi_triple_t;

/** One word of a network's detail: a string or a number, by the network's `detail_kind`. */
typedef union mdm_wifi_word {
    /** @{ Its meaning is between server and clients. */
    char *text;
    uint32_t number;
    /** @} */
} mdm_wifi_word_t;

/**
 * The detail of a network, by ::mdm_wifi_network_t::detail_kind:
 *
 * | kind    | fields used, in wire order                                    |
 * |---------|---------------------------------------------------------------|
 * | 1, 8, 9 | `w0` number                                                   |
 * | 2, 3, 4 | `w0` string                                                   |
 * | 5, 7    | `w0`, `w1`, `w2` strings; `w3` number; `w4`, `w5` strings     |
 * | 6       | `w0` to `w6` strings                                          |
 */
typedef struct mdm_wifi_detail {
    /** @{ Its meaning is between server and clients. */
    mdm_wifi_word_t w0;
    mdm_wifi_word_t w1;
    mdm_wifi_word_t w2;
    mdm_wifi_word_t w3;
    mdm_wifi_word_t w4;
    mdm_wifi_word_t w5;
    mdm_wifi_word_t w6;
    /** @} */
} mdm_wifi_detail_t;

/** A network profile. */
typedef struct mdm_wifi_network {
    char *ssid;                /**< Network name; may be null. */
    int32_t detail_kind;       /**< Layout of `detail`: 1 to 9; no detail travels otherwise. */
    mdm_wifi_detail_t *detail; /**< Must not be null on sending for kinds 2 to 7; for 1, 8 and 9 a
                                    null one arrives as the number 0. Null after decoding when
                                    `detail_kind` is outside 1 to 9. */
} mdm_wifi_network_t;

/**
 * Body of the Wi-Fi category.
 *
 * | `type`                                                           | `data` points to         |
 * |------------------------------------------------------------------|--------------------------|
 * | 305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339  | one ::mdm_wifi_pair_t    |
 * | 290, 344, 346, 348, 349, 350, 352                                | GList of strings (SSIDs) |
 * | 88                                                               | one ::mdm_wifi_dhcp_t    |
 * | 319                                                              | one ::mdm_wifi_triple_t  |
 * | 345                                                              | one ::mdm_wifi_network_t |
 * | any other                                                        | `data_size` raw bytes    |
 *
 * `data_size` is the sender's, and sending never stores it: below 1 the head travels alone and
 * the receiver's `data` becomes null. For the pair, DHCP and triple records `data_size` zero
 * bytes follow the record's strings on the wire. Records must not be missing, and an SSID list
 * must not hold a null element, while `data_size` is 1 or more. Raw bytes arrive as a new string
 * with a terminator.
 *
 * ipc_free() releases the payload and sets `data` to null, and `data_size` to 0 unless it was raw
 * bytes. The exception is a network profile: only `ssid`, the strings of `detail` and the detail
 * records of kinds 2 to 7 are released; `ssid`, `detail`, `data` and `data_size` keep their old
 * values. The ::mdm_wifi_network_t itself and the detail of kinds 1, 8 and 9 stay allocated, and
 * such a message is freed once.
 *
 * The log, at level 1: ipc_serialize(), ipc_deserialize() and ipc_free() log both texts of an
 * ::mdm_wifi_pair_t, and its value may be a secret, like a pre-shared key; ipc_serialize() and
 * ipc_deserialize() log the names of a list. mdm/ipc.h says how to silence these lines, and
 * docs/security.md lists them.
 */
typedef struct mdm_wifi_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_wifi_info_t;

#endif
