/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 39 and 40: mail accounts.
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
 *     const mdm_email_account_t account = {
 *         .num0 = 1,
 *         .str13 = mdm_text("user@example.org"),
 *         .str21 = mdm_text("mail.example.org")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_email_set_account(&sent, &account)) {
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
 *     const mdm_email_account_t *opened = mdm_email_account(received);
 *     if (opened != NULL) {
 *         printf("%s at %s\n", opened->str13, opened->str21);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: user@example.org at mail.example.org
 * @endcode
 */
#ifndef MDM_BODY_EMAIL_H
#define MDM_BODY_EMAIL_H

#include "mdm/body/head.h"

/**
 * A mail account: nine numbers and thirteen strings. An element of a list carries every field. A
 * single account carries fewer fields, in another order (Q-EMAIL-1). Settings carry three strings,
 * from the last to the first (Q-EMAIL-2). Fields that do not travel are zero in the received
 * record.
 */
typedef struct mdm_email_account_t {
    uint32_t num0; /**< Account, list: 1st. */
    uint32_t num1; /**< Account, list: 2nd. */
    uint32_t num2; /**< Account, list: 3rd. */
    uint32_t num3; /**< Account: 6th. List: 4th. */
    uint32_t num4; /**< Account: 4th. List: 5th. */
    uint32_t num5; /**< Account: 7th. List: 6th. */
    uint32_t num6; /**< Account: 5th. List: 7th. */
    uint32_t num7; /**< List: 8th. */
    uint32_t num8; /**< List: 9th. */
    char *str9;    /**< List: 10th. */
    char *str10;   /**< List: 11th. */
    char *str11;   /**< List: 12th. */
    char *str12;   /**< List: 13th. */
    char *str13;   /**< Account: 8th. List: 14th. */
    char *str14;   /**< Account: 9th. List: 15th. Settings: 3rd. */
    char *str15;   /**< Account: 10th. List: 16th. Settings: 2nd. */
    char *str16;   /**< Account: 11th. List: 17th. Settings: 1st. */
    char *str17;   /**< Account: 12th. List: 18th. */
    char *str18;   /**< Account: 13th. List: 19th. */
    char *str19;   /**< Account: 14th. List: 20th. */
    char *str20;   /**< Account: 15th. List: 21st. */
    char *str21;   /**< Account: 16th. List: 22nd. */
} mdm_email_account_t;

/** A number and a text. */
typedef struct mdm_email_value_t {
    uint32_t num0; /**< 1st. */
    char *str1;    /**< 2nd. */
} mdm_email_value_t;

/**
 * Body of the e-mail category.
 *
 * | `type`    | constant             | `data` points to                                                   |
 * |-----------|----------------------|--------------------------------------------------------------------|
 * | 359       | `MDM_EMAIL_ACCOUNT`  | one ::mdm_email_account_t, a single account                        |
 * | 362       | `MDM_EMAIL_SETTINGS` | one ::mdm_email_account_t, settings                                |
 * | 363       | `MDM_EMAIL_ACCOUNTS` | GList of ::mdm_email_account_t, without a null element (Q-EMAIL-3) |
 * | any other |                      | one ::mdm_email_value_t                                            |
 *
 * `data_size` is compared with 0. If it is 0, or if `data` is null, the head travels alone
 * (Q-BODY-3). A received 0 makes `data` null. Any other value, even a negative one, announces a
 * payload (Q-BODY-2). The sender sets such a value. Sending stores the computed size: the size of
 * the payload, or for a list the size of the whole body, with the head and the count (Q-BODY-8).
 *
 * ipc_free() releases the payload. `data` and `data_size` keep their old values (Q-BODY-7). There
 * are two exceptions. For `type` 362 it releases the three strings and leaves the record allocated.
 * The owner of the message releases the record with g_free() (Q-EMAIL-4). For `type` 359 it does
 * not release `str9` to `str12`, which are null in a received record (Q-EMAIL-5).
 */
typedef struct mdm_email_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_email_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a mail account.
 * @param msg      the message.
 * @param account  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_email_set_account(mdm_msg_t *msg,
                                                      const mdm_email_account_t *account)
{
    return account != NULL && mdm_fill_head(msg, MDM_TYPE_EMAIL, MDM_EMAIL_ACCOUNT, account, 1);
}

/** @param msg  the message. @return Its mail account, or null. */
MDM_INLINE const mdm_email_account_t *mdm_email_account(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_email_account_t *, mdm_payload_unless_0(msg, MDM_FORM_EMAIL_ACCOUNT));
}

/**
 * Fills a message with three settings of an account.
 * @param msg       the message.
 * @param settings  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_email_set_settings(mdm_msg_t *msg,
                                                       const mdm_email_account_t *settings)
{
    return settings != NULL && mdm_fill_head(msg, MDM_TYPE_EMAIL, MDM_EMAIL_SETTINGS, settings, 1);
}

/** @param msg  the message. @return Its three settings of an account, or null. */
MDM_INLINE const mdm_email_account_t *mdm_email_settings(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_email_account_t *,
                    mdm_payload_unless_0(msg, MDM_FORM_EMAIL_SETTINGS));
}

/**
 * Fills a message with a list of accounts.
 * @param msg       the message.
 * @param accounts  the first cell of a list of ::mdm_email_account_t, none null; null is the empty
 *                  list, for which the head alone travels.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_email_set_accounts(mdm_msg_t *msg, const GList *accounts)
{
    return mdm_begins_list(accounts) && mdm_fill_head(msg, MDM_TYPE_EMAIL, MDM_EMAIL_ACCOUNTS,
                                                      accounts, accounts != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of accounts, or null. */
MDM_INLINE const GList *mdm_email_accounts(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload_unless_0(msg, MDM_FORM_EMAIL_ACCOUNTS));
}

/**
 * Fills a message with a number and a text.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param value  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_email_set_value(mdm_msg_t *msg, uint32_t type,
                                                    const mdm_email_value_t *value)
{
    return mdm_email_form(type) == MDM_FORM_EMAIL_VALUE && value != NULL &&
           mdm_fill_head(msg, MDM_TYPE_EMAIL, type, value, 1);
}

/** @param msg  the message. @return Its number and text, or null. */
MDM_INLINE const mdm_email_value_t *mdm_email_value(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_email_value_t *, mdm_payload_unless_0(msg, MDM_FORM_EMAIL_VALUE));
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_email_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_EMAIL, type, NULL, 0);
}

#endif
