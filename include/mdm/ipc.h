/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The IPC message codec: turns a message into bytes, bytes into a message, and releases what a
 * received message owns.
 *
 * The codec keeps no state: any number of threads may work on different messages at once. It is
 * not a transport: sending and receiving the bytes, whole and in order, is the caller's job.
 *
 * Trust: of a received buffer the length, the minimum length and the message type are checked;
 * the count of the header's text and every count and length inside a body are believed. Bytes
 * whose sender could lie about them must not reach ipc_deserialize(), but ipc_open() of
 * mdm/guarded.h.
 *
 * The log: these functions log texts of a message as they are. Level 0 has the package name of an
 * admin query. Level 1 has names of wifi networks, settings of a wifi pair (which may be a secret),
 * names of bluetooth devices, package names and pairs of app, package names and items of app_res,
 * bookmarks of misc, and names of apn profiles. Level 1 is logged by default.
 * mdm_log_set_level(#MDM_LOG_WARN), or a higher threshold, silences both levels. docs/security.md
 * has a table of these lines ("What the log repeats"). The functions of mdm/guarded.h log no text
 * of a message.
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
 * The body's size is computed first, then one buffer is allocated and written. Bytes of the message
 * that nobody writes are zero. Some categories store the computed `data_size` in the body; nothing
 * else in @p msg changes.
 *
 * A body that cannot be written is only reported in the log: the buffer is still returned, with
 * whatever was written before the failure. A body that cannot be sized, or that a category counts
 * shorter than it writes it, has no room in the buffer: the bodies' documentation says what a
 * sender must not pass. The guard behind the message reports a short overrun in the log; it does
 * not prevent one.
 *
 * @param msg         the message; `type` and the matching member of `body` must be filled.
 * @param out_length  receives the message's length in bytes; untouched on failure. Must not be
 *                    null.
 *
 * @return A new buffer of `*out_length` bytes, which the caller releases with g_free(). Null if
 *         @p msg is null, its type is 0 or above 80, its type has no category, or the computed
 *         length is negative or below 8.
 */
MDM_API uint8_t *ipc_serialize(mdm_msg_t *msg, uint32_t *out_length)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_NONNULL(2);

/**
 * Checks a received buffer and rebuilds the message from it.
 *
 * Pass a zeroed record: an old `hdr_text` is released with g_free(), and a body field that the
 * category does not assign keeps what it held, be it a pointer that a release left dangling.
 * `hdr_aux` is never touched. A message type without a category fills the header only.
 *
 * The strings, records and lists of the message are copies: the buffer may be released at once.
 *
 * @param msg     the record to fill; untouched when the buffer is rejected.
 * @param buffer  the received bytes, at any alignment; not changed and not kept.
 * @param length  their exact number. Fewer than 4, the size of the length field, are rejected
 *                unread. The length is compared in unsigned 32-bit arithmetic, in which 4 to 7 may
 *                match a lying length field: reject packets of fewer than 40 bytes, the smallest
 *                message, before they come here.
 *
 * @return #MDM_RESULT_SUCCESS, whatever became of the body (a body handler that fails is reported
 *         in the log). #MDM_RESULT_FAILED if @p msg or @p buffer is null, the length field is not
 *         @p length - 8 or is below 32, or the type is 0 or above 80.
 */
MDM_API int32_t ipc_deserialize(mdm_msg_t *msg, const uint8_t *buffer,
                                uint32_t length) MDM_WARN_UNUSED;

/**
 * Releases what a received message owns: `hdr_text`, always, and then the heap parts of the body
 * that its category releases. The record itself is the caller's, and its `type` is kept.
 *
 * Call it once for each received message. What some categories leave allocated or dangling is
 * documented with their bodies. Do not call it on a message that was filled for sending, unless
 * every part of it came from GLib's allocator.
 *
 * @param msg  a message that ipc_deserialize() has filled.
 *
 * @return #MDM_RESULT_SUCCESS; #MDM_RESULT_INVALID_ARGUMENT for a null @p msg;
 *         #MDM_RESULT_FAILED for a type above 80, which releases nothing.
 */
MDM_API int32_t ipc_free(mdm_msg_t *msg);

MDM_END_DECLS

#endif
