/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 53 and 54: platform policies.
 */
#ifndef MDM_BODY_PLATFORM_H
#define MDM_BODY_PLATFORM_H

#include <stdint.h>

/**
 * Body of the platform category: `type` and `text`, followed by `number` and `flag` for `type`
 * 439 and by `number` for `type` 440. Fields that do not travel stay as the receiver's record
 * held them. ipc_free() releases `text` without resetting the pointer, so a message is freed
 * once.
 */
typedef struct mdm_platform_info {
    uint32_t type;   /**< Discriminator; 439 and 440 carry numbers. */
    uint32_t aux;    /**< The caller's word: never sent, never touched. */
    char *text;      /**< Sent for every discriminator; may be null. */
    uint32_t aux2;   /**< The caller's word: never sent, never touched. */
    uint32_t number; /**< Sent for 439 and 440. */
    uint8_t flag;    /**< Sent for 439 only. */
} mdm_platform_info_t;

#endif
