/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The guarded path: messages from bytes that nobody vouched for, and bytes that every receiver can
 * open.
 *
 * The functions of mdm/ipc.h believe what they are given. These do not: ipc_open() is safe whatever
 * the bytes are, and ipc_seal() sends nothing that ipc_open() would refuse. The format is the same:
 * either side may use either path.
 *
 * Opened and deserialised messages are two kinds, told apart by the type of the variable:
 *
 * - `mdm_msg_t *msg`, a pointer that ipc_open() returned, is closed with ipc_close(), or at the end
 *   of its scope if it is declared with #MDM_AUTO_CLOSE;
 * - `mdm_msg_t msg`, a record of the caller's own that ipc_deserialize() filled, is released with
 *   ipc_free(), or at the end of its scope if it is declared as `g_auto(mdm_msg_t) msg = {0};`. The
 *   second is not for a record that was filled for sending, nor for whatever ipc_free() must not be
 *   called with.
 *
 * There is deliberately no `g_autoptr(mdm_msg_t)`: it could not say which of the two it releases.
 * Compilers warn of much that mixes the two up, but not of ipc_free() for an opened message.
 *
 * An opened message never goes to ipc_free(), and nothing in it is freed, reallocated or taken over
 * on its own: all of it is one region of memory. Otherwise it reads like the message that
 * ipc_deserialize() makes of the same bytes in a zeroed record, except that
 *
 * - every field that did not travel is zero;
 * - no string, list or record outlives the message: what is to be kept is copied;
 * - no string is copied twice: the second copy of a security string (`type` 68, 69) is the first;
 * - nothing of it leaks: ipc_close() also takes back what ipc_free() leaves to the owner;
 * - phone_res 439 and 440 hold the raw bytes that travelled, and are closed like any other;
 * - the guarded path refuses, where ipc_deserialize() would read beyond the buffer, or where a size
 *   is negative that the category uses as a length: that of misc 122, too, which ipc_deserialize()
 *   takes for 0.
 *
 * A count of list elements below 1 announces an empty list on both paths; the count of misc 127 and
 * 128 has no sign.
 *
 * The functions keep no state: any number of threads may work on different messages at once.
 *
 * The log: no text of a message reaches it. ipc_open() and ipc_seal() log their entry and exit at
 * level 0 and, if they refuse, one line at level 3: "Refused: " and the sentence of
 * ipc_fault_describe(). ipc_close() and ipc_fault_describe() log nothing.
 *
 * No byte of a message makes ipc_open(), ipc_seal() or ipc_close() end the process. Where memory
 * cannot be had, they refuse, with the path "memory" in the fault. An opened message takes at most
 * 10 times the bytes' length and 4 KiB, 6 times where pointers have 32 bits. No count or length in
 * the bytes allocates anything before it is known that the bytes that are left can be as many. How
 * long a message may be is the channel's to limit.
 */
#ifndef MDM_GUARDED_H
#define MDM_GUARDED_H

#include <glib.h>
#include <stdint.h>

#include "mdm/api.h"
#include "mdm/ipc.h"
#include "mdm/message.h"

/** The most zeros that ipc_seal() adds to a message because the sender's `data_size` says so. */
#define MDM_MAX_PADDING 65536

MDM_BEGIN_DECLS

/**
 * Why bytes were not opened, or a message was not sealed. ipc_fault_describe() makes a sentence of
 * it.
 *
 * A number above 4294967295 reads as 4294967295, and so does what a negative length would need.
 */
typedef struct ipc_fault {
    uint32_t offset;  /**< Where in the bytes. For a text, for raw bytes and for the elements of a
                          list: where they begin, behind their count. */
    uint32_t needed;  /**< How many bytes were needed from there on. For "header.length": the whole
                          message, as its length field or the smallest message has it, and 4 where
                          not even that field is there. For "header.type": the one byte that is no
                          message type. For "memory": how many bytes of memory could not be had. 0
                          for a part of a sender's message that is missing or cannot be sent. */
    uint32_t left;    /**< How many bytes were left there; 0 for "memory". */
    const char *path; /**< Which field, for example "wifi.network.detail.w3" or "header.hdr_text". A
                           static string. Elements of a list are named like one of them
                           ("security.account.str4"), their count like the list
                           ("security.accounts"), raw bytes and a missing payload like the member
                           that holds them ("wifi.data"). */
} ipc_fault_t;

/**
 * Says in one sentence for a person what a fault says in numbers, without a full stop:
 *
 *     wifi.network.ssid at offset 56 needs 12 bytes, 3 are left
 *     header.length announces a message of 60 bytes, 57 are there
 *     wifi.data is missing
 *
 * The functions of this file log this sentence when they refuse. It is for reading: programs look
 * at the fault itself.
 *
 * @param fault  a fault that one of these functions has written. Must not be null.
 *
 * @return A new string, which the caller releases with g_free(); never null. Without memory for it
 *         the call ends the process, as GLib does.
 */
