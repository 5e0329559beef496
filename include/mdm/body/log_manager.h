/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 51 and 52: log-manager policies. The rules of mdm/body/head.h hold, but the
 * body has no head.
 */
#ifndef MDM_BODY_LOG_MANAGER_H
#define MDM_BODY_LOG_MANAGER_H

#include <stdint.h>

/**
 * Body of the log_manager category: `type`, then `value`. The value is a string for `type` 638 and
 * one byte for every other `type`.
 *
 * Receiving clears the whole of `value` before it stores the string or the byte (Q-LOG_MANAGER-3).
 * ipc_free() releases the string of a `type` 638 body; the pointer keeps its old value (Q-BODY-7).
 */
typedef struct mdm_log_manager_info {
    uint32_t type; /**< Discriminator; 638 selects the string. */
    uint32_t aux;  /**< A word of the caller: never sent, never touched. */
    union {
        char *text;     /**< The string of `type` 638; may be null. */
        uint8_t byte;   /**< The byte of every other `type`. */
        uintptr_t word; /**< The whole word; its low byte travels as the byte. */
    } value;            /**< The payload. */
} mdm_log_manager_info_t;

#endif
