/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The levelled logger of the library and of the processes that link it.
 *
 * Every line goes to the platform's system log. If a path is set, the same line is also appended to
 * that file. One threshold for the whole process decides which lines are logged. When the library
 * is loaded, the threshold is #MDM_LOG_INFO and no path is set.
 *
 * @code{.c}
 * #include <mdm/log.h>
 *
 * int main(void)
 * {
 *     mdm_log_set_level(MDM_LOG_WARN);
 *     mdm_log_set_path("/dev/stdout");  // as a rule a file
 *     __mdm_log_print(MDM_LOG_INFO, "SERVER", "started");
 *     __mdm_log_print(MDM_LOG_CRITICAL, "SERVER", "cannot open %s",
 *                     "rules");
 *     return 0;
 * }
 * // prints: 3 SERVER cannot open rules
 * @endcode
 *
 * Texts of a message: the functions of mdm/ipc.h repeat some of them in lines of level 0 and level
 * 1, and mdm/ipc.h says which. mdm_log_set_level(#MDM_LOG_WARN) silences these lines. The functions
 * of mdm/util_policy.h log texts, too, some of them at level 3.
 *
 * Thread safety: any thread may call any of these functions at any time. A line never goes to a
 * path that is being replaced. Lines of different threads never interleave inside the file. The
 * order of lines may differ between the system log and the file.
 *
 * Cancellation: no function here is a cancellation point. Cancellation is off while a line is
 * logged. A thread that is cancelled meanwhile ends after the line: no lock stays locked, no file
 * open and no line unfinished. A thread that does nothing but log needs pthread_testcancel(). A
 * thread with the asynchronous cancelability type must set the deferred type before it calls any
 * function of this library, as before nearly every function of the C library.
 *
 * Signals: a signal handler must not log, nor set the path. Both take a lock, and logging allocates
 * memory. The handler may have interrupted a thread that was doing so.
 *
 * Fork: a child that a program with several threads forks must not log before it executes another
 * program. Another thread may have held the logger's lock at the fork. In the child, nobody
 * releases that lock.
 *
 * Ids such as Q-LOG-2 stand in docs/quirks.md.
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
    MDM_LOG_DEBUG = 0,    /**< Function entry and exit, and some fields, texts among them. */
    MDM_LOG_INFO = 1,     /**< Field values, texts among them, and sizes. The threshold when the
                               library is loaded. */
    MDM_LOG_WARN = 2,     /**< The library does not use it; callers may. */
    MDM_LOG_CRITICAL = 3, /**< Every failure. */
    MDM_LOG_NONE = 4,     /**< As a threshold: no line is logged. */
};

enum {
    /** The buffer that the logger passes to platform_log_vprint(): the system buffer. */
    MDM_PLATFORM_LOG_SYSTEM = 2,
};

/** The priorities that the logger passes to platform_log_vprint(), by the level of the line. */
enum {
    MDM_PLATFORM_LOG_DEFAULT = 1, /**< Every level above 4 (Q-LOG-6). */
    MDM_PLATFORM_LOG_DEBUG = 3,   /**< Level #MDM_LOG_DEBUG. */
    MDM_PLATFORM_LOG_INFO = 4,    /**< Level #MDM_LOG_INFO. */
    MDM_PLATFORM_LOG_WARN = 5,    /**< Level #MDM_LOG_WARN. */
    MDM_PLATFORM_LOG_ERROR = 6,   /**< Level #MDM_LOG_CRITICAL. */
    MDM_PLATFORM_LOG_SILENT = 8,  /**< Level #MDM_LOG_NONE. */
};

/**
 * Turns the logger on or off.
 *
 * @param flag  0 sets the threshold to #MDM_LOG_NONE, any other number to #MDM_LOG_INFO. The call
 *              does not restore an earlier threshold (Q-LOG-3).
 */
MDM_API void mdm_log_set_enabled(int flag);

/**
 * Sets the threshold for the lines that start after the call.
 *
 * @param level  the threshold. The logger drops lines of a lower level. #MDM_LOG_NONE drops every
 *               line (Q-LOG-2). Any value is accepted.
 */
MDM_API void mdm_log_set_level(mdm_log_level_t level);

/** @return The current threshold. */
MDM_API mdm_log_level_t mdm_log_get_level(void);

/**
 * Sets the file to which every logged line is appended. Null, the initial value, means no file.
 *
 * The logger keeps the pointer, not the text (Q-LOG-4). The string must stay valid until the path
 * is set again. If the text changes, the next line goes to the file that the new text names. The
 * logger opens and closes the file for every line, so the file may be rotated or deleted at any
 * time. It creates a missing file with the process's default permissions. It skips a file that
 * cannot be opened, without a report (Q-LOG-5).
 *
 * Without memory for a line, the file does not get it. If a full disk takes only the beginning of a
 * line, the logger removes that beginning, unless another process has meanwhile appended to the
 * file. If the file can only be appended to, the beginning stays, and the next line begins on a
 * line of its own. The signals of such writes do what the program has set: SIGXFSZ at a limit for
 * the size of files, SIGPIPE for a FIFO whose reader is gone. A FIFO without a reader makes every
 * line wait for one, and cancellation does not end that wait.
 *
 * @param path  the path of the file, or null. The string stays the caller's.
 *
 * @return 0, the result of unlocking the logger's mutex.
 */
MDM_API int mdm_log_set_path(const char *path);

/**
 * Logs one line, unless the threshold drops it.
 *
 * The line in the file is the level, a blank, @p tag, a blank, the formatted text and a newline.
 * The call checks neither @p tag nor @p format. The text is the same in the system log and in the
 * file: for "%m" both have the caller's errno. The call leaves errno unchanged.
 *
 * @param level   the level of the line.
 * @param tag     the name of the program or module that logs.
 * @param format  the text, as for printf(3), and its arguments.
 *
 * @return The result of platform_log_vprint(); 0 for a dropped line.
 */
MDM_API int __mdm_log_print(mdm_log_level_t level, const char *tag, const char *format, ...)
    MDM_PRINTF(3, 4);

/**
 * Writes one line to the platform's system log.
 *
 * The library's own definition passes the line to syslog(3), with the identity and the facility
 * that the host program chose with openlog(3). It is a weak symbol: a program that defines this
 * function replaces it by its own log.
 *
 * Rules for a definition of your own: the logger calls it with cancellation off and without the
 * logger's lock. Several threads may call it at once. The functions of mdm/noti.h log while they
 * hold the lock of the status store, so the definition must not call them (Q-STATUS-8).
 *
 * The library's definition maps the priorities debug, info, warn and error to the severities of
 * syslog(3) in the same order. It prints nothing for #MDM_PLATFORM_LOG_SILENT. Every other priority
 * becomes a notice (Q-LOG-7). It ignores @p buffer_id.
 *
 * @param buffer_id  #MDM_PLATFORM_LOG_SYSTEM.
 * @param priority   a priority, like #MDM_PLATFORM_LOG_INFO.
 * @param tag        the name of the program or module that logs; "MDM_COMMON" for the library's own
 *                   lines.
 * @param format     the text, as for vprintf(3), valid until the call returns. The text of the
 *                   library's own lines begins with the file, the function and the line number.
 * @param args       the arguments of @p format.
 *
 * @return From the library's definition: the number of characters of the formatted text; 0 for the
 *         silent priority; negative if the text could not be formatted or if there was no memory.
 */
MDM_API int platform_log_vprint(int buffer_id, int priority, const char *tag, const char *format,
                                va_list args) MDM_PRINTF(4, 0);

MDM_END_DECLS

#endif
