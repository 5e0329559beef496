/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 51 and 52: log-manager policies.
 */
#ifndef MDM_BODY_LOG_MANAGER_H
#define MDM_BODY_LOG_MANAGER_H

#include <stdint.h>

/**
 * Body of the log_manager category: `type`, then `value`, a string for `type` 638 and one byte
 * for every other value.
 *
 * The whole of `value` is zero before a receiver's string or byte is stored in it. ipc_free()
 * releases the string of a `type` 638 body without resetting the pointer, so a message is freed
 * once.
 */
typedef struct mdm_log_manager_info {
    uint32_t type; /**< Discriminator; 638 selects the string. */
    uint32_t aux;  /**< The caller's word: never sent, never touched. */
    union {
        char *text;     /**< The string of `type` 638; may be null. */
        uint8_t byte;   /**< The byte of every other `type`. */
        uintptr_t word; /**< The whole word; its low byte is what travels as the byte. */
    } value;            /**< The payload. */
} mdm_log_manager_info_t;

#endif
