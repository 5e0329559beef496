/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 63: details of a miscellaneous event.
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
 *     if (!mdm_misc_cb_set_detail(&sent, MDM_MISC_CB_DETAIL_0, 1, 9,
 *                                 "stopped")) {
 *         return 1;
 *     }
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
 *     const mdm_misc_cb_info_t *opened = mdm_misc_cb_detail(received);
 *     if (opened != NULL) {
 *         printf("%u, %u: %s\n", opened->flag6, opened->num7,
 *                opened->str8);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 1, 9: stopped
 * @endcode
 */
#ifndef MDM_BODY_MISC_CB_H
#define MDM_BODY_MISC_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the miscellaneous callbacks: the callback head (see mdm/body/callback_head.h). For `type`
 * 0 and 1 (`MDM_MISC_CB_DETAIL_*`), a byte, a number and a string follow. ipc_free() releases the
 * string and sets it to null.
 *
 * An unknown `type` is the head alone (Q-CALLBACK-3). If a received `type` is unknown, or a
 * received `data_size` is 0 (Q-CALLBACK-2), these fields keep the values of the receiver's record.
 * For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_misc_cb_info {
    /** @{ A field of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint8_t flag6; /**< 5th. One byte on the wire, so the number after it is unaligned there
                        (Q-CALLBACK-5). */
    uint32_t num7; /**< 6th. */
    char *str8;    /**< 7th. May be null. */
    /** @} */
} mdm_misc_cb_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a byte, a number and a string.
 * @param msg    the message.
 * @param type   0 or 1.
 * @param flag6  the byte.
 * @param num7   the number.
 * @param str8   the string; may be null.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_cb_set_detail(mdm_msg_t *msg, uint32_t type, uint8_t flag6,
                                                       uint32_t num7, const char *str8)
{
    if (mdm_misc_cb_form(type) != MDM_FORM_MISC_CB_DETAIL) {
        return false;
    }
    mdm_misc_cb_info_t *info =
        MDM_CAST(mdm_misc_cb_info_t *, mdm_begin_body(msg, MDM_TYPE_MISC_CB));
    info->type = type;
    info->data_size = 1;
    info->flag6 = flag6;
    info->num7 = num7;
    info->str8 = mdm_text(str8);
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it holds a byte, a number and a string; otherwise null.
 */
MDM_INLINE const mdm_misc_cb_info_t *mdm_misc_cb_detail(const mdm_msg_t *msg)
{
    const mdm_misc_cb_info_t *info =
        MDM_CAST(const mdm_misc_cb_info_t *, mdm_body_of(msg, MDM_FORM_MISC_CB_DETAIL));
    return info != NULL && info->data_size != 0 ? info : NULL;
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  every callback type but 0 and 1.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_misc_cb_set_head(mdm_msg_t *msg, uint32_t type)
{
    if (mdm_misc_cb_form(type) != MDM_FORM_MISC_CB_HEAD) {
        return false;
    }
    mdm_misc_cb_info_t *info =
        MDM_CAST(mdm_misc_cb_info_t *, mdm_begin_body(msg, MDM_TYPE_MISC_CB));
    info->type = type;
    info->data_size = 1;
    info->flag6 = 0;
    info->num7 = 0;
    info->str8 = NULL;
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone; otherwise null.
 */
MDM_INLINE const mdm_misc_cb_info_t *mdm_misc_cb_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_misc_cb_info_t *, mdm_body_of(msg, MDM_FORM_MISC_CB_HEAD));
}

#endif
