/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 5 and 6: device-security policies.
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
 *     const mdm_security_item_t item = {.num0 = 7,
 *                                       .str1 = mdm_text("one"),
 *                                       .str3 = mdm_text("three"),
 *                                       .str4 = mdm_text("four")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_security_set_item(&sent, MDM_SECURITY_ITEM_56, &item)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the item stays ours
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
 *     const mdm_security_item_t *opened = mdm_security_item(received);
 *     if (opened != NULL) {
 *         printf("%u: %s, %s, %s\n", opened->num0, opened->str1,
 *                opened->str3, opened->str4);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 7: one, three, four
 * @endcode
 */
#ifndef MDM_BODY_SECURITY_H
#define MDM_BODY_SECURITY_H

#include "mdm/body/head.h"

/** The record of discriminators 56 and 76. */
typedef struct mdm_security_item_t {
    uint32_t num0;  /**< 1st. */
    char *str1;     /**< 2nd. */
    uint32_t word2; /**< Never sent. Zero in a received record. */
    char *str3;     /**< 4th. It follows `str4` (Q-SECURITY-1). */
    char *str4;     /**< 3rd. */
} mdm_security_item_t;

/** One account of discriminators 70 and 71: four numbers and twenty-two strings. */
typedef struct mdm_security_account_t {
    uint32_t num0; /**< 1st. */
    uint32_t num1; /**< 2nd. */
    uint32_t num2; /**< 3rd. */
    uint32_t num3; /**< 4th. */
    char *str4;    /**< 5th. */
    char *str5;    /**< 6th. */
    char *str6;    /**< 7th. */
    char *str7;    /**< 8th. */
    char *str8;    /**< 9th. */
    char *str9;    /**< 10th. */
    char *str10;   /**< 11th. */
    char *str11;   /**< 12th. */
    char *str12;   /**< 13th. */
    char *str13;   /**< 14th. */
    char *str14;   /**< 15th. */
    char *str15;   /**< 16th. */
    char *str16;   /**< 17th. */
    char *str17;   /**< 18th. */
    char *str18;   /**< 19th. */
    char *str19;   /**< 20th. */
    char *str20;   /**< 21st. */
    char *str21;   /**< 22nd. */
    char *str22;   /**< 23rd. */
    char *str23;   /**< 24th. */
    char *str24;   /**< 25th. */
    char *str25;   /**< 26th. */
} mdm_security_account_t;

/**
 * Body of the security category.
 *
 * | `type`    | constants                 | `data` points to                  | `data_size`                            |
 * |-----------|---------------------------|-----------------------------------|----------------------------------------|
 * | 56, 76    | `MDM_SECURITY_ITEM_*`     | one ::mdm_security_item_t         | sending stores the size of the payload |
 * | 68, 69    | `MDM_SECURITY_STRINGS_*`  | GList of strings                  | sending stores the size of the body    |
 * | 70, 71    | `MDM_SECURITY_ACCOUNTS_*` | GList of ::mdm_security_account_t | sending stores the size of the body    |
 * | any other |                           | `data_size` raw bytes             | the sender sets it                     |
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

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with an item.
 * @param msg   the message.
 * @param type  #MDM_SECURITY_ITEM_56 or another discriminator of this form.
 * @param item  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_security_set_item(mdm_msg_t *msg, uint32_t type,
                                                      const mdm_security_item_t *item)
{
    return mdm_security_form(type) == MDM_FORM_SECURITY_ITEM && item != NULL &&
           mdm_fill_head(msg, MDM_TYPE_SECURITY, type, item, 1);
}

/** @param msg  the message. @return Its item, or null. */
MDM_INLINE const mdm_security_item_t *mdm_security_item(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_security_item_t *, mdm_payload(msg, MDM_FORM_SECURITY_ITEM));
}

/**
 * Fills a message with a list of strings.
 * @param msg      the message.
 * @param type     #MDM_SECURITY_STRINGS_68 or another discriminator of this form.
 * @param strings  the first cell of a list of strings, none null; null is the empty list, for which
 *                 the head and four zero bytes travel (Q-SECURITY-3).
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_security_set_strings(mdm_msg_t *msg, uint32_t type,
                                                         const GList *strings)
{
    return mdm_security_form(type) == MDM_FORM_SECURITY_STRINGS && mdm_begins_list(strings) &&
           mdm_fill_head(msg, MDM_TYPE_SECURITY, type, strings, strings != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of strings, or null. */
MDM_INLINE const GList *mdm_security_strings(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload(msg, MDM_FORM_SECURITY_STRINGS));
}

/**
 * Fills a message with a list of accounts.
 * @param msg       the message.
 * @param type      #MDM_SECURITY_ACCOUNTS_70 or another discriminator of this form.
 * @param accounts  the first cell of a list of ::mdm_security_account_t, none null; null is the
 *                  empty list, for which the head and four zero bytes travel (Q-SECURITY-3).
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_security_set_accounts(mdm_msg_t *msg, uint32_t type,
                                                          const GList *accounts)
{
    return mdm_security_form(type) == MDM_FORM_SECURITY_ACCOUNTS && mdm_begins_list(accounts) &&
           mdm_fill_head(msg, MDM_TYPE_SECURITY, type, accounts, accounts != NULL ? 1 : 0);
}

/** @param msg  the message. @return Its list of accounts, or null. */
MDM_INLINE const GList *mdm_security_accounts(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_payload(msg, MDM_FORM_SECURITY_ACCOUNTS));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_security_set_data(mdm_msg_t *msg, uint32_t type,
                                                      const void *bytes, size_t size)
{
    return mdm_security_form(type) == MDM_FORM_SECURITY_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_SECURITY, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_security_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_SECURITY_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_security_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_SECURITY, type, NULL, 0);
}

#endif
