/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The guarded path: ipc_open() opens untrusted bytes, and ipc_seal() makes bytes that every
 * receiver can open.
 *
 * The functions of mdm/ipc.h are the trusting path: they believe the bytes of a message and the
 * body of a sender. The guarded path checks both. ipc_open() is safe for any bytes. ipc_seal()
 * refuses a message that ipc_open() would refuse. Both paths have the same wire format: a sender
 * may use one path, and its receiver the other.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * static void show(const uint8_t *bytes, uint32_t length)
 * {
 *     ipc_fault_t fault;
 *     mdm_msg_t *msg = ipc_open(bytes, length, &fault);
 *     if (msg != NULL) {
 *         printf("%s\n", mdm_res_data(msg, NULL));
 *         ipc_close(msg);
 *     } else {
 *         gchar *reason = ipc_fault_describe(&fault);
 *         printf("%s\n", reason);
 *         g_free(reason);
 *     }
 * }
 *
 * int main(void)
 * {
 *     mdm_msg_t sent = {0};
 *     if (!mdm_res_set_data(&sent, 100, "ok", 2)) {
 *         return 1;
 *     }
 *     uint32_t length = 0;
 *     uint8_t *bytes = ipc_seal(&sent, &length, NULL);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *     show(bytes, length);
 *     show(bytes, length - 1);
 *     g_free(bytes);
 *     return 0;
 * }
 * // prints: ok
 * // prints: header.length announces a message of 54 bytes, 53 are there
 * @endcode
 *
 * The header of each body, below mdm/body/, has functions that fill a message and read it, and
 * begins with an example. mdm/body/typed.h has their rules.
 *
 * How a message is released depends on who filled it. The type of the variable tells the first two
 * cases apart:
 *
 * | filled by         | variable         | released by  | at the end of the scope         |
 * |-------------------|------------------|--------------|---------------------------------|
 * | ipc_open()        | `mdm_msg_t *msg` | ipc_close()  | `MDM_AUTO_CLOSE mdm_msg_t *msg` |
 * | ipc_deserialize() | `mdm_msg_t msg`  | ipc_free()   | `g_auto(mdm_msg_t) msg = {0};`  |
 * | the program       | `mdm_msg_t msg`  | the program  |                                 |
 *
 * Do not use `g_auto` for a record that was filled for sending, nor for a message that must not be
 * passed to ipc_free(). There is deliberately no `g_autoptr(mdm_msg_t)`: it could not tell an
 * opened message from a deserialised one. Compilers warn about many wrong releases, but not about
 * ipc_free() for an opened message.
 *
 * An opened message is one arena of memory. Never pass it to ipc_free(). Never free, reallocate or
 * take over a string, a record or a list of it: copy what must outlive it.
 *
 * An opened message has the fields that ipc_deserialize() makes of the same bytes in a zeroed
 * record. These are the differences:
 *
 * - Every field that the bytes do not carry is zero.
 * - Strings, records and lists live only as long as the message.
 * - A security string (`type` 68, 69) is in memory once; ipc_deserialize() makes two copies of it
 *   (Q-GUARDED-1).
 * - Nothing leaks: ipc_close() also releases the blocks that ipc_free() leaves to the owner.
 * - A phone_res body of `type` 439 or 440 holds the raw bytes of the message (Q-PHONE_RES-2).
 *   ipc_close() releases it like any other body; ipc_free() must not get such a message.
 * - ipc_open() refuses bytes for which ipc_deserialize() would read beyond the buffer.
 * - ipc_open() refuses a negative `data_size` if the category uses it as a length. This includes
 *   misc 122, for which ipc_deserialize() takes a negative `data_size` for 0 (Q-MISC-8).
 *
 * On both paths a list whose count is below 1 is empty (Q-WIRE-5). Only the count of misc 127 and
 * 128 is unsigned (Q-MISC-7).
 *
 * Thread safety: the functions keep no state. Any number of threads may work on different messages
 * at once.
 *
 * The log: these functions log no text of a message. ipc_open() and ipc_seal() log their entry and
 * their exit at level 0. If they refuse, they also log one line at level 3: "Refused: " and the
 * sentence of ipc_fault_describe(). ipc_close() and ipc_fault_describe() log nothing.
 *
 * Memory: no byte of a message makes ipc_open(), ipc_seal() or ipc_close() end the process. Without
 * memory ipc_open() and ipc_seal() refuse, and the path of the fault is "memory". An opened message
 * takes at most 10 times the length of its bytes and 4 KiB; where pointers have 32 bits, 6 times
 * and 4 KiB. Before ipc_open() allocates memory for a count or a length, it compares that number
 * with the remaining bytes. The channel must limit the length of a message.
 *
 * Ids such as Q-WIFI-3 stand in docs/quirks.md.
 */
