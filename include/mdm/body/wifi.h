/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 7 and 8: Wi-Fi policies.
 *
 * The text of a field begins with its position on the wire, within its record. Server and clients
 * agree on the meaning of the fields.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     mdm_wifi_detail_t detail = {.w0 = {.number = 42}};
 *     const mdm_wifi_network_t network = {
 *         .ssid = mdm_text("office"), .detail_kind = 8, .detail = &detail};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_wifi_set_network(&sent, &network)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the network stays ours
 *     uint8_t *bytes = ipc_seal(&sent, &length, NULL);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     const mdm_wifi_network_t *opened = mdm_wifi_network(received);
 *     if (opened != NULL) {
 *         printf("%s, kind %d\n", opened->ssid, opened->detail_kind);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: office, kind 8
 * @endcode
 */
#ifndef MDM_BODY_WIFI_H
#define MDM_BODY_WIFI_H

#include "mdm/body/head.h"

/** A setting of one network. */
typedef struct mdm_wifi_pair_t {
    char *ssid;  /**< 1st. The name of the network. */
    char *value; /**< 2nd. The setting. */
} mdm_wifi_pair_t;

/** DHCP settings: five strings. */
typedef struct mdm_wifi_dhcp_t {
    char *str0; /**< 1st. */
    char *str1; /**< 2nd. */
    char *str2; /**< 3rd. */
    char *str3; /**< 4th. */
    char *str4; /**< 5th. */
} mdm_wifi_dhcp_t;

/** Three strings. */
typedef struct mdm_wifi_triple_t {
    char *str0; /**< 1st. */
    char *str1; /**< 2nd. */
    char *str2; /**< 3rd. */
} mdm_wifi_triple_t;

/** One word of a network's detail. The network's `detail_kind` says whether it is a string or a
 * number. */
typedef union mdm_wifi_word_t {
    char *text;      /**< If the word is a string. */
    uint32_t number; /**< If the word is a number. */
} mdm_wifi_word_t;

/**
 * The detail of a network, by ::mdm_wifi_network_t::detail_kind:
 *
 * | kind    | fields used, in wire order                                |
 * |---------|-----------------------------------------------------------|
 * | 1, 8, 9 | `w0` number                                               |
 * | 2, 3, 4 | `w0` string                                               |
 * | 5, 7    | `w0`, `w1`, `w2` strings; `w3` number; `w4`, `w5` strings |
 * | 6       | `w0` to `w6` strings                                      |
 */
typedef struct mdm_wifi_detail_t {
    mdm_wifi_word_t w0; /**< 1st. */
    mdm_wifi_word_t w1; /**< 2nd. Kinds 5, 6 and 7. */
    mdm_wifi_word_t w2; /**< 3rd. Kinds 5, 6 and 7. */
    mdm_wifi_word_t w3; /**< 4th. Kinds 5, 6 and 7. */
    mdm_wifi_word_t w4; /**< 5th. Kinds 5, 6 and 7. */
    mdm_wifi_word_t w5; /**< 6th. Kinds 5, 6 and 7. */
    mdm_wifi_word_t w6; /**< 7th. Kind 6. */
} mdm_wifi_detail_t;

/** A network profile. */
typedef struct mdm_wifi_network_t {
    char *ssid;                /**< 1st. The name of the network. */
    int32_t detail_kind;       /**< 2nd. Selects the fields of `detail`, from 1 to 9. For any other
                                    number no detail travels. */
    mdm_wifi_detail_t *detail; /**< 3rd. A sender must not pass null for the kinds 2 to 7. For 1, 8
                                    and 9 a null detail arrives as the number 0 (Q-WIFI-2). A
                                    received one is null if `detail_kind` is outside 1 to 9. */
} mdm_wifi_network_t;

/**
 * Body of the Wi-Fi category.
 *
 * | `type`                                                          | constants          | `data` points to         |
 * |-----------------------------------------------------------------|--------------------|--------------------------|
 * | 305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339 | `MDM_WIFI_PAIR_*`  | one ::mdm_wifi_pair_t    |
 * | 290, 344, 346, 348, 349, 350, 352                               | `MDM_WIFI_SSIDS_*` | GList of strings (SSIDs) |
 * | 88                                                              | `MDM_WIFI_DHCP`    | one ::mdm_wifi_dhcp_t    |
 * | 319                                                             | `MDM_WIFI_TRIPLE`  | one ::mdm_wifi_triple_t  |
 * | 345                                                             | `MDM_WIFI_NETWORK` | one ::mdm_wifi_network_t |
 * | any other                                                       |                    | `data_size` raw bytes    |
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

/** The forms of a network's detail. */
typedef enum mdm_wifi_detail_form {
    MDM_WIFI_DETAIL_NONE,   /**< No detail. Every kind but 1 to 9. */
    MDM_WIFI_DETAIL_NUMBER, /**< `w0` is a number. Kinds 1, 8, 9. */
    MDM_WIFI_DETAIL_TEXT,   /**< `w0` is a string. Kinds 2, 3, 4. */
    MDM_WIFI_DETAIL_MIXED,  /**< `w3` is a number; `w0`, `w1`, `w2`, `w4`, `w5` are strings. Kinds
                                 5, 7. */
    MDM_WIFI_DETAIL_TEXTS,  /**< `w0` to `w6` are strings. Kind 6. */
} mdm_wifi_detail_form_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * @param kind  a `detail_kind`.
 * @return Which words of the detail travel, and whether they are strings or numbers.
 */
MDM_INLINE mdm_wifi_detail_form_t mdm_wifi_detail_form(int32_t kind)
{
    switch (kind) {
    case 1:
    case 8:
    case 9:
        return MDM_WIFI_DETAIL_NUMBER;
    case 2:
    case 3:
    case 4:
        return MDM_WIFI_DETAIL_TEXT;
    case 5:
    case 7:
        return MDM_WIFI_DETAIL_MIXED;
    case 6:
        return MDM_WIFI_DETAIL_TEXTS;
    default:
        return MDM_WIFI_DETAIL_NONE;
    }
}

/**
 * @param kind  a `detail_kind`.
 * @return Whether the detail has strings. Such a detail must not be null in a network that is sent.
 */
MDM_INLINE bool mdm_wifi_detail_has_texts(int32_t kind)
{
    const mdm_wifi_detail_form_t form = mdm_wifi_detail_form(kind);
    return form != MDM_WIFI_DETAIL_NONE && form != MDM_WIFI_DETAIL_NUMBER;
}

/**
 * Fills a message with a setting of a network.
 * @param msg   the message.
 * @param type  #MDM_WIFI_PAIR_305 or another discriminator of this form.
 * @param pair  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_pair(mdm_msg_t *msg, uint32_t type,
                                                  const mdm_wifi_pair_t *pair)
{
    return mdm_wifi_form(type) == MDM_FORM_WIFI_PAIR && pair != NULL &&
           mdm_fill_head(msg, MDM_TYPE_WIFI, type, pair, 1);
}

/** @param msg  the message. @return Its setting of a network, or null. */
MDM_INLINE const mdm_wifi_pair_t *mdm_wifi_pair(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_wifi_pair_t *, mdm_payload(msg, MDM_FORM_WIFI_PAIR));
}

