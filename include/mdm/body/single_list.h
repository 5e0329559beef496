/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 23 to 34, 37 and 38: seven categories that carry raw bytes. Server and
 * clients agree on the meaning of the numbers and of the bytes.
 *
 * Each body is the body head (see mdm/body/head.h) and nothing else:
 *
 * - `type`, `param`: the caller's numbers. The codec sends them unchanged and never looks at them.
 * - `data_size`: the number of raw bytes. The sender sets it; it must not be negative
 *   (Q-SINGLE_LIST-2). If it is below 1, the head travels alone, and the receiver's `data` becomes
 *   null.
 * - `data`: a buffer of `data_size` bytes.
 *
 * The receiver of a browser or enterprise message gets `type`, `param` and `data_size`, but never
 * the raw bytes: if `data_size` is 1 or more, its `data` keeps the value of its record
 * (Q-SINGLE_LIST-1). So pass ipc_deserialize() a record whose `data` is null, because ipc_free()
 * releases whatever `data` holds.
 *
 * ipc_free() releases `data` and sets `data` to null and `data_size` to 0. Freeing twice is
 * harmless.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 * #include <string.h>
 *
 * enum { OUR_POLICY = 1 };  // server and clients agree on the number
 *
 * int main(void)
 * {
 *     const char rule[] = "drop 203.0.113.7";
 *     mdm_msg_t sent = {0};
 *     if (!mdm_firewall_set_data(&sent, OUR_POLICY, rule, strlen(rule))) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the rule stays ours
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
 *     size_t size = 0;
 *     const char *opened = mdm_firewall_data(received, &size);
 *     if (opened != NULL) {
 *         printf("%zu bytes: %s\n", size, opened);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 16 bytes: drop 203.0.113.7
 * @endcode
 */
#ifndef MDM_BODY_SINGLE_LIST_H
#define MDM_BODY_SINGLE_LIST_H

#include "mdm/body/head.h"

/** Message types 23 and 24. Raw bytes are sent, but never received. */
typedef struct mdm_browser_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_browser_info_t;

/** Message types 25 and 26. */
typedef struct mdm_date_time_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_date_time_info_t;

/** Message types 27 and 28. */
typedef struct mdm_remote_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_remote_info_t;

/** Message types 29 and 30. */
typedef struct mdm_vpn_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_vpn_info_t;

/** Message types 31 and 32. */
typedef struct mdm_firewall_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_firewall_info_t;

/** Message types 33 and 34. */
typedef struct mdm_res_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_res_info_t;

/** Message types 37 and 38. Raw bytes are sent, but never received. */
typedef struct mdm_enterprise_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_enterprise_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a browser message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_browser_set_data(mdm_msg_t *msg, uint32_t type,
                                                     const void *bytes, size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_BROWSER, type, bytes, size);
}

/**
 * A message that was received into a zeroed record has none (Q-SINGLE_LIST-1). In another record
 * the result is what the record held.
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_browser_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_BROWSER_DATA, size);
}

/**
 * Fills a browser message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_browser_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_BROWSER, type, NULL, 0);
}

/**
 * Fills a date_time message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_date_time_set_data(mdm_msg_t *msg, uint32_t type,
                                                       const void *bytes, size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_DATE_TIME, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_date_time_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_DATE_TIME_DATA, size);
}

/**
 * Fills a date_time message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_date_time_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_DATE_TIME, type, NULL, 0);
}

/**
 * Fills a remote message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_remote_set_data(mdm_msg_t *msg, uint32_t type,
                                                    const void *bytes, size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_REMOTE, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_remote_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_REMOTE_DATA, size);
}

/**
 * Fills a remote message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_remote_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_REMOTE, type, NULL, 0);
}

/**
 * Fills a vpn message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_vpn_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                 size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_VPN, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_vpn_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_VPN_DATA, size);
}

/**
 * Fills a vpn message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_vpn_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_VPN, type, NULL, 0);
}

/**
 * Fills a firewall message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_firewall_set_data(mdm_msg_t *msg, uint32_t type,
                                                      const void *bytes, size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_FIREWALL, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_firewall_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_FIREWALL_DATA, size);
}

/**
 * Fills a firewall message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_firewall_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_FIREWALL, type, NULL, 0);
}

/**
 * Fills a res message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_res_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                 size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_RES, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_res_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_RES_DATA, size);
}

/**
 * Fills a res message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_res_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_RES, type, NULL, 0);
}

/**
 * Fills an enterprise message with raw bytes.
 * @param msg    the message.
 * @param type   any discriminator.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_enterprise_set_data(mdm_msg_t *msg, uint32_t type,
                                                        const void *bytes, size_t size)
{
    return mdm_fill_bytes(msg, MDM_TYPE_ENTERPRISE, type, bytes, size);
}

/**
 * A message that was received into a zeroed record has none (Q-SINGLE_LIST-1). In another record
 * the result is what the record held.
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_enterprise_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_ENTERPRISE_DATA, size);
}

/**
 * Fills an enterprise message with the head alone.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_enterprise_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_ENTERPRISE, type, NULL, 0);
}

#endif
