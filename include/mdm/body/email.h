/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 39 and 40: mail accounts.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     const mdm_email_account_t account = {
 *         .num0 = 1, .str13 = mdm_text("user@example.org"), .str21 = mdm_text("mail.example.org")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_email_set_account(&sent, &account)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     uint8_t *bytes = ipc_seal(&sent, &length, NULL);  // the account stays ours
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
 * A mail account.
 *
 * - An element of a list carries every field, in order.
 * - A single account carries `num0`, `num1`, `num2`, `num4`, `num6`, `num3`, `num5` and `str13` to
 *   `str21`, in this order (Q-EMAIL-1).
 * - Settings carry `str16`, `str15` and `str14`, in this order (Q-EMAIL-2).
 *
 * Fields that do not travel are zero in the received record.
 */
typedef struct mdm_email_account_t {
    /** @{ Server and clients agree on its meaning. */
    uint32_t num0;
    uint32_t num1;
    uint32_t num2;
    uint32_t num3;
    uint32_t num4;
    uint32_t num5;
    uint32_t num6;
    uint32_t num7; /**< Only travels in lists, like the next five fields. */
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

/** A number and a text, sent in this order. */
typedef struct mdm_email_value_t {
    /** @{ Server and clients agree on its meaning. */
    uint32_t num0;
    char *str1;
    /** @} */
} mdm_email_value_t;

/**
 * Body of the e-mail category.
 *
 * | `type`    | `data` points to                                                                |
 * |-----------|---------------------------------------------------------------------------------|
 * | 359       | one ::mdm_email_account_t, a single account                                     |
 * | 362       | one ::mdm_email_account_t, settings                                             |
 * | 363       | GList of ::mdm_email_account_t, without a null element (Q-EMAIL-3)              |
 * | any other | one ::mdm_email_value_t                                                         |
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
    return mdm_fill_head(msg, MDM_TYPE_EMAIL, MDM_EMAIL_ACCOUNTS, accounts,
                         accounts != NULL ? 1 : 0);
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

/** @param msg  the message. @return Its number and a text, or null. */
MDM_INLINE const mdm_email_value_t *mdm_email_value(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_email_value_t *, mdm_payload_unless_0(msg, MDM_FORM_EMAIL_VALUE));
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_email_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_EMAIL, type, NULL, 0);
}

#endif
