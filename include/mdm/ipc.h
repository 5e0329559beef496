/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The IPC message codec: turns a message into bytes, turns bytes into a message, and releases
 * what a received message owns. These functions are the trusting path.
 *
 * The codec is not a transport. The caller sends and receives the bytes, whole and in order.
 *
 * Trust: ipc_deserialize() checks the length, the minimum length and the message type of received
 * bytes. It believes the length of the header's text, and every count and length inside a body.
 * Pass untrusted bytes to ipc_open() of mdm/guarded.h, never to ipc_deserialize().
 *
 * @code{.c}
 * #include <mdm/ipc.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     mdm_msg_t sent = {0};
 *     if (!mdm_res_set_data(&sent, 100, "ok", 2)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     uint8_t *bytes = ipc_serialize(&sent, &length);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t received = {0};
 *     if (ipc_deserialize(&received, bytes, length) ==
 *         MDM_RESULT_SUCCESS) {
 *         printf("%u bytes carry: %s\n", length,
 *                mdm_res_data(&received, NULL));
 *         ipc_free(&received);
 *     }
 *     g_free(bytes);
 *     return 0;
 * }
 * // prints: 54 bytes carry: ok
 * @endcode
 *
 * Thread safety: the codec keeps no state. Any number of threads may work on different messages at
 * once.
 *
 * Memory: every block that the codec allocates comes from GLib's allocator. Without memory, GLib
 * ends the process. There are three exceptions: without memory for a pair of app, or for a text or
 * a pair of misc, ipc_deserialize() leaves `data` as it was (Q-APP-3, Q-MISC-11).
 *
 * The log: these functions log some texts of a message unchanged. Level 0 has the package name of
 * an admin query. Level 1 has the names of wifi networks, the settings of a wifi pair (which may be
 * a secret), the names of bluetooth devices, the package names and pairs of app, the package names
 * and items of app_res, the bookmarks of misc, and the names of apn profiles. Level 1 is logged by
 * default. mdm_log_set_level(#MDM_LOG_WARN), or a higher threshold, silences both levels.
 * docs/security.md has a table of these lines ("What the log repeats"). The functions of
 * mdm/guarded.h log no text of a message.
 *
 * Ids such as Q-WIFI-3 stand in docs/quirks.md.
 */
#ifndef MDM_IPC_H
#define MDM_IPC_H

#include <glib.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/message.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * Turns a message into one contiguous buffer.
 *
 * The call computes the size of the body, allocates one buffer and writes the message. Bytes of the
 * message that no field fills are zero (Q-ENVELOPE-11). Some categories store the computed
 * `data_size` in the body; nothing else in @p msg changes.
 *
 * A body that cannot be written is only reported in the log: the call returns the buffer with the
 * bytes that were written before the failure (Q-ENVELOPE-7). The call writes beyond the buffer if
 * the body cannot be sized, or if its category writes more bytes than it counts (Q-BODY-1). Never
 * pass such a body; the header of each body says which bodies they are. Five
 * bytes of the library's own follow the message in the buffer: a zero byte and a guard of four
 * bytes. The guard only detects a short overrun, which the log then reports; it does not prevent
 * one (Q-ENVELOPE-8, Q-ENVELOPE-9).
 *
 * @param msg         the message. The caller fills `type` and the matching member of `body`.
 * @param out_length  receives the length of the message in bytes; untouched on failure. Must not be
 *                    null.
 *
 * @return A new buffer with `*out_length` bytes of message, which the caller releases with
 *         g_free(). Null if @p msg is null, if its type is 0, above 80 or without a category
 *         (Q-ENVELOPE-12), or if the computed length is negative or below 8.
 */
MDM_API uint8_t *ipc_serialize(mdm_msg_t *msg, uint32_t *out_length)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_NONNULL(2);

/**
 * Checks a received buffer and rebuilds the message from it.
 *
 * Pass a zeroed record. The call releases an old `hdr_text` with g_free() (Q-ENVELOPE-16). A field
 * of the body that the category does not assign keeps its old value, even a pointer to a released
 * block. `hdr_aux` is never touched. If the message type has no category, only the header is
 * filled.
 *
 * The strings, records and lists of the message are copies: the caller may release the buffer at
 * once. Release the message with ipc_free().
 *
 * @param msg     the record to fill; untouched if the call rejects the buffer.
 * @param buffer  the received bytes, at any alignment; not changed and not kept.
 * @param length  the exact number of bytes. Fewer than 4, the size of the length field, are
 *                rejected unread. The comparison with the length field is in unsigned 32-bit
 *                arithmetic: with 4 to 7 bytes, a false length field may match (Q-ENVELOPE-4). So
 *                reject packets of fewer than 40 bytes, the size of the smallest message, before
 *                this call.
 *
 * @return #MDM_RESULT_SUCCESS, even if the body could not be read: a body handler that fails is
 *         only reported in the log (Q-ENVELOPE-7). #MDM_RESULT_FAILED if @p msg or @p buffer is
 *         null, if the length field is not @p length - 8 or is below 32, or if the type is 0 or
 *         above 80.
 */
MDM_API int32_t ipc_deserialize(mdm_msg_t *msg, const uint8_t *buffer,
                                uint32_t length) MDM_WARN_UNUSED;

/**
 * Releases what a received message owns: always `hdr_text`, then the parts of the body that its
 * category releases. The record itself is the caller's, and its `type` is kept.
 *
 * Call it once for each received message. Some categories leave blocks allocated, or leave pointers
 * to released blocks: the header of each body says which. Do not pass a message that was filled for
 * sending, unless all its parts came from GLib's allocator. Never pass a phone_res message of
 * `type` 439 or 440 with a payload (mdm/body/phone_res.h, Q-PHONE_RES-2), nor a message that
 * ipc_open() returned.
 *
 * @param msg  a message that ipc_deserialize() has filled.
 *
 * @return #MDM_RESULT_SUCCESS; #MDM_RESULT_INVALID_ARGUMENT for a null @p msg (Q-ENVELOPE-14);
 *         #MDM_RESULT_FAILED for a type above 80; the call then releases nothing (Q-ENVELOPE-13).
 */
MDM_API int32_t ipc_free(mdm_msg_t *msg);

MDM_END_DECLS

#endif
