/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 15 (roaming) and 16 (roaming_res).
 *
 * The text of a field begins with its position on the wire, within its record. Server and clients
 * agree on the meaning of the fields.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * enum { OUR_POLICY = 1 };  // server and clients agree on the number
 *
 * int main(void)
 * {
 *     const mdm_roaming_data_t record = {.name = mdm_text("home")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_roaming_set_record(&sent, OUR_POLICY, &record)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the record stays ours
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
 *     const mdm_roaming_data_t *opened = mdm_roaming_record(received);
 *     if (opened != NULL) {
 *         printf("%s\n", opened->name);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: home
 * @endcode
 */
#ifndef MDM_BODY_ROAMING_H
#define MDM_BODY_ROAMING_H

#include "mdm/body/head.h"

/** The record of a roaming policy: one string. */
typedef struct mdm_roaming_data_t {
    char *name; /**< 1st. */
} mdm_roaming_data_t;

/**
 * Body of the roaming category.
 *
 * - `data`: one ::mdm_roaming_data_t. A sender must not pass null (Q-ROAMING-2). A received message
 *   always has a new record.
 * - `data_size`: the caller's number, sent unchanged. The codec derives nothing from it
 *   (Q-ROAMING-1).
 *
 * ipc_free() releases `name` and sets it to null. The record stays allocated, and `data` keeps
 * pointing to it: the owner of the message releases it with g_free() (Q-ROAMING-3).
 */
typedef struct mdm_roaming_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_info_t;

/**
 * Body of the roaming_res category: the head alone. `data_size` is sent unchanged.
 *
 * `data` neither travels nor changes (Q-ROAMING-5). But ipc_free() takes it for a pointer to an
 * ::mdm_roaming_data_t and releases its `name` (Q-ROAMING-4). So pass ipc_deserialize() a record
 * whose `data` is null.
 */
typedef struct mdm_roaming_res_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_roaming_res_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a roaming policy. `data_size` is 0.
 * @param msg     the message.
 * @param type    any discriminator.
 * @param record  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_roaming_set_record(mdm_msg_t *msg, uint32_t type,
                                                       const mdm_roaming_data_t *record)
{
    if (record == NULL) {
        return false;
    }
    mdm_roaming_info_t *info =
        MDM_CAST(mdm_roaming_info_t *, mdm_begin_body(msg, MDM_TYPE_ROAMING));
    info->type = type;
    info->data_size = 0;
    info->data = mdm_unconst(record);
    return true;
}

/** @param msg  the message. @return Its record, or null. */
MDM_INLINE const mdm_roaming_data_t *mdm_roaming_record(const mdm_msg_t *msg)
{
    const mdm_roaming_info_t *info =
        MDM_CAST(const mdm_roaming_info_t *, mdm_body_of(msg, MDM_FORM_ROAMING_RECORD));
    return info != NULL ? MDM_CAST(const mdm_roaming_data_t *, info->data) : NULL;
}

/**
 * Fills a message with the head alone. `data_size` is 0.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_roaming_res_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_ROAMING_RES, type, NULL, 0);
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone; otherwise null.
 */
MDM_INLINE const mdm_roaming_res_info_t *mdm_roaming_res_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_roaming_res_info_t *, mdm_body_of(msg, MDM_FORM_ROAMING_RES_HEAD));
}

#endif
