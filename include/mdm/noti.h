/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Small status numbers that a server and its clients share through files, one file a key.
 *
 * A status is kept as decimal text in the file "/opt/etc/mdm/" followed by the key, as it stands: a
 * key with a "/" reaches into a subdirectory, and an empty key, which names the directory, always
 * fails. Keys are the program's own words: pass none that a stranger chose.
 *
 * The directory must exist; the library makes neither it nor its subdirectories. Every call opens,
 * reads or writes, and closes the file. A status stays until it is written again or its file is
 * removed.
 *
 * @code{.c}
 * #include <mdm/noti.h>
 *
 * mdm_write_noti("battery-level", 80);
 *
 * int32_t level = 0;
 * if (mdm_read_noti("battery-level", &level) == MDM_RESULT_SUCCESS) {
 *     printf("%d percent\n", level);
 * }
 * @endcode
 *
 * Thread safety: one lock serialises all calls of a process, one by one: what a thread has read may
 * have changed when it writes. The lock is held while a call logs, so a program's own
 * platform_log_vprint() must not call these functions. Nor may a thread be cancelled inside one of
 * them, which ends the process. A child that a program with several threads forks must not call
 * them before it executes another program: another thread may have held the lock, which nobody then
 * releases.
 *
 * Processes do not coordinate. A read while another process writes may find the file empty, and
 * fail, or take the end of a longer new text for the continuation of the old one. Two processes
 * that write at once may leave a mixture of both texts in the file, which is then read as a number.
 * Let one process write, and read while it does not, or agree on a lock.
 */
#ifndef MDM_NOTI_H
#define MDM_NOTI_H

#include <stdint.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * Reads the status of a key.
 *
 * The first word of the file counts: white space before it and all that follows it are ignored, and
 * so is what follows its digits: "42abc" is 42, "0x10" is 0. A word that begins with a zero byte is
 * 0. No more than the first 63 characters of a word are read. Reading a number sets `errno` to 0.
 *
 * @param p_key     the key.
 * @param p_status  receives the status; untouched on failure. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT for a null @p p_key;
 *         #MDM_RESULT_FAILED, with the reason in the log, if the file cannot be opened, read or
 *         closed, holds no word, or its word is no number of 32 bits.
 */
MDM_API int32_t mdm_read_noti(const char *p_key, int32_t *p_status);

/**
 * Stores the status of a key. The file is created if need be, with the process's default
 * permissions; what it held is gone once it has been opened, also when the call then fails.
 *
 * @param noti    the key.
 * @param status  the status.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT for a null @p noti;
 *         #MDM_RESULT_FAILED, with the reason in the log, if the file cannot be created, opened for
 *         reading and writing, written or closed.
 */
MDM_API int32_t mdm_write_noti(const char *noti, int32_t status);

MDM_END_DECLS

#endif
