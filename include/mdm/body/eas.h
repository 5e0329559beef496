/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 11 and 12: Exchange ActiveSync accounts.
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
 *     const mdm_eas_account_t account = {.num0 = 1,
 *                                        .str6 =
 *                                            mdm_text("user@example.org"),
 *                                        .str8 = mdm_text("user")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_eas_set_account(&sent, &account)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the account stays ours
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
 *     const mdm_eas_account_t *opened = mdm_eas_account(received);
 *     if (opened != NULL) {
 *         printf("%s, %s\n", opened->str6, opened->str8);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: user@example.org, user
 * @endcode
 */
#ifndef MDM_BODY_EAS_H
#define MDM_BODY_EAS_H

#include "mdm/body/head.h"

/**
 * An ActiveSync account: six numbers and nine strings. An account and an element of a list carry
 * every field. Settings carry three strings.
 */
typedef struct mdm_eas_account_t {
    uint32_t num0; /**< Account, list: 1st. */
    uint32_t num1; /**< Account, list: 2nd. */
    uint32_t num2; /**< Account, list: 3rd. */
    uint32_t num3; /**< Account, list: 4th. */
    uint32_t num4; /**< Account, list: 5th. */
    uint32_t num5; /**< Account, list: 6th. */
    char *str6;    /**< Account, list: 7th. */
    char *str7;    /**< Account, list: 8th. */
    char *str8;    /**< Account, list: 9th. Settings: 1st. */
    char *str9;    /**< Account, list: 10th. */
    char *str10;   /**< Account, list: 11th. Settings: 2nd. */
    char *str11;   /**< Account, list: 12th. */
    char *str12;   /**< Account, list: 13th. */
    char *str13;   /**< Account, list: 14th. Settings: 3rd. */
    char *str14;   /**< Account, list: 15th. */
} mdm_eas_account_t;

/** A number and a text. */
typedef struct mdm_eas_value_t {
    uint32_t num0; /**< 1st. */
    char *str1;    /**< 2nd. */
} mdm_eas_value_t;

/**
 * Body of the Exchange ActiveSync category.
 *
 * | `type`    | constant           | `data` points to                                                |
 * |-----------|--------------------|-----------------------------------------------------------------|
 * | 98        | `MDM_EAS_ACCOUNT`  | one ::mdm_eas_account_t, an account                             |
 * | 104       | `MDM_EAS_SETTINGS` | one ::mdm_eas_account_t, settings                               |
 * | 106       | `MDM_EAS_ACCOUNTS` | GList of ::mdm_eas_account_t, without a null element (Q-BODY-9) |
 * | any other |                    | one ::mdm_eas_value_t                                           |
 *
 * `data_size` is compared with 0. If it is 0, or if `data` is null, the head travels alone
 * (Q-BODY-3). A received 0 makes `data` null. Any other value, even a negative one, announces a
 * payload (Q-BODY-2). The sender sets such a value. Sending stores the computed size: the size of
 * the payload, or for a list the size of the whole body, with the head and the count (Q-BODY-8).
 *
 * For `type` 104 sending adds the size of the three strings to the sender's `data_size`, which must
 * be positive. As many zero bytes as `data_size` held before follow the strings on the wire. Each
 * further sending of the same body adds again, so set `data_size` anew each time (Q-EAS-1). The
 * fields that do not travel are zero in the received record.
 *
 * ipc_free() releases the payload. `data` and `data_size` keep their old values (Q-BODY-7).
 */
typedef struct mdm_eas_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_eas_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with an ActiveSync account.
 * @param msg      the message.
 * @param account  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_eas_set_account(mdm_msg_t *msg,
                                                    const mdm_eas_account_t *account)
{
    return account != NULL && mdm_fill_head(msg, MDM_TYPE_EAS, MDM_EAS_ACCOUNT, account, 1);
}

/** @param msg  the message. @return Its ActiveSync account, or null. */
MDM_INLINE const mdm_eas_account_t *mdm_eas_account(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_eas_account_t *, mdm_payload_unless_0(msg, MDM_FORM_EAS_ACCOUNT));
}

/**
 * Fills a message with three settings of an account.
 * @param msg       the message.
 * @param settings  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_eas_set_settings(mdm_msg_t *msg,
                                                     const mdm_eas_account_t *settings)
{
    return settings != NULL && mdm_fill_head(msg, MDM_TYPE_EAS, MDM_EAS_SETTINGS, settings, 1);
}

/** @param msg  the message. @return Its three settings of an account, or null. */
MDM_INLINE const mdm_eas_account_t *mdm_eas_settings(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_eas_account_t *, mdm_payload_unless_0(msg, MDM_FORM_EAS_SETTINGS));
}

/**
 * Fills a message with a list of accounts.
 * @param msg       the message.
 * @param accounts  the first cell of a list of ::mdm_eas_account_t, none null; null is the empty
 *                  list, for which the head alone travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_eas_set_accounts(mdm_msg_t *msg, const GList *accounts)
{
    return mdm_begins_list(accounts) &&
           mdm_fill_head(msg, MDM_TYPE_EAS, MDM_EAS_ACCOUNTS, accounts, accounts != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of accounts, or null. */
MDM_INLINE const GList *mdm_eas_accounts(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload_unless_0(msg, MDM_FORM_EAS_ACCOUNTS));
}

/**
 * Fills a message with a number and a text.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param value  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_eas_set_value(mdm_msg_t *msg, uint32_t type,
                                                  const mdm_eas_value_t *value)
{
    return mdm_eas_form(type) == MDM_FORM_EAS_VALUE && value != NULL &&
           mdm_fill_head(msg, MDM_TYPE_EAS, type, value, 1);
}

/** @param msg  the message. @return Its number and text, or null. */
MDM_INLINE const mdm_eas_value_t *mdm_eas_value(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_eas_value_t *, mdm_payload_unless_0(msg, MDM_FORM_EAS_VALUE));
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_eas_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_EAS, type, NULL, 0);
}

#endif
