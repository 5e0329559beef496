/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 1 and 2: registration of management clients with the server.
 */
#ifndef MDM_BODY_ADMIN_H
#define MDM_BODY_ADMIN_H

#include <stdint.h>

enum {
    /** Discriminator of the registration query. */
    IS_CLIENT_REGISTERED = 0,
};

/**
 * Body of the admin category.
 *
 * #IS_CLIENT_REGISTERED travels as `type`, `pkg`, `status`; every other discriminator as `type`,
 * `value`, `pkg`, `text`. The receiver's fields of the other form stay as its record held them.
 * A null and an empty string are the same on the wire and arrive as null. ipc_free() releases
 * both strings and sets them to null.
 *
 * The log: ipc_serialize() and ipc_deserialize() log `pkg` of #IS_CLIENT_REGISTERED at level 0; see
 * mdm/ipc.h and docs/security.md.
 */
typedef struct mdm_admin_info {
    uint32_t type;  /**< Discriminator; 0 is #IS_CLIENT_REGISTERED. */
    uint32_t aux;   /**< The caller's word: never sent, never touched. */
    uint32_t value; /**< Sent for every discriminator except 0. */
    char *pkg;      /**< Package name of the client; may be null. */
    char *text;     /**< Second string, sent for every discriminator except 0; may be null. */
    int32_t status; /**< Registration status, sent only for discriminator 0. */
} mdm_admin_info_t;

#endif
