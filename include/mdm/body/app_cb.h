/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 61: details of an application event.
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
 *     if (!mdm_app_cb_set_detail(&sent, MDM_APP_CB_DETAIL_0, 9,
 *                                "org.example.app", "started")) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the texts stay ours
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
 *     const mdm_app_cb_info_t *opened = mdm_app_cb_detail(received);
 *     if (opened != NULL) {
 *         printf("%u: %s %s\n", opened->num6, opened->str7, opened->str8);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 9: org.example.app started
 * @endcode
 */
#ifndef MDM_BODY_APP_CB_H
#define MDM_BODY_APP_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the application callbacks: the callback head (see mdm/body/callback_head.h). For `type` 0
 * and 1 (`MDM_APP_CB_DETAIL_*`), one number and two strings follow. ipc_free() releases both
 * strings and sets them to null.
 *
 * An unknown `type` is the head alone (Q-CALLBACK-3). If a received `type` is unknown, or a
 * received `data_size` is 0 (Q-CALLBACK-2), the number and the strings keep the values of the
 * receiver's record. For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_app_cb_info {
    /** @{ A field of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint32_t num6; /**< 5th. */
    char *str7;    /**< 7th. It follows `str8` (Q-CALLBACK-4). May be null. */
    char *str8;    /**< 6th. May be null. */
    /** @} */
} mdm_app_cb_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a number and two strings.
 * @param msg   the message.
 * @param type  0 or 1.
 * @param num6  the number.
 * @param str7  a string; may be null.
 * @param str8  a string; may be null.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_cb_set_detail(mdm_msg_t *msg, uint32_t type, uint32_t num6,
                                                      const char *str7, const char *str8)
{
    if (mdm_app_cb_form(type) != MDM_FORM_APP_CB_DETAIL) {
        return false;
    }
    mdm_app_cb_info_t *info = MDM_CAST(mdm_app_cb_info_t *, mdm_begin_body(msg, MDM_TYPE_APP_CB));
    info->type = type;
    info->data_size = 1;
    info->num6 = num6;
    info->str7 = mdm_text(str7);
    info->str8 = mdm_text(str8);
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it holds a number and two strings; otherwise null.
 */
MDM_INLINE const mdm_app_cb_info_t *mdm_app_cb_detail(const mdm_msg_t *msg)
{
    const mdm_app_cb_info_t *info =
        MDM_CAST(const mdm_app_cb_info_t *, mdm_body_of(msg, MDM_FORM_APP_CB_DETAIL));
    return info != NULL && info->data_size != 0 ? info : NULL;
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  every callback type but 0 and 1.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_cb_set_head(mdm_msg_t *msg, uint32_t type)
{
    if (mdm_app_cb_form(type) != MDM_FORM_APP_CB_HEAD) {
        return false;
    }
    mdm_app_cb_info_t *info = MDM_CAST(mdm_app_cb_info_t *, mdm_begin_body(msg, MDM_TYPE_APP_CB));
    info->type = type;
    info->data_size = 1;
    info->num6 = 0;
    info->str7 = NULL;
    info->str8 = NULL;
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone; otherwise null.
 */
MDM_INLINE const mdm_app_cb_info_t *mdm_app_cb_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_app_cb_info_t *, mdm_body_of(msg, MDM_FORM_APP_CB_HEAD));
}

#endif
