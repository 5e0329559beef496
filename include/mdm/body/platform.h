/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 53 and 54: platform policies. The rules of mdm/body/head.h hold, but the
 * body has no head.
 */
#ifndef MDM_BODY_PLATFORM_H
#define MDM_BODY_PLATFORM_H

#include <stdint.h>

/**
 * Body of the platform category: `type` and `text`. For `type` 439, `number` and `flag` follow. For
 * `type` 440, `number` follows. Fields that do not travel keep the values of the receiver's record
 * (Q-PLATFORM-2). ipc_free() releases `text`; the pointer keeps its old value (Q-BODY-7).
 */
typedef struct mdm_platform_info {
    uint32_t type;   /**< Discriminator; 439 and 440 carry numbers. */
    uint32_t aux;    /**< A word of the caller: never sent, never touched. */
    char *text;      /**< Sent for every discriminator; may be null. */
    uint32_t aux2;   /**< A word of the caller: never sent, never touched. */
    uint32_t number; /**< Sent for 439 and 440. */
    uint8_t flag;    /**< Sent for 439 only. */
} mdm_platform_info_t;

#endif