#ifndef MDM_GUARDED_H
#define MDM_GUARDED_H

#include <glib.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/ipc.h"
#include "mdm/message.h"

/**
 * The largest number of zero bytes that ipc_seal() appends because the sender's `data_size` says
 * so. The wire format has no such limit (Q-GUARDED-3). The library chose this one: senders need
 * only a few zero bytes.
 */
#define MDM_MAX_PADDING 65536

MDM_BEGIN_DECLS

/**
 * The reason of a refusal. ipc_fault_describe() makes a sentence of it.
 *
 * A number above 4294967295 is stored as 4294967295. For a negative length `needed` is 4294967295,
 * too (Q-GUARDED-2).
 */
typedef struct ipc_fault {
    uint32_t offset;  /**< The offset of the field from the first byte of the message. For a text,
                          raw bytes or the elements of a list: the offset of their first byte,
                          behind the count. If ipc_seal() refuses a body: the offset of the body, or
                          of the byte where writing stopped. */
    uint32_t needed;  /**< How many bytes the field needs from `offset` on. For "header.length": the
                          size of the message that the length field announces, or 40, the size of
                          the smallest message; 4 if there is no whole length field. For
                          "header.type": 1, for the byte that is no message type. For "memory": how
                          many bytes of memory could not be allocated. 0 if a part of a sender's
                          message is missing or cannot be sent. */
    uint32_t left;    /**< How many bytes are left from `offset` on; 0 for "memory". */
    const char *path; /**< The name of the field, for example "wifi.network.detail.w3" or
                           "header.hdr_text". A static string: never release it. Every element of a
                           list has the same path ("security.account.str4"). The count of a list has
                           the path of the list ("security.accounts"). Raw bytes and a missing
                           payload have the path of their member ("wifi.data"). */
} ipc_fault_t;

/**
 * Describes a fault in one sentence for a person, without a full stop:
 *
 *     wifi.network.ssid at offset 56 needs 12 bytes, 3 are left
 *     header.length announces a message of 60 bytes, 57 are there
 *     wifi.data is missing
 *
 * ipc_open() and ipc_seal() log this sentence when they refuse. Programs should look at the members
 * of the fault, not at the sentence.
 *
 * @param fault  a fault that ipc_open() or ipc_seal() has written. Must not be null.
 *
 * @return A new string, which the caller releases with g_free(); never null. Without memory for it
 *         the call ends the process, as GLib does.
 */
MDM_API gchar *ipc_fault_describe(const ipc_fault_t *fault)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_RETURNS_NONNULL MDM_NONNULL(1);

/**
 * Releases an opened message with all its strings, records and lists. Call it once.
 *
 * @param msg  a message that ipc_open() returned, or null.
 */
MDM_API void ipc_close(mdm_msg_t *msg);