MDM_API gchar *ipc_fault_describe(const ipc_fault_t *fault)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_RETURNS_NONNULL MDM_NONNULL(1);

/**
 * Gives back an opened message, with every string, record and list of it.
 *
 * @param msg  a message that ipc_open() returned, or null.
 */
MDM_API void ipc_close(mdm_msg_t *msg);

/**
 * Opens received bytes: returns the message that ipc_deserialize() would make of them in a zeroed
 * record.
 *
 * It refuses bytes that fail a check of the envelope, and bytes from which any field would have to
 * be read behind their end. It refuses a count or a length that cannot be true of the bytes that
 * are left, and a negative size that the category uses as a length.
 *
 * @param buffer  the received bytes, at any address; not changed and not kept. Nothing behind them
 *                is read.
 * @param length  their exact number; any will do.
 * @param fault   receives the reason on refusal and is untouched otherwise. May be null.
 *
 * @return A message that the caller gives back with ipc_close(); null on refusal. A message type
 *         without a category has the header only.
 */
MDM_API mdm_msg_t *ipc_open(const uint8_t *buffer, uint32_t length, ipc_fault_t *fault)
    MDM_RELEASED_BY(ipc_close) MDM_WARN_UNUSED;

/**
 * Turns a message into the bytes that ipc_serialize() would return, if they are sound. What is
 * sealed can be opened.
 *
 * It refuses
 *
 * - a null message ("message"), a type without a category ("header.type"), and a size that no
 *   message has ("header.length");
 * - a body without the payload that its `data_size` announces, and a part that is missing in a
 *   payload (the path of that part); but not a security item, 56 or 76, whose `data_size` sealing
 *   sets;
 * - a body with anything in `data` that would not travel, because its `data_size` says that there is
 *   no payload, or because the format has none in `data`: location, roaming_res, misc 123, 127 and
 *   128, container except 628 to 632 (the path of the size);
 * - a list with a null element, and a list that is not handed over by its first cell: not as many
 *   elements would be written as are counted (the path of the list);
 * - a negative `data_size` of raw bytes or of an array, and one to which the category adds the
 *   payload's size: apn 387 and 393, eas 104 (the path of the size);
 * - more than #MDM_MAX_PADDING zeros: wifi pairs, DHCP settings and triples, apn 387 and 393, and
 *   eas 104 add as many zeros to a message as the sender's `data_size` says. No sender means more
 *   than a few: any size makes the payload travel (the path of the size);
 * - an app 140 or 141 of another `data_size` than 8 (the path of the size), and a phone_res 439 or
 *   440 with a payload (the path of the type), because a receiver's copy of them is not what the
 *   sender's was;
 * - a message for which there is no memory ("memory").
 *
 * A message that was opened may be sealed, as it is or changed. These are refused as they are, and
 * no others, but for one that would reach 2 GiB and one for which there is no memory:
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
 * An empty list or text counts only where `data_size` announces it. A message of the category
 * "none" has a type without a category.
 *
 * A message that is sealed again need not have the bytes that it was opened from: a security list
 * has lost its empty strings, and some categories store a `data_size` of their own. Where a
 * category adds `data_size` zeros to a message, or the payload's size to `data_size`, set it anew
 * first: it is the other sender's number.
 *
 * What a body points at must otherwise be what its discriminator says, and as long as its
 * `data_size` says: that is the caller's word, and cannot be checked.
 *
 * @param msg         the message. Some categories store the computed `data_size` in the body, as
 *                    ipc_serialize() does; on refusal the message is as it was.
 * @param out_length  receives the number of bytes; untouched on refusal. Must not be null.
 * @param fault       receives the reason on refusal and is untouched otherwise. May be null.
 *
 * @return A new buffer of `*out_length` bytes, which the caller releases with g_free(); null on
 *         refusal.
 */
MDM_API uint8_t *ipc_seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t *fault)
    MDM_RELEASED_BY(g_free) MDM_WARN_UNUSED MDM_NONNULL(2);

MDM_END_DECLS

/* What MDM_AUTO_CLOSE calls. */
static inline void mdm_auto_close(mdm_msg_t **msg)
{
    ipc_close(*msg);
}

/**
 * Closes an opened message where its variable goes out of scope:
 *
 *     MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, length, NULL);
 */
#define MDM_AUTO_CLOSE __attribute__((__cleanup__(mdm_auto_close)))

/* Makes g_auto(mdm_msg_t). */
G_DEFINE_AUTO_CLEANUP_CLEAR_FUNC(mdm_msg_t, ipc_free)

#endif