/**
 * Fills a message with a list of names of networks.
 * @param msg    the message.
 * @param type   #MDM_WIFI_SSIDS_290 or another discriminator of this form.
 * @param ssids  the first cell of a list of strings, none null; null is the empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_ssids(mdm_msg_t *msg, uint32_t type,
                                                   const GList *ssids)
{
    return mdm_wifi_form(type) == MDM_FORM_WIFI_SSIDS && mdm_begins_list(ssids) &&
           mdm_fill_head(msg, MDM_TYPE_WIFI, type, ssids, 1);
}

/** @param msg  the message. @return Its list of names of networks, or null. */
MDM_INLINE const GList *mdm_wifi_ssids(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload(msg, MDM_FORM_WIFI_SSIDS));
}

/**
 * Fills a message with DHCP settings.
 * @param msg   the message.
 * @param dhcp  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_dhcp(mdm_msg_t *msg, const mdm_wifi_dhcp_t *dhcp)
{
    return dhcp != NULL && mdm_fill_head(msg, MDM_TYPE_WIFI, MDM_WIFI_DHCP, dhcp, 1);
}

/** @param msg  the message. @return Its DHCP settings, or null. */
MDM_INLINE const mdm_wifi_dhcp_t *mdm_wifi_dhcp(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_wifi_dhcp_t *, mdm_payload(msg, MDM_FORM_WIFI_DHCP));
}

/**
 * Fills a message with three strings.
 * @param msg     the message.
 * @param triple  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_triple(mdm_msg_t *msg, const mdm_wifi_triple_t *triple)
{
    return triple != NULL && mdm_fill_head(msg, MDM_TYPE_WIFI, MDM_WIFI_TRIPLE, triple, 1);
}

/** @param msg  the message. @return Its three strings, or null. */
MDM_INLINE const mdm_wifi_triple_t *mdm_wifi_triple(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_wifi_triple_t *, mdm_payload(msg, MDM_FORM_WIFI_TRIPLE));
}

/**
 * Fills a message with a network profile.
 * @param msg      the message.
 * @param network  the record; null is refused, and so is a null detail of the kinds 2 to 7.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_network(mdm_msg_t *msg,
                                                     const mdm_wifi_network_t *network)
{
    return network != NULL &&
           (network->detail != NULL || !mdm_wifi_detail_has_texts(network->detail_kind)) &&
           mdm_fill_head(msg, MDM_TYPE_WIFI, MDM_WIFI_NETWORK, network, 1);
}

/** @param msg  the message. @return Its network profile, or null. */
MDM_INLINE const mdm_wifi_network_t *mdm_wifi_network(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_wifi_network_t *, mdm_payload(msg, MDM_FORM_WIFI_NETWORK));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_wifi_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                  size_t size)
{
    return mdm_wifi_form(type) == MDM_FORM_WIFI_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_WIFI, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_wifi_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_WIFI_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_wifi_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_WIFI, type, NULL, 0);
}

#endif
