/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Status numbers that a server and its clients share through files. Each key has one file.
 *
 * The path of the file is "/opt/etc/mdm/" and the key, unchanged. A key with a "/" names a file in
 * a subdirectory. An empty key names the directory, and always fails. The keys should be constants
 * of the program: never take a key from untrusted bytes. The file holds the status as decimal text.
 *
 * The directory must exist: the library creates neither the directory nor its subdirectories. Every
 * call opens the file, reads or writes it, and closes it. A status stays until somebody writes it
 * again or removes its file.
 *
 * @code{.c}
 * #include <mdm/noti.h>
 * #include <mdm/result.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     mdm_write_noti("battery-level", 80);
 *
 *     int32_t level = 0;
 *     if (mdm_read_noti("battery-level", &level) != MDM_RESULT_SUCCESS) {
 *         return 1;
 *     }
 *     printf("%d percent\n", level);
 *     return 0;
 * }
 * // prints: 80 percent
 * @endcode
 *
 * Thread safety: any thread may call these functions. One lock makes all calls of a process run one
 * after the other. There is no lock over two calls: a status may change between a thread's read and
 * its write. The lock is held while a call logs, so a program's own platform_log_vprint() must not
 * call these functions (Q-STATUS-8). Do not cancel a thread inside one of them: that ends the
 * process. A child that a program with several threads forks must not call them before it executes
 * another program: another thread may have held the lock, which nobody releases in the child.
 *
 * There is no lock between processes. A read while another process writes may find the file empty,
 * and fail. Or it may join the old text with the end of a longer new one. Two
 * processes that write at once may leave a mixture of both texts, which is then read as a number.
 * So let one process write, and read only while it does not write; or agree on a lock.
 *
 * Ids such as Q-STATUS-2 stand in docs/quirks.md.
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
 * The call reads the first word of the file. It ignores white space before the word, and everything
 * behind the word. In the word it ignores what follows the digits: "42abc" is 42, "0x10" is 0
 * (Q-STATUS-2). A word that begins with a zero byte is 0 (Q-STATUS-3). Only the first 63 characters
 * of a word are read (Q-STATUS-4). Reading a number sets `errno` to 0.
 *
 * @param p_key     the key; not changed and not kept.
 * @param p_status  receives the status; untouched on failure. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT for a null @p p_key.
 *         #MDM_RESULT_FAILED, with the reason in the log, if the file cannot be opened, read or
 *         closed, if it holds no word, or if the word is no number of 32 bits.
 */
MDM_API int32_t mdm_read_noti(const char *p_key, int32_t *p_status);

/**
 * Stores the status of a key. The call creates a missing file, with the process's default
 * permissions. Opening the file removes its old contents, even if the call then fails (Q-STATUS-7).
 *
 * @param noti    the key; not changed and not kept.
 * @param status  the status.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT for a null @p noti. #MDM_RESULT_FAILED,
 *         with the reason in the log, if the file cannot be created, opened for reading and writing
 *         (Q-STATUS-6), written or closed.
 */
MDM_API int32_t mdm_write_noti(const char *noti, int32_t status);

MDM_END_DECLS

#endif
