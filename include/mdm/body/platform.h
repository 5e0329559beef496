/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 53 and 54: platform policies. The rules of mdm/body/head.h hold, but the
 * body has no head.
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
 *     mdm_msg_t sent = {0};
 *     mdm_platform_set_flag(&sent, "update", 7, 1);
 *     uint32_t length = 0;
 *     // the text stays ours
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
 *     const mdm_platform_info_t *opened = mdm_platform_flag(received);
 *     if (opened != NULL) {
 *         printf("%s: %u, %u\n", opened->text, opened->number,
 *                opened->flag);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: update: 7, 1
 * @endcode
 */
#ifndef MDM_BODY_PLATFORM_H
#define MDM_BODY_PLATFORM_H

#include <stdint.h>

/**
 * Body of the platform category: `type` and `text`. For `type` 439 (#MDM_PLATFORM_FLAG), `number`
 * and `flag` follow. For `type` 440 (#MDM_PLATFORM_NUMBER), `number` follows. Fields that do not
 * travel keep the values of the receiver's record (Q-PLATFORM-2). ipc_free() releases `text`; the
 * pointer keeps its old value (Q-BODY-7).
 */
typedef struct mdm_platform_info {
    uint32_t type;   /**< 1st. The discriminator; 439 and 440 carry numbers. */
    uint32_t aux;    /**< Never sent, never touched: a word of the caller. */
    char *text;      /**< 2nd. May be null. */
    uint32_t aux2;   /**< Never sent, never touched: a word of the caller. */
    uint32_t number; /**< Flag, number: 3rd. Sent for 439 and 440. */
    uint8_t flag;    /**< Flag: 4th. Sent for 439. */
} mdm_platform_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a text, a number and a flag.
 * @param msg     the message.
 * @param text    the text; may be null.
 * @param number  the number.
 * @param flag    the flag.
 * @return Always true.
 */
MDM_INLINE bool mdm_platform_set_flag(mdm_msg_t *msg, const char *text, uint32_t number,
                                      uint8_t flag)
{
    mdm_platform_info_t *info =
        MDM_CAST(mdm_platform_info_t *, mdm_begin_body(msg, MDM_TYPE_PLATFORM));
    info->type = MDM_PLATFORM_FLAG;
    info->text = mdm_text(text);
    info->number = number;
    info->flag = flag;
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it holds a text, a number and a flag; otherwise null.
 */
MDM_INLINE const mdm_platform_info_t *mdm_platform_flag(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_platform_info_t *, mdm_body_of(msg, MDM_FORM_PLATFORM_FLAG));
}

/**
 * Fills a message with a text and a number.
 * @param msg     the message.
 * @param text    the text; may be null.
 * @param number  the number.
 * @return Always true.
 */
MDM_INLINE bool mdm_platform_set_number(mdm_msg_t *msg, const char *text, uint32_t number)
{
    mdm_platform_info_t *info =
        MDM_CAST(mdm_platform_info_t *, mdm_begin_body(msg, MDM_TYPE_PLATFORM));
    info->type = MDM_PLATFORM_NUMBER;
    info->text = mdm_text(text);
    info->number = number;
    info->flag = 0;
    return true;
}

/** @param msg  the message. @return Its body if it holds a text and a number; otherwise null. */
MDM_INLINE const mdm_platform_info_t *mdm_platform_number(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_platform_info_t *, mdm_body_of(msg, MDM_FORM_PLATFORM_NUMBER));
}

/**
 * Fills a message with a text.
 * @param msg   the message.
 * @param type  every discriminator but 439 and 440.
 * @param text  the text; may be null.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_platform_set_text(mdm_msg_t *msg, uint32_t type,
                                                      const char *text)
{
    if (mdm_platform_form(type) != MDM_FORM_PLATFORM_TEXT) {
        return false;
    }
    mdm_platform_info_t *info =
        MDM_CAST(mdm_platform_info_t *, mdm_begin_body(msg, MDM_TYPE_PLATFORM));
    info->type = type;
    info->text = mdm_text(text);
    info->number = 0;
    info->flag = 0;
    return true;
}

/** @param msg  the message. @return Its body if it holds a text; otherwise null. */
MDM_INLINE const mdm_platform_info_t *mdm_platform_text(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_platform_info_t *, mdm_body_of(msg, MDM_FORM_PLATFORM_TEXT));
}

#endif
