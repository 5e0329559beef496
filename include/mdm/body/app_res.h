/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 14: lists of application policies.
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
 *     const mdm_app_res_item_t mail = {
 *         .name = mdm_text("org.example.mail"), .value = 1};
 *     const mdm_app_res_item_t camera = {
 *         .name = mdm_text("org.example.camera"), .value = 0};
 *     GList *items = g_list_append(NULL, mdm_unconst(&mail));
 *     items = g_list_append(items, mdm_unconst(&camera));
 *     mdm_msg_t sent = {0};
 *     const bool is_filled =
 *         mdm_app_res_set_items(&sent, MDM_APP_RES_ITEMS_140, items);
 *     uint32_t length = 0;
 *     uint8_t *bytes = is_filled ? ipc_seal(&sent, &length, NULL) : NULL;
 *     g_list_free(items);  // the cells are ours, and the items stay ours
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     for (const GList *cell = mdm_app_res_items(received); cell != NULL;
 *          cell = cell->next) {
 *         const mdm_app_res_item_t *item =
 *             (const mdm_app_res_item_t *)cell->data;
 *         printf("%s: %u\n", item->name, item->value);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: org.example.mail: 1
 * // prints: org.example.camera: 0
 * @endcode
 */
#ifndef MDM_BODY_APP_RES_H
#define MDM_BODY_APP_RES_H

#include "mdm/body/app_head.h"

/** A number with a name. */
typedef struct mdm_app_res_item_t {
    char *name;     /**< 1st. Must not be null. The count and the size include an item without a
                         name, but it is not written: it arrives at the end of the list, with no
                         name and the value 0 (Q-APP_RES-1). */
    uint32_t value; /**< 2nd. */
} mdm_app_res_item_t;

/** One client's package list. */
typedef struct mdm_app_control_info_t {
    int32_t client_id; /**< 1st. The client that the list belongs to. */
    GList *pkg_list;   /**< 2nd. GList of strings (package names); null if empty. */
} mdm_app_control_info_t;

/**
 * Body of the app_res category.
 *
 * | `type`                                         | constants                | `data` points to                  |
 * |------------------------------------------------|--------------------------|-----------------------------------|
 * | 3, 155, 159, 162, 168, 169, 170, 171, 176, 177 | `MDM_APP_RES_PACKAGES_*` | GList of strings (package names)  |
 * | 140, 141, 142                                  | `MDM_APP_RES_ITEMS_*`    | GList of ::mdm_app_res_item_t     |
 * | 172, 173, 174, 175                             | `MDM_APP_RES_CONTROLS_*` | GList of ::mdm_app_control_info_t |
 * | any other                                      |                          | `data_size` raw bytes             |
 *
 * The sender sets `data_size`; the codec never changes it. A value below 1 sends the head alone,
 * and the receiver's `data` becomes null. For a list any value of 1 or more will do.
 *
 * A list must not hold a null element: the list on the wire ends there, although its count includes
 * all elements (Q-BODY-12). So do not send on a received list with an empty name.
 *
 * If `data_size` is below 1, ipc_free() releases `pkg` alone (Q-BODY-5). If it is 1 or more,
 * ipc_free() releases `pkg` and the payload, with these exceptions:
 *
 * - The ::mdm_app_control_info_t records stay allocated. Their package lists are released, and no
 *   pointer to the records is left (Q-APP_RES-5). To release the records, copy their pointers from
 *   the list before ipc_free(), and pass them to g_free() after it.
 * - `data` of an item list keeps its old value (Q-BODY-7).
 * - If `data` is null, ipc_free() releases nothing, not even `pkg` (Q-APP_RES-4). A received empty
 *   list is such a body: the owner of the message releases its `pkg`.
 *
 * The log, at level 1: ipc_serialize() logs the package names of a list. ipc_deserialize() logs the
 * package names of each ::mdm_app_control_info_t (Q-APP_RES-3). ipc_serialize(), ipc_deserialize()
 * and ipc_free() log the items.
 */
typedef struct mdm_app_res_info {
    /** @{ A field of the application head: see #MDM_APP_HEAD. */
    MDM_APP_HEAD;
    /** @} */
} mdm_app_res_info_t;

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with a list of package names.
 * @param msg       the message.
 * @param type      #MDM_APP_RES_PACKAGES_3 or another discriminator of this form.
 * @param packages  the first cell of a list of strings, none null; null is the empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_res_set_packages(mdm_msg_t *msg, int32_t type,
                                                         const GList *packages)
{
    return mdm_app_res_form(type) == MDM_FORM_APP_RES_PACKAGES && mdm_begins_list(packages) &&
           mdm_fill_app_head(msg, MDM_TYPE_APP_RES, type, packages, 1);
}

/** @param msg  the message. @return Its list of package names, or null. */
MDM_INLINE const GList *mdm_app_res_packages(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_app_payload(msg, MDM_FORM_APP_RES_PACKAGES));
}

