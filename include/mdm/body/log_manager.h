/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 51 and 52: log-manager policies. The rules of mdm/body/head.h hold, but the
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
 *     mdm_log_manager_set_text(&sent, "verbose");
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
 *     const char *opened = mdm_log_manager_text(received);
 *     if (opened != NULL) {
 *         printf("%s\n", opened);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: verbose
 * @endcode
 */
#ifndef MDM_BODY_LOG_MANAGER_H
#define MDM_BODY_LOG_MANAGER_H

#include <stdint.h>

/**
 * Body of the log_manager category: `type`, then `value`. The value is a string for `type` 638
 * (#MDM_LOG_MANAGER_TEXT) and one byte for every other `type`.
 *
 * Receiving clears the whole of `value` before it stores the string or the byte (Q-LOG_MANAGER-3).
 * ipc_free() releases the string of a `type` 638 body; the pointer keeps its old value (Q-BODY-7).
 */
typedef struct mdm_log_manager_info {
    uint32_t type; /**< 1st. The discriminator; 638 selects the string. */
    uint32_t aux;  /**< Never sent, never touched: a word of the caller. */
    union {
        char *text;     /**< The string of `type` 638; may be null. */
        uint8_t byte;   /**< The byte of every other `type`. */
        uintptr_t word; /**< The whole word; on a little-endian machine its low byte travels. */
    } value;            /**< 2nd. The payload. */
} mdm_log_manager_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a string.
 * @param msg   the message.
 * @param text  the string; may be null.
 * @return Always true.
 */
MDM_INLINE bool mdm_log_manager_set_text(mdm_msg_t *msg, const char *text)
{
    mdm_log_manager_info_t *info =
        MDM_CAST(mdm_log_manager_info_t *, mdm_begin_body(msg, MDM_TYPE_LOG_MANAGER));
    info->type = MDM_LOG_MANAGER_TEXT;
    info->value.word = 0;
    info->value.text = mdm_text(text);
    return true;
}

/** @param msg  the message. @return Its string, or null. */
MDM_INLINE const char *mdm_log_manager_text(const mdm_msg_t *msg)
{
    const mdm_log_manager_info_t *info =
        MDM_CAST(const mdm_log_manager_info_t *, mdm_body_of(msg, MDM_FORM_LOG_MANAGER_TEXT));
    return info != NULL ? info->value.text : NULL;
}

/**
 * Fills a message with a byte.
 * @param msg   the message.
 * @param type  every discriminator but 638.
 * @param byte  the byte.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_log_manager_set_byte(mdm_msg_t *msg, uint32_t type,
                                                         uint8_t byte)
{
    if (mdm_log_manager_form(type) != MDM_FORM_LOG_MANAGER_BYTE) {
        return false;
    }
    mdm_log_manager_info_t *info =
        MDM_CAST(mdm_log_manager_info_t *, mdm_begin_body(msg, MDM_TYPE_LOG_MANAGER));
    info->type = type;
    info->value.word = 0;
    info->value.byte = byte;
    return true;
}

/** @param msg  the message. @return Its byte, or null if it has another form. */
MDM_INLINE const uint8_t *mdm_log_manager_byte(const mdm_msg_t *msg)
{
    const mdm_log_manager_info_t *info =
        MDM_CAST(const mdm_log_manager_info_t *, mdm_body_of(msg, MDM_FORM_LOG_MANAGER_BYTE));
    return info != NULL ? &info->value.byte : NULL;
}

#endif
