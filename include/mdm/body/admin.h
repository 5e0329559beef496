/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 1 and 2: registration of management clients with the server. The rules of
 * mdm/body/head.h hold, but the body has no head.
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
 *     mdm_admin_set_query(&sent, "org.example.agent", 1);
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
 *     const mdm_admin_info_t *opened = mdm_admin_query(received);
 *     if (opened != NULL) {
 *         printf("%s has status %d\n", opened->pkg, opened->status);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: org.example.agent has status 1
 * @endcode
 */
#ifndef MDM_BODY_ADMIN_H
#define MDM_BODY_ADMIN_H

#include <stdint.h>

/**
 * Body of the admin category.
 *
 * #IS_CLIENT_REGISTERED (0) is the query: `type`, `pkg` and `status` travel. Every other
 * discriminator is the general form: `type`, `value`, `pkg` and `text` travel. The receiver's other
 * fields keep the values of its record (Q-ADMIN-1). ipc_free() releases both strings and sets them
 * to null.
 *
 * The log: ipc_serialize() and ipc_deserialize() log `pkg` of #IS_CLIENT_REGISTERED at level 0.
 */
typedef struct mdm_admin_info {
    uint32_t type;  /**< 1st. The discriminator. */
    uint32_t aux;   /**< Never sent, never touched: a word of the caller. */
    uint32_t value; /**< General: 2nd. */
    char *pkg;      /**< General: 3rd. Query: 2nd. The package name of the client; may be null. */
    char *text;     /**< General: 4th. The second string; may be null. */
    int32_t status; /**< Query: 3rd. The registration status. */
} mdm_admin_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with the query whether a client is registered.
 * @param msg     the message.
 * @param pkg     the package name of the client; may be null.
 * @param status  the registration status.
 * @return Always true.
 */
MDM_INLINE bool mdm_admin_set_query(mdm_msg_t *msg, const char *pkg, int32_t status)
{
    mdm_admin_info_t *info = MDM_CAST(mdm_admin_info_t *, mdm_begin_body(msg, MDM_TYPE_ADMIN));
    info->type = MDM_ADMIN_QUERY;
    info->value = 0;
    info->pkg = mdm_text(pkg);
    info->text = NULL;
    info->status = status;
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it holds the query whether a client is registered; otherwise null.
 */
MDM_INLINE const mdm_admin_info_t *mdm_admin_query(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_admin_info_t *, mdm_body_of(msg, MDM_FORM_ADMIN_QUERY));
}

/**
 * Fills a message with a number and two strings.
 * @param msg    the message.
 * @param type   every discriminator but 0.
 * @param value  the number.
 * @param pkg    the package name of the client; may be null.
 * @param text   the second string; may be null.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_admin_set_general(mdm_msg_t *msg, uint32_t type, uint32_t value,
                                                      const char *pkg, const char *text)
{
    if (mdm_admin_form(type) != MDM_FORM_ADMIN_GENERAL) {
        return false;
    }
    mdm_admin_info_t *info = MDM_CAST(mdm_admin_info_t *, mdm_begin_body(msg, MDM_TYPE_ADMIN));
    info->type = type;
    info->value = value;
    info->pkg = mdm_text(pkg);
    info->text = mdm_text(text);
    info->status = 0;
    return true;
}

/**
 * @param msg  the message.
 * @return Its body if it holds a number and two strings; otherwise null.
 */
MDM_INLINE const mdm_admin_info_t *mdm_admin_general(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_admin_info_t *, mdm_body_of(msg, MDM_FORM_ADMIN_GENERAL));
}

#endif