/**
 * Fills a message with a list of named numbers.
 * @param msg    the message.
 * @param type   #MDM_APP_RES_ITEMS_140 or another discriminator of this form.
 * @param items  the first cell of a list of ::mdm_app_res_item_t, none null; null is the empty
 *               list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_res_set_items(mdm_msg_t *msg, int32_t type,
                                                      const GList *items)
{
    return mdm_app_res_form(type) == MDM_FORM_APP_RES_ITEMS && mdm_begins_list(items) &&
           mdm_fill_app_head(msg, MDM_TYPE_APP_RES, type, items, 1);
}

/** @param msg  the message. @return Its list of named numbers, or null. */
MDM_INLINE const GList *mdm_app_res_items(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_app_payload(msg, MDM_FORM_APP_RES_ITEMS));
}

/**
 * Fills a message with the package lists of clients.
 * @param msg       the message.
 * @param type      #MDM_APP_RES_CONTROLS_172 or another discriminator of this form.
 * @param controls  the first cell of a list of ::mdm_app_control_info_t, none null; null is the
 *                  empty list.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_res_set_controls(mdm_msg_t *msg, int32_t type,
                                                         const GList *controls)
{
    return mdm_app_res_form(type) == MDM_FORM_APP_RES_CONTROLS && mdm_begins_list(controls) &&
           mdm_fill_app_head(msg, MDM_TYPE_APP_RES, type, controls, 1);
}

/** @param msg  the message. @return Its package lists of clients, or null. */
MDM_INLINE const GList *mdm_app_res_controls(const mdm_msg_t *msg)
{
    return MDM_CAST(const GList *, mdm_app_payload(msg, MDM_FORM_APP_RES_CONTROLS));
}

/**
 * Fills a message with raw bytes.
 * @param msg    the message.
 * @param type   a discriminator that selects no other form.
 * @param bytes  the bytes; null only if there are none.
 * @param size   their number. 0 sends the head alone; more than 2147483647 are refused.
 * @return Whether the message was filled.
 */
MDM_WARN_UNUSED MDM_INLINE bool mdm_app_res_set_data(mdm_msg_t *msg, int32_t type,
                                                     const void *bytes, size_t size)
{
    return mdm_app_res_form(type) == MDM_FORM_APP_RES_DATA &&
           mdm_fill_app_bytes(msg, MDM_TYPE_APP_RES, type, bytes, size);
}

/**
 * @param msg   the message.
 * @param size  receives the number of bytes; may be null.
 * @return Its raw bytes, or null.
 */
MDM_INLINE const char *mdm_app_res_data(const mdm_msg_t *msg, size_t *size)
{
    return mdm_app_bytes(msg, MDM_FORM_APP_RES_DATA, size);
}

/**
 * Fills a message with the head alone.
 * @param msg   the message.
 * @param type  a discriminator of any form.
 * @return Always true.
 */
MDM_INLINE bool mdm_app_res_set_head(mdm_msg_t *msg, int32_t type)
{
    return mdm_fill_app_head(msg, MDM_TYPE_APP_RES, type, NULL, 0);
}

#endif
