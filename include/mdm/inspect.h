/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The parts of a message: ipc_inspect() shows them one by one, and ipc_compose() makes a message of
 * them.
 *
 * A part is a field of the message with its place in the bytes. No schema is needed: both functions
 * run the code that reads messages for ipc_open(). They show what this code reads, or give it what
 * it asks for.
 *
 * @code{.c}
 * #include <mdm/inspect.h>
 * #include <stdio.h>
 *
 * static bool print(const ipc_part_t *part, void *user_data)
 * {
 *     if (g_str_has_prefix(part->path, (const char *)user_data)) {
 *         printf("%u: %s, %u bytes\n", part->offset, part->path,
 *                part->size);
 *     }
 *     return true;
 * }
 *
 * int main(void)
 * {
 *     mdm_msg_t msg = {0};
 *     if (!mdm_res_set_data(&msg, 100, "ok", 2)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     uint8_t *bytes = ipc_seal(&msg, &length, NULL);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *     char category[] = "res.";
 *     const int32_t result =
 *         ipc_inspect(bytes, length, print, category, NULL);
 *     g_free(bytes);
 *     return result == MDM_RESULT_SUCCESS ? 0 : 1;
 * }
 * // prints: 40: res.type, 4 bytes
 * // prints: 44: res.param, 4 bytes
 * // prints: 48: res.data_size, 4 bytes
 * // prints: 52: res.data, 2 bytes
 * @endcode
 *
 * A path has two names or more: the category, then the field, with the record that it belongs to
 * between them. The paths of the message head begin with "header". The bytes behind the last field
 * have a path of one name, "padding" or "rest". The path of a list's count is the path of the list:
 *
 * | part                                         | path                       | element | inner |
 * |----------------------------------------------|----------------------------|---------|-------|
 * | the second field of the header               | "header.type"              | -1      | -1    |
 * | a field of a body                            | "wifi.data_size"           | -1      | -1    |
 * | a field of a record                          | "wifi.network.detail.w3"   | -1      | -1    |
 * | the count of a list                          | "wifi.ssids"               | -1      | -1    |
 * | the first text of this list                  | "wifi.ssids"               | 0       | -1    |
 * | a field of a list's third record             | "apn.profile.num0"         | 2       | -1    |
 * | the count of a list in another list's record | "app_res.control.pkg_list" | 2       | -1    |
 * | the first text of the inner list             | "app_res.control.pkg_list" | 2       | 0     |
 *
 * Thread safety: the functions keep no state. Any number of threads may use them at once.
 *
 * Memory: the functions take memory for records and lists as ipc_open() does, but none for texts
 * and none for a part.
 */
#ifndef MDM_INSPECT_H
#define MDM_INSPECT_H

#include <glib.h>
#include <stdbool.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/guarded.h"
#include "mdm/types.h"

MDM_BEGIN_DECLS

/** What a part is. The numbers are part of the binary interface. */
typedef enum ipc_part_kind {
    /** A byte: `number`. */
    IPC_PART_U8 = 0,
    /** A word: `number`. */
    IPC_PART_U32 = 1,
    /** A word with a sign: `number`, converted to int32_t. */
    IPC_PART_I32 = 2,
    /** How many elements of a list follow: `number`. The count of "misc.param_list" has no sign
     * (Q-MISC-7). Any other count, converted to int32_t, announces no elements if it is below 1
     * (Q-WIRE-5). Also the count of a text whose bytes are not all there. */
    IPC_PART_COUNT = 3,
    /** A text: `bytes`. The part includes the four bytes of its count. */
    IPC_PART_STR = 4,
    /** Raw bytes: `bytes`. */
    IPC_PART_BYTES = 5,
    /** Bytes of the header that no reader looks at: `bytes`. */
    IPC_PART_RESERVED = 6,
    /** The bytes behind the last field that a reader looks at: `bytes`. They are zeros that a
     * sender has appended, or a payload that the category leaves unread (Q-SINGLE_LIST-1). */
    IPC_PART_PADDING = 7,
    /** The bytes behind a fault: `bytes`. */
    IPC_PART_REST = 8,
} ipc_part_kind_t;

/** A part of a message. */
typedef struct ipc_part {
    const char *path;     /**< The name of the field. A static text. The paths of bytes that belong
                               to no field are "header.reserved", "padding" and "rest". */
    ipc_part_kind_t kind; /**< What the part is. */
    int32_t element;      /**< The position, from 0, in the list that the part belongs to; -1
                               outside of lists. */
    int32_t inner;        /**< The position in the list within that element; -1 outside of such
                               lists. */
    uint32_t offset;      /**< The offset of its first byte from the first byte of the message. */
    uint32_t size;        /**< How many bytes of the message belong to it. */
    uint32_t number;      /**< The value of a number; 0 for the others. */
    uint32_t length;      /**< How many `bytes` it has. */
    const uint8_t *bytes; /**< The value of a text or of bytes: `length` bytes without a terminator.
                               Null for numbers. */
} ipc_part_t;

/**
 * Looks at a part.
 *
 * @param part       the part. `bytes` points into the buffer that is inspected.
 * @param user_data  what was passed to ipc_inspect().
 *
 * @return Whether to go on.
 */
typedef bool (*ipc_visit_t)(const ipc_part_t *part, void *user_data);

/**
 * Shows the parts of received bytes in the order of the bytes.
 *
 * Every byte belongs to one part. There is no gap and no overlap. No part is empty: the part of an
 * empty text has the four bytes of its count.
 *
 * The call accepts the bytes that ipc_open() accepts, and refuses the others with the same fault.
 * It shows the parts that stand before the fault, then the rest as one part, which begins at the
 * offset of the fault. If the length field is wrong, everything is the rest.
 *
 * Without memory the call refuses bytes that are whole, with the path "memory". The rest begins
 * behind the parts that were shown. ipc_open() and ipc_inspect() take different amounts of memory,
 * so one of them may refuse bytes that the other accepts.
 *
 * Nothing is logged but a refusal: one line at level 3, as ipc_open() logs it.
 *
 * @param buffer     the bytes, at any address; not changed. The call reads no byte behind them.
 *                   Null is refused.
 * @param length     the exact number of bytes. Any number is allowed.
 * @param visit      is called for each part. If it returns false, no other part is shown. It must
 *                   not throw.
 * @param user_data  is passed to `visit`.
 * @param fault      receives the reason if the call refuses; otherwise untouched. May be null.
 *
 * @return #MDM_RESULT_SUCCESS: ipc_open() accepts the bytes, or `visit` has stopped before a fault.
 *         #MDM_RESULT_FAILED: the call refuses the bytes.
 */
MDM_API int32_t ipc_inspect(const uint8_t *buffer, uint32_t length, ipc_visit_t visit,
                            void *user_data, ipc_fault_t *fault) MDM_NONNULL(3);

/**
 * Gives the value of a part.
 *
 * @param part       the part that the message needs next. `path`, `kind`, `element`, `inner` and
 *                   `offset` are set. For raw bytes and reserved bytes `length` is set, too: the
 *                   answer needs that many. The function sets `number`, at most 255 for a byte, or
 *                   `bytes` and `length`. `bytes` may be null if `length` is 0. They have to stay
 *                   until the function is called again, or ipc_compose() returns. Changes of the
 *                   other members have no effect.
 * @param user_data  what was passed to ipc_compose().
 *
 * @return False if there is no such value.
 */
typedef bool (*ipc_answer_t)(ipc_part_t *part, void *user_data);

/**
 * Makes a message of its parts: asks for each of them in the order of the bytes.
 *
 * ipc_open() accepts all bytes that this call returns. A value decides which parts follow, as it
 * does in received bytes: the message type, the discriminator, `data_size`, a count. The last part
 * is always the padding; for a message without padding its `length` is 0. The number of
 * "header.length" is not used, because the call computes it.
 *
 * The parts that ipc_inspect() shows of accepted bytes, given as answers, make the same bytes. So
 * this call makes every message that can be opened, also those that no sender makes. A sender calls
 * ipc_seal().
 *
 * Nothing is logged but a refusal: one line at level 3, as ipc_open() logs it.
 *
 * @param answer      gives the parts. It must not throw.
 * @param user_data   is passed to `answer`.
 * @param out_length  receives the number of bytes; untouched if the call refuses.
 * @param fault       receives the reason if the call refuses; otherwise untouched. May be null. For
 *                    an answer that is missing or wrong it has the path and the offset of the part,
 *                    in `needed` how many bytes the part takes at least, and 0 in `left`.
 *
 * @return A new buffer of `*out_length` bytes, which the caller releases with g_free(). Null if an
 *         answer is missing or is no valid number, without memory, and for 4 GiB and more.
 */
MDM_API uint8_t *ipc_compose(ipc_answer_t answer, void *user_data, uint32_t *out_length,
                             ipc_fault_t *fault) MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED
    MDM_NONNULL(1, 3);

MDM_END_DECLS

/**
 * @param type  a message type.
 * @return The name of its category, "wifi" for 7; "none" if it has no category.
 */
MDM_INLINE const char *ipc_category_name(uint8_t type)
{
    return mdm_category_name(mdm_category_of(type));
}

/**
 * @param type           a message type.
 * @param discriminator  the `type` of the body: the bits of the number, with or without a sign.
 * @return The name of the form that both select, "wifi.network" for 7 and 345; "none" for a message
 *         type without a category.
 */
MDM_INLINE const char *ipc_form_name(uint8_t type, uint32_t discriminator)
{
    mdm_msg_t msg;
    memset(&msg, 0, sizeof msg);
    msg.type = type;
    msg.body.res.type = discriminator; /* every body begins with its discriminator */
    return mdm_form_name(mdm_form_of(&msg));
}

#endif