/**
 * Opens received bytes: makes the message that ipc_deserialize() would make of them in a zeroed
 * record.
 *
 * It refuses
 *
 * - bytes that ipc_deserialize() would reject, and fewer than 40 bytes, the size of the smallest
 *   message;
 * - bytes that end before a field ends;
 * - a count or a length that the remaining bytes cannot hold;
 * - a negative size that the category uses as a length.
 *
 * @param buffer  the received bytes, at any address; not changed and not kept. The call reads no
 *                byte behind them. Null is refused.
 * @param length  the exact number of bytes. Any number is allowed.
 * @param fault   receives the reason if the call refuses; otherwise untouched. May be null.
 *
 * @return A message that the caller releases with ipc_close(); null if the call refuses. If the
 *         message type has no category, only the header is filled and the body is zero.
 */
MDM_API mdm_msg_t *ipc_open(const uint8_t *buffer, uint32_t length, ipc_fault_t *fault)
    MDM_RELEASED_BY(ipc_close) MDM_WARN_UNUSED;

/**
 * Turns a message into the bytes that ipc_serialize() would return, unless a receiver could not
 * open them. ipc_open() opens all bytes that this call returns.
 *
 * It refuses the following. The path of the fault is in brackets; "size" means the path of the
 * body's `data_size`.
 *
 * - A null message ("message").
 * - A message type that is 0, above 80 or without a category ("header.type").
 * - A size that no message has ("header.length"). A message must be smaller than 2 GiB.
 * - A missing payload that `data_size` announces, or a missing part of a payload (the path of the
 *   missing part). A roaming record is always announced. A security item (56, 76) may be missing:
 *   sealing stores 0 in its `data_size` (Q-GUARDED-4). A null list of wifi, bluetooth, app or
 *   app_res is not missing, but empty.
 * - A `data` that is not null, but would not travel (size). Either `data_size` says that there is
 *   no payload, or the format has no payload in `data`: location, roaming_res, misc 123, 127 and
 *   128, container except 628 to 632.
 * - A list with a null element, and a list that is entered in the middle instead of by its first
 *   cell (the path of the list). Its count would differ from the number of elements written
 *   (Q-GUARDED-7).
 * - A negative `data_size` of raw bytes or of an array, in the categories that read it as a length:
 *   security, misc, apn, kiosk, container and those of mdm/body/single_list.h (size).
 * - A negative `data_size` to which the category adds the size of the payload: apn 387 and 393,
 *   eas 104 (size).
 * - A `data_size` above #MDM_MAX_PADDING, where the category appends that many zero bytes to the
 *   payload: wifi pairs, DHCP settings and triples, apn 387 and 393, eas 104 (size). Senders need
 *   only a small `data_size` there: any positive one makes the payload travel.
 * - A `data_size` other than 8 for a payload of app 140 or 141 (size). The receiver's payload would
 *   differ from the sender's (Q-APP-1).
 * - A payload of phone_res 439 or 440 ("phone_res.type"), for the same reason (Q-PHONE_RES-2).
 * - A message for which there is no memory ("memory").
 *
 * An opened message may be sealed, changed or unchanged. Unchanged, ipc_seal() refuses exactly the
 * messages of this table, a message that would reach 2 GiB, and one for which there is no memory:
 *
 * | category   | `type`               | opened with                         | path of the fault          |
 * |------------|----------------------|-------------------------------------|----------------------------|
 * | security   | 68, 69               | a list without a text               | `security.data`            |
 * | security   | 70, 71               | an empty list                       | `security.data`            |
 * | security   | raw bytes            | a `data_size` below 0               | `security.data_size`       |
 * | wifi       | pairs, 88, 319       | a `data_size` above 65536           | `wifi.data_size`           |
 * | wifi       | lists                | an empty text in the list           | `wifi.ssids`               |
 * | bluetooth  | lists                | an empty text in the list           | `bluetooth.names`          |
 * | eas        | 104                  | a `data_size` below 0               | `eas.data_size`            |
 * | eas        | 104                  | a `data_size` above 65536           | `eas.data_size`            |
 * | eas        | 106                  | an empty list                       | `eas.data`                 |
 * | app        | 4, 15                | an empty text in the list           | `app.packages`             |
 * | app        | 140, 141             | a `data_size` above 0 that is not 8 | `app.data_size`            |
 * | app_res    | package names        | an empty text in the list           | `app_res.packages`         |
 * | app_res    | 140, 141, 142        | an empty text in the list           | `app_res.item.name`        |
 * | app_res    | 172, 173, 174, 175   | an empty text in the list           | `app_res.control.pkg_list` |
 * | misc       | 127, 128             | an empty text in the list           | `misc.param_list`          |
 * | apn        | 387, 393             | a `data_size` below 0               | `apn.data_size`            |
 * | apn        | 387, 393             | a `data_size` above 65536           | `apn.data_size`            |
 * | apn        | 389, 390, 391        | an empty list                       | `apn.data`                 |
 * | browser    | any                  | a `data_size` above 0               | `browser.data`             |
 * | browser    | any                  | a `data_size` below 0               | `browser.data_size`        |
 * | date_time  | any                  | a `data_size` below 0               | `date_time.data_size`      |
 * | remote     | any                  | a `data_size` below 0               | `remote.data_size`         |
 * | vpn        | any                  | a `data_size` below 0               | `vpn.data_size`            |
 * | firewall   | any                  | a `data_size` below 0               | `firewall.data_size`       |
 * | res        | any                  | a `data_size` below 0               | `res.data_size`            |
 * | enterprise | any                  | a `data_size` above 0               | `enterprise.data`          |
 * | enterprise | any                  | a `data_size` below 0               | `enterprise.data_size`     |
 * | phone_res  | 439, 440             | a `data_size` above 0               | `phone_res.type`           |
 * | email      | 363                  | an empty list                       | `email.data`               |
 * | kiosk      | 612, 614             | an empty text                       | `kiosk.data`               |
 * | kiosk      | 618, 619, 621        | an empty list                       | `kiosk.data`               |
 * | none       | any                  | anything                            | `header.type`              |
 *
 * An empty list or text counts only if `data_size` announces a payload. The category "none" stands
 * for the message types without a category (Q-GUARDED-6).
 *
 * The bytes of an opened message that is sealed again may differ from the received ones: a security
 * list has lost its empty strings (Q-SECURITY-7), and some categories store a computed `data_size`.
 * Some categories append `data_size` zero bytes to the payload, or add the size of the payload to
 * `data_size` (Q-WIFI-1, Q-APN-1, Q-EAS-1). Set `data_size` of such a body before sealing it again:
 * the received one is the other sender's number.
 *
 * Some promises of the caller cannot be checked. `data` must point to the payload that the
 * discriminator selects, and raw bytes must be as long as `data_size` says.
 *
 * @param msg         the message. Some categories store the computed `data_size` in the body, as
 *                    ipc_serialize() does. If the call refuses, the message is unchanged
 *                    (Q-GUARDED-5).
 * @param out_length  receives the number of bytes; untouched if the call refuses. Must not be null.
 * @param fault       receives the reason if the call refuses; otherwise untouched. May be null.
 *
 * @return A new buffer of `*out_length` bytes, which the caller releases with g_free(); null if the
 *         call refuses.
 */
MDM_API uint8_t *ipc_seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t *fault)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_NONNULL(2);

MDM_END_DECLS

/* The cleanup function of MDM_AUTO_CLOSE. */
static inline void mdm_auto_close(mdm_msg_t **msg)
{
    ipc_close(*msg);
}

/**
 * Closes an opened message when its variable goes out of scope:
 *
 *     MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, length, NULL);
 */
#define MDM_AUTO_CLOSE __attribute__((__cleanup__(mdm_auto_close)))

/* Makes g_auto(mdm_msg_t). */
G_DEFINE_AUTO_CLEANUP_CLEAR_FUNC(mdm_msg_t, ipc_free)

#endif
