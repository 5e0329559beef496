/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The levelled logger of the library and of the processes that link it.
 *
 * Every line goes to the platform's system log; when a path has been set, the same line is also
 * appended to that file. One threshold for the whole process decides which lines are emitted.
 *
 * Texts of a message: the functions of mdm/ipc.h repeat some of them in lines of the levels 0 and 1.
 * mdm/ipc.h says which texts; mdm_log_set_level(#MDM_LOG_WARN) silences these lines. The functions
 * of mdm/util_policy.h log texts, too, some of them at level 3.
 *
 * Any thread may call any of these functions at any time. A line is never written to a path that
 * is being replaced, and lines from different threads never interleave inside the file; the
 * order of lines may differ between the system log and the file.
 *
 * Cancellation: no function here is a cancellation point. A thread that is cancelled while it logs
 * ends after the line: cancellation is off for the whole of an emitted line, so that no lock stays
 * locked, no file open and no line unfinished. A thread that does nothing but log needs
 * pthread_testcancel(). A thread with the asynchronous cancelability type must set the deferred type
 * before it calls any function of this library, as it must for nearly every function of the C
 * library.
 *
 * Signals: a signal handler must not log, nor set the path. Both take a lock, and logging allocates
 * memory: the handler may have interrupted a thread that was doing so.
 *
 * Fork: a child that a program with several threads forks must not log before it executes another
 * program. Another thread may have held the logger's lock, which nobody then releases.
 */
#ifndef MDM_LOG_H
#define MDM_LOG_H

#include <stdarg.h>
#include <stdint.h>

#include "mdm/api.h"

MDM_BEGIN_DECLS

/** A level: the lower, the more verbose. Any value is accepted; the named ones have a meaning. */
typedef uint32_t mdm_log_level_t;

enum {
    MDM_LOG_DEBUG = 0,    /**< Function entry and exit, some field dumps, texts among them. */
    MDM_LOG_INFO = 1,     /**< Field values, texts among them, and sizes. The threshold at load
                               time. */
    MDM_LOG_WARN = 2,     /**< Not used by the library; available to callers. */
    MDM_LOG_CRITICAL = 3, /**< Every failure. */
    MDM_LOG_NONE = 4,     /**< As a threshold: silence everything. */
};

enum {
    /** Buffer identifier that the logger passes to platform_log_vprint(): the system buffer. */
    MDM_PLATFORM_LOG_SYSTEM = 2,
};

/** Priorities that the logger passes to platform_log_vprint(). */
enum {
    MDM_PLATFORM_LOG_DEFAULT = 1, /**< Every level above 4. */
    MDM_PLATFORM_LOG_DEBUG = 3,
    MDM_PLATFORM_LOG_INFO = 4,
    MDM_PLATFORM_LOG_WARN = 5,
    MDM_PLATFORM_LOG_ERROR = 6,  /**< Level #MDM_LOG_CRITICAL. */
    MDM_PLATFORM_LOG_SILENT = 8, /**< Level #MDM_LOG_NONE. */
};

/**
 * Turns the logger on or off.
 *
 * @param flag  0 sets the threshold #MDM_LOG_NONE, anything else #MDM_LOG_INFO, whatever the
 *              threshold was before.
 */
MDM_API void mdm_log_set_enabled(int flag);

/**
 * Sets the threshold, for the lines that start after the call.
 *
 * @param level  lines below it are dropped; #MDM_LOG_NONE drops every line. Any value is accepted.
 */
MDM_API void mdm_log_set_level(mdm_log_level_t level);

/** @return The current threshold. */
MDM_API mdm_log_level_t mdm_log_get_level(void);

/**
 * Sets the file to which every emitted line is appended; null, the initial value, means none.
 *
 * The pointer is kept, not the text: the string must stay valid until the path is set again, and
 * when its contents change, the next line goes to the file that it then names. The file is opened
 * and closed for every line; it may be rotated or deleted at any time. A file that cannot be
 * opened is skipped without report.
 *
 * A line for which there is no memory is left out. Of a line that a full disk does not take whole,
 * nothing stays, unless another process has meanwhile appended to the file. Where the file can only
 * be appended to, the beginning stays, and the next line begins on a line of its own. The signals of
 * such writes do what the program has set: SIGXFSZ at a limit for the size of files, SIGPIPE for a
 * FIFO whose reader is gone. A FIFO without a reader makes every line wait for one, and cancellation
 * does not end that wait.
 *
 * @param path  the file's path, which stays the caller's, or null.
 *
 * @return 0, the result of releasing the logger's mutex.
 */
MDM_API int mdm_log_set_path(const char *path);

/**
 * Emits one line, unless the threshold drops it.
 *
 * The file receives the level, a blank, @p tag, a blank, the formatted text and a newline. Neither
 * @p tag nor @p format is checked. The text is the same in the system log and in the file: for "%m"
 * both have the caller's errno, which the call leaves as it was.
 *
 * @param level   the line's level.
 * @param tag     who logs.
 * @param format  the text, as for printf(3), and its arguments.
 *
 * @return The result of platform_log_vprint(); 0 for a dropped line.
 */
MDM_API int __mdm_log_print(mdm_log_level_t level, const char *tag, const char *format, ...)
    MDM_PRINTF(3, 4);

/**
 * The platform's system log. The library's own definition hands the line to syslog(3), as the
 * host program opened it; it is a weak symbol, so a program that defines this function puts its
 * own log in its place.
 *
 * The logger calls it with cancellation off and without its lock, possibly from several threads at
 * once. Status calls (mdm/noti.h) log with the status store's lock held, so it must not make one.
 *
 * The definition in the library keeps the order debug, info, warning, error; prints nothing for
 * #MDM_PLATFORM_LOG_SILENT; takes every other priority as a notice; and ignores @p buffer_id.
 *
 * @param buffer_id  #MDM_PLATFORM_LOG_SYSTEM.
 * @param priority   one of the platform's priorities above.
 * @param tag        who logs.
 * @param format     the text, as for vprintf(3), valid until the call returns. In a line of the
 *                   library itself it begins with the place: file, function, number of the line.
 * @param args       its arguments.
 *
 * @return The library's own: the number of characters of the formatted text; 0 for the silent
 *         priority; negative if the text could not be formatted or there was no memory for it.
 */
MDM_API int platform_log_vprint(int buffer_id, int priority, const char *tag, const char *format,
                                va_list args) MDM_PRINTF(4, 0);

MDM_END_DECLS

#endif
