/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The server's own log lines. They have the form of the library's lines, and go the same way: to
 * the journal if standard error is connected to it, otherwise to standard error, and to the file of
 * the option --log-file.
 *
 * No line has a text of a message in it. The names of programs are escaped, because their users
 * choose them.
 */
#ifndef SERVER_LOG_H
#define SERVER_LOG_H

#include <sys/types.h>

#include <glib.h>

#include <mdm/log.h>
#include <mdm/types.h>

#define LOG_TAG "MDM_SERVER"

/* The format is the first of the further arguments. */
#define LOG_LINE(level, ...)                                                                      \
    do {                                                                                          \
        if (mdm_log_get_level() <= (level)) {                                                     \
            char *log_text = g_strdup_printf(__VA_ARGS__);                                        \
            __mdm_log_print(level, LOG_TAG, "%s: %s(%d) > %s", LOG_FILE_NAME, __func__, __LINE__, \
                            log_text);                                                            \
            g_free(log_text);                                                                     \
        }                                                                                         \
    } while (0)

/* The name of the source without its directory. */
#define LOG_FILE_NAME (__builtin_strrchr("/" __FILE__, '/') + 1)

#define log_info(...) LOG_LINE(MDM_LOG_INFO, __VA_ARGS__)
#define log_warn(...) LOG_LINE(MDM_LOG_WARN, __VA_ARGS__)
#define log_error(...) LOG_LINE(MDM_LOG_CRITICAL, __VA_ARGS__)

/*
 * Silences the library until log_resume(). It logs each refusal at level 3, so clients could fill
 * the log; the server has lines of its own, at most one a minute for each user. At level 1 and
 * below the library's lines stay.
 */
mdm_log_level_t log_pause(void);
void log_resume(mdm_log_level_t level);

/* The user and the category that the next lines are about: fields of each line in the journal. */
void log_begin_request(uid_t uid);
void log_set_category(mdm_category_t category);
void log_end_request(void);

#endif
