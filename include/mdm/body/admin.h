/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 1 and 2: registration of management clients with the server. The rules of
 * mdm/body/head.h hold, but the body has no head.
 */
#ifndef MDM_BODY_ADMIN_H
#define MDM_BODY_ADMIN_H

#include <stdint.h>

enum {
    /** Discriminator of the query whether a client is registered. */
    IS_CLIENT_REGISTERED = 0,
};

/**
 * Body of the admin category.
 *
 * For #IS_CLIENT_REGISTERED `type`, `pkg` and `status` travel. For every other discriminator
 * `type`, `value`, `pkg` and `text` travel. The receiver's other fields keep the values of its
 * record (Q-ADMIN-1). ipc_free() releases both strings and sets them to null.
 *
 * The log: ipc_serialize() and ipc_deserialize() log `pkg` of #IS_CLIENT_REGISTERED at level 0.
 */
typedef struct mdm_admin_info {
    uint32_t type;  /**< Discriminator; 0 is #IS_CLIENT_REGISTERED. */
    uint32_t aux;   /**< A word of the caller: never sent, never touched. */
    uint32_t value; /**< Sent for every discriminator except 0. */
    char *pkg;      /**< Package name of the client; may be null. */
    char *text;     /**< Second string, sent for every discriminator except 0; may be null. */
    int32_t status; /**< Registration status, sent only for discriminator 0; the values are the
                         server's and the clients' own. */
} mdm_admin_info_t;

#endif
