/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 13: application-management policies.
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
 *     GList *packages = g_list_prepend(NULL, mdm_text("org.example.mail"));
 *     packages = g_list_prepend(packages, mdm_text("org.example.camera"));
 *     mdm_msg_t sent = {0};
 *     const bool is_filled =
 *         mdm_app_set_packages(&sent, MDM_APP_PACKAGES_4, packages);
 *     uint32_t length = 0;
 *     uint8_t *bytes = is_filled ? ipc_seal(&sent, &length, NULL) : NULL;
 *     g_list_free(packages);  // the cells are ours; the names are literals
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     for (const GList *cell = mdm_app_packages(received); cell != NULL;
 *          cell = cell->next) {
 *         printf("%s\n", (const char *)cell->data);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: org.example.camera
 * // prints: org.example.mail
 * @endcode
 */
#ifndef MDM_BODY_APP_H
#define MDM_BODY_APP_H

#include "mdm/body/app_head.h"

/** Two strings. */
typedef struct mdm_app_pair_t {
    char *first;  /**< 1st. */
    char *second; /**< 2nd. */
} mdm_app_pair_t;

/** Two numbers. */
typedef struct mdm_app_num_pair_t {
    uint32_t num1; /**< 1st. */
    uint32_t num2; /**< 2nd. */
} mdm_app_num_pair_t;

/**
 * Body of the application category.
 *
 * | `type`    | constants            | `data` points to                                           |
 * |-----------|----------------------|------------------------------------------------------------|
 * | 4, 15     | `MDM_APP_PACKAGES_*` | GList of strings (package names)                           |
 * | 140, 141  | `MDM_APP_NUM_PAIR_*` | one ::mdm_app_num_pair_t; the sender sets `data_size` to 8 |
 * | 184, 185  | `MDM_APP_PAIR_*`     | one ::mdm_app_pair_t                                       |
 * | any other |                      | `data_size` raw bytes                                      |
 *
 * The sender sets `data_size`; the codec never changes it. A value below 1 sends the head alone,
 * and the receiver's `data` becomes null. With 1 or more, a pair must not be missing (Q-APP-2). For
 * a list and a pair (184, 185) any value of 1 or more will do. For 140 and 141 the receiver reads 8
 * bytes, whatever `data_size` says (Q-APP-1).
 *
 * A package list must not hold a null element: the list on the wire ends there, although its count
 * includes all elements (Q-BODY-12). So do not send on a received list with an empty name.
 *
 * ipc_free() always releases `pkg`. It releases the payload, whatever `data_size` says (Q-BODY-5),
 * except a package list (4, 15): the owner of the message releases its cells and strings, with
 * `g_list_free_full(data, g_free)` (Q-APP-4). For 184 and 185 `data` keeps its old value
 * (Q-BODY-7).
 *
 * The log: ipc_serialize() and ipc_deserialize() log the package names of a list (4, 15) and both
 * texts of a pair (184, 185) at level 1.
 */
typedef struct mdm_app_info {
    /** @{ A field of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a list of package names.
 * @param msg       the message.
 * @param type      #MDM_APP_PACKAGES_4 or another discriminator of this form.
 * @param packages  the first cell of a list of strings, none null; null is the empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_set_packages(mdm_msg_t *msg, int32_t type,
                                                     const GList *packages)
{
    return mdm_app_form(type) == MDM_FORM_APP_PACKAGES && mdm_begins_list(packages) &&
           mdm_fill_app_head(msg, MDM_TYPE_APP, type, packages, 1);
}

/** @param msg  the message. @return Its list of package names, or null. */
MDM_INLINE const GList *mdm_app_packages(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_app_payload(msg, MDM_FORM_APP_PACKAGES));
}

/**
 * Fills a message with two numbers.
 * @param msg   the message.
 * @param type  #MDM_APP_NUM_PAIR_140 or another discriminator of this form.
 * @param pair  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_set_num_pair(mdm_msg_t *msg, int32_t type,
                                                     const mdm_app_num_pair_t *pair)
{
    return mdm_app_form(type) == MDM_FORM_APP_NUM_PAIR && pair != NULL &&
           mdm_fill_app_head(msg, MDM_TYPE_APP, type, pair, sizeof *pair);
}

/** @param msg  the message. @return Its two numbers, or null. */
MDM_INLINE const mdm_app_num_pair_t *mdm_app_num_pair(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_app_num_pair_t *, mdm_app_payload(msg, MDM_FORM_APP_NUM_PAIR));
}

/**
 * Fills a message with two strings.
 * @param msg   the message.
 * @param type  #MDM_APP_PAIR_184 or another discriminator of this form.
 * @param pair  the record; null is refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_set_pair(mdm_msg_t *msg, int32_t type,
                                                 const mdm_app_pair_t *pair)
{
    return mdm_app_form(type) == MDM_FORM_APP_PAIR && pair != NULL &&
           mdm_fill_app_head(msg, MDM_TYPE_APP, type, pair, 1);
}

/** @param msg  the message. @return Its two strings, or null. */
MDM_INLINE const mdm_app_pair_t *mdm_app_pair(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_app_pair_t *, mdm_app_payload(msg, MDM_FORM_APP_PAIR));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_set_data(mdm_msg_t *msg, int32_t type, const void *bytes,
                                                 size_t size)
{
    return mdm_app_form(type) == MDM_FORM_APP_DATA &&
           mdm_fill_app_bytes(msg, MDM_TYPE_APP, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_app_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_app_bytes(msg, MDM_FORM_APP_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_app_set_head(mdm_msg_t *msg, int32_t type)
{
    return mdm_fill_app_head(msg, MDM_TYPE_APP, type, NULL, 0);
}

#endif
