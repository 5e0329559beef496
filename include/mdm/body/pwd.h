/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 3 and 4: password policies.
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
 *     const mdm_pwd_policy_t policy = {
 *         .num0 = 8, .num1 = 30, .str9 = mdm_text("secret")};
 *     mdm_msg_t sent = {0};
 *     if (!mdm_pwd_set_policy(&sent, &policy)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     // the policy stays ours
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
 *     const mdm_pwd_policy_t *opened = mdm_pwd_policy(received);
 *     if (opened != NULL) {
 *         printf("%u, %u, %s\n", opened->num0, opened->num1, opened->str9);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: 8, 30, secret
 * @endcode
 */
#ifndef MDM_BODY_PWD_H
#define MDM_BODY_PWD_H

#include "mdm/body/head.h"

/** The password policy of discriminator 40: nine numbers and two strings. */
typedef struct mdm_pwd_policy_t {
    uint32_t num0; /**< 1st. */
    uint32_t num1; /**< 2nd. */
    uint32_t num2; /**< 3rd. */
    uint32_t num3; /**< 4th. */
    uint32_t num4; /**< 5th. */
    uint32_t num5; /**< 6th. */
    uint32_t num6; /**< 7th. */
    uint32_t num7; /**< 8th. */
    uint32_t num8; /**< 9th. */
    char *str9;    /**< 10th. */
    char *str10;   /**< 11th. */
} mdm_pwd_policy_t;

/**
 * Body of the password category.
 *
 * | `type`    | constant         | `data` points to       |
 * |-----------|------------------|------------------------|
 * | 40        | `MDM_PWD_POLICY` | one ::mdm_pwd_policy_t |
 * | any other |                  | `data_size` raw bytes  |
 *
 * The sender sets `data_size`. If it is below 1, or if `data` is null, the head travels alone
 * (Q-BODY-3). For `type` 40 any value of 1 or more sends the record, whose length follows from its
 * fields (Q-PWD-1). A received value below 1 leaves `data` as the record held it, so pass
 * ipc_deserialize() a zeroed record (Q-BODY-6).
 *
 * ipc_free() releases the payload. For `type` 40 `data` keeps its old value (Q-BODY-7).
 */
typedef struct mdm_pwd_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_pwd_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a password policy.
 * @param msg     the message.
 * @param policy  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_pwd_set_policy(mdm_msg_t *msg, const mdm_pwd_policy_t *policy)
{
    return policy != NULL && mdm_fill_head(msg, MDM_TYPE_PWD, MDM_PWD_POLICY, policy, 1);
}

/** @param msg  the message. @return Its password policy, or null. */
MDM_INLINE const mdm_pwd_policy_t *mdm_pwd_policy(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_pwd_policy_t *, mdm_payload(msg, MDM_FORM_PWD_POLICY));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_pwd_set_data(mdm_msg_t *msg, uint32_t type, const void *bytes,
                                                 size_t size)
{
    return mdm_pwd_form(type) == MDM_FORM_PWD_DATA &&
           mdm_fill_bytes(msg, MDM_TYPE_PWD, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_pwd_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_bytes(msg, MDM_FORM_PWD_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_pwd_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_PWD, type, NULL, 0);
}

#endif
