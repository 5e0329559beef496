/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 7 and 8: Wi-Fi policies.
 */
#ifndef MDM_BODY_WIFI_H
#define MDM_BODY_WIFI_H

#include "mdm/body/head.h"

/** A setting of one network. */
typedef struct mdm_wifi_pair {
    char *ssid;  /**< Network name, sent first. */
    char *value; /**< The setting, sent second. */
} mdm_wifi_pair_t;

/** DHCP settings: five strings, sent in the order of the fields. */
typedef struct mdm_wifi_dhcp {
    /** @{ Server and clients agree on its meaning. */
    char *str0;
    char *str1;
    char *str2;
    char *str3;
    char *str4;
    /** @} */
} mdm_wifi_dhcp_t;

/** Three strings, sent in the order of the fields. */
typedef struct mdm_wifi_triple {
    /** @{ Server and clients agree on its meaning. */
    char *str0;
    char *str1;
    char *str2;
    /** @} */
} mdm_wifi_triple_t;

/** One word of a network's detail. The network's `detail_kind` says whether it is a string or a
 * number. */
typedef union mdm_wifi_word {
    /** @{ Server and clients agree on its meaning. */
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
    /** @{ Server and clients agree on its meaning. */
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
    char *ssid;          /**< Network name. */
    int32_t detail_kind; /**< Selects the fields of `detail`, from 1 to 9. For any other number
                                    no detail travels. */
    mdm_wifi_detail_t *detail; /**< A sender must not pass null for the kinds 2 to 7. For 1, 8 and 9
                                    a null detail arrives as the number 0 (Q-WIFI-2). In a received
                                    message it is null if `detail_kind` is outside 1 to 9. */
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
 * The sender sets `data_size`; sending never stores it. A value below 1 sends the head alone, and
 * the receiver's `data` becomes null. For a list and a network any value of 1 or more will do. With
 * 1 or more, a record must not be missing (Q-WIFI-3), and a list must not hold a null element
 * (Q-BODY-10).
 *
 * Behind the strings of a pair, of DHCP settings or of a triple, `data_size` zero bytes travel
 * (Q-WIFI-1). A small value is enough: 1 makes the record travel.
 *
 * ipc_free() releases the payload and sets `data` to null. It sets `data_size` to 0, except for raw
 * bytes (Q-WIFI-6). A network is different: ipc_free() releases `ssid`, and for the kinds 2 to 7
 * the detail and its strings. The ::mdm_wifi_network_t stays allocated, and so does the detail of
 * the kinds 1, 8 and 9 (Q-WIFI-4). `ssid`, `detail`, `data` and `data_size` keep their old values.
 * The owner of the message releases the remaining blocks with g_free(), the detail first.
 *
 * The log, at level 1: ipc_serialize(), ipc_deserialize() and ipc_free() log both texts of an
 * ::mdm_wifi_pair_t. Its value may be a secret, like a pre-shared key. ipc_serialize() and
 * ipc_deserialize() log the names of a list (Q-BODY-14).
 */
typedef struct mdm_wifi_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_wifi_info_t;

#endif
