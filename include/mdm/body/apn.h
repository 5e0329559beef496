/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 21 and 22: access-point profiles for mobile data.
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
 *     const mdm_apn_account_t profile = {
 *         .num0 = 1,
 *         .profile_name = mdm_text("internet"),
 *         .str3 = mdm_text("apn.example.org"),
 *     };
 *     mdm_msg_t sent = {0};
 *     if (!mdm_apn_set_profile(&sent, MDM_APN_PROFILE_387, &profile)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the profile stays ours
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
 *     const mdm_apn_account_t *opened = mdm_apn_profile(received);
 *     if (opened != NULL) {
 *         printf("%s: %s\n", opened->profile_name, opened->str3);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: internet: apn.example.org
 * @endcode
 */
#ifndef MDM_BODY_APN_H
#define MDM_BODY_APN_H

#include "mdm/body/head.h"

/** An access-point profile: two numbers and thirteen strings. */
typedef struct mdm_apn_account_t {
    uint32_t num0;      /**< 1st. */
    uint32_t num1;      /**< 2nd. */
    char *profile_name; /**< 3rd. */
    char *str3;         /**< 4th. */
    char *str4;         /**< 5th. */
    char *str5;         /**< 6th. */
    char *str6;         /**< 7th. */
    char *str7;         /**< 8th. */
    char *str8;         /**< 9th. */
    char *str9;         /**< 10th. */
    char *str10;        /**< 11th. */
    char *str11;        /**< 12th. */
    char *str12;        /**< 13th. */
    char *str13;        /**< 14th. */
    char *str14;        /**< 15th. */
} mdm_apn_account_t;

/**
 * Body of the APN category.
 *
 * | `type`        | constants            | `data` points to             |
 * |---------------|----------------------|------------------------------|
 * | 387, 393      | `MDM_APN_PROFILE_*`  | one ::mdm_apn_account_t      |
 * | 389, 390, 391 | `MDM_APN_PROFILES_*` | GList of ::mdm_apn_account_t |
 * | any other     |                      | `data_size` raw bytes        |
 *
 * `data_size` is compared with 0 (Q-BODY-2). If it is 0, or if `data` is null, the head travels
 * alone (Q-BODY-3). A received 0 makes `data` null. The sender sets another value, which must be
 * positive for raw bytes (Q-BODY-4) and for a single profile.
 *
 * - For a list, sending stores the size of the whole body, with the head and the count (Q-BODY-8).
 *   A list must not hold a null element (Q-BODY-9).
 * - For a single profile, sending adds the profile's size to the sender's `data_size`. As many zero
 *   bytes as `data_size` held before follow the profile on the wire. Each further sending of the
 *   same body adds again, so set `data_size` anew each time (Q-APN-1).
 *
 * ipc_free() releases the payload. For a profile or a list `data` keeps its old value (Q-BODY-7).
 *
 * The log: ipc_serialize() and ipc_deserialize() log `profile_name` of each profile of a list at
 * level 1 (Q-APN-2).
 */
typedef struct mdm_apn_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_apn_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with an access-point profile.
 * @param msg      the message.
 * @param type     #MDM_APN_PROFILE_387 or another discriminator of this form.
 * @param profile  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_apn_set_profile(mdm_msg_t *msg, uint32_t type,
                                                    const mdm_apn_account_t *profile)
{
    return mdm_apn_form(type) == MDM_FORM_APN_PROFILE && profile != NULL &&
           mdm_fill_head(msg, MDM_TYPE_APN, type, profile, 1);
}

/** @param msg  the message. @return Its access-point profile, or null. */
MDM_INLINE const mdm_apn_account_t *mdm_apn_profile(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_apn_account_t *, mdm_payload_unless_0(msg, MDM_FORM_APN_PROFILE));
}

/**
 * Fills a message with a list of access-point profiles.
 * @param msg       the message.
 * @param type      #MDM_APN_PROFILES_389 or another discriminator of this form.
 * @param profiles  the first cell of a list of ::mdm_apn_account_t, none null; null is the empty
 *                  list, for which the head alone travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_apn_set_profiles(mdm_msg_t *msg, uint32_t type,
                                                     const GList *profiles)
{
    return mdm_apn_form(type) == MDM_FORM_APN_PROFILES && mdm_begins_list(profiles) &&
           mdm_fill_head(msg, MDM_TYPE_APN, type, profiles, profiles != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of access-point profiles, or null. */
MDM_INLINE const GList *mdm_apn_profiles(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload_unless_0(msg, MDM_FORM_APN_PROFILES));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_apn_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                 size_t size)
{
    return mdm_apn_form(type) == MDM_FORM_APN_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_APN, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_apn_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_APN_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_apn_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_APN, type, NULL, 0);
}

#endif
