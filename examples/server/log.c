/* SPDX-License-Identifier: Apache-2.0 */
#define SD_JOURNAL_SUPPRESS_LOCATION
#include "log.h"

#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <systemd/sd-journal.h>

#include "common/text.h"

/* One thread serves all requests, so there is one at a time. */
static struct {
    bool is_there;
    uid_t uid;
    mdm_category_t category;
} request;

mdm_log_level_t log_pause(void)
{
    const mdm_log_level_t level = mdm_log_get_level();
    if (level > MDM_LOG_INFO) {
        mdm_log_set_level(MDM_LOG_NONE);
    }
    return level;
}

void log_resume(mdm_log_level_t level)
{
    mdm_log_set_level(level);
}

void log_begin_request(uid_t uid)
{
    request.is_there = true;
    request.uid = uid;
    request.category = MDM_CATEGORY_NONE;
}

void log_set_category(mdm_category_t category)
{
    request.category = category;
}

void log_end_request(void)
{
    request.is_there = false;
}

static int severity_of(int priority)
{
    switch (priority) {
    case MDM_PLATFORM_LOG_DEBUG:
        return LOG_DEBUG;
    case MDM_PLATFORM_LOG_INFO:
        return LOG_INFO;
    case MDM_PLATFORM_LOG_WARN:
        return LOG_WARNING;
    case MDM_PLATFORM_LOG_ERROR:
        return LOG_ERR;
    default:
        return LOG_NOTICE;
    }
}

/* Whether standard error is the stream to the journal that systemd has connected. */
static bool has_journal(void)
{
    const char *stream = g_getenv("JOURNAL_STREAM");
    struct stat status;
    if (stream == NULL || fstat(STDERR_FILENO, &status) != 0) {
        return false;
    }
    char own[64];
    snprintf(own, sizeof own, "%ju:%ju", (uintmax_t)status.st_dev, (uintmax_t)status.st_ino);
    return strcmp(stream, own) == 0;
}

/* The library colours the lines that a terminal shows. */
static char *without_colours(const char *text)
{
    GString *plain = g_string_new(text);
    g_string_replace(plain, "\033[0;31m", "", 0);
    g_string_replace(plain, "\033[0;32m", "", 0);
    g_string_replace(plain, "\033[0;m", "", 0);
    char *escaped = text_escaped(plain->str);
    g_string_free(plain, TRUE);
    return escaped;
}

/* The parts of a line "file: function(line) > text". Another line is all text. */
struct parts {
    const char *function;
    const char *text;
};

static struct parts split(char *line)
{
    char *function = strstr(line, ": ");
    char *number = function != NULL ? strchr(function, '(') : NULL;
    char *text = number != NULL ? strstr(number, ") > ") : NULL;
    if (text == NULL) {
        return (struct parts){"", line};
    }
    *number = '\0';
    return (struct parts){function + strlen(": "), text + strlen(") > ")};
}

/* Without a request the fields of a request are left out. */
static void send_to_journal(int priority, const char *tag, char *line)
{
    const struct parts parts = split(line);
    char *fields[] = {
        g_strdup_printf("MESSAGE=%s", parts.text),
        g_strdup_printf("PRIORITY=%d", severity_of(priority)),
        g_strdup_printf("SYSLOG_IDENTIFIER=%s", tag),
        g_strdup_printf("CODE_FUNC=%s", parts.function),
        g_strdup_printf("PEER_UID=%lu", (unsigned long)request.uid),
        g_strdup_printf("MDM_CATEGORY=%s", mdm_category_name(request.category)),
    };
    enum { ALL = G_N_ELEMENTS(fields), OF_EVERY_LINE = ALL - 2 };
    struct iovec vector[ALL];
    for (size_t i = 0; i < ALL; ++i) {
        vector[i] = (struct iovec){fields[i], strlen(fields[i])};
    }
    sd_journal_sendv(vector, request.is_there ? ALL : OF_EVERY_LINE);
    for (size_t i = 0; i < ALL; ++i) {
        g_free(fields[i]);
    }
}

int platform_log_vprint(int buffer_id, int priority, const char *tag, const char *format,
                        va_list args)
{
    (void)buffer_id;
    if (priority == MDM_PLATFORM_LOG_SILENT) {
        return 0;
    }
    char *text = g_strdup_vprintf(format, args);
    char *line = without_colours(text);
    const int length = (int)strlen(line);
    if (has_journal()) {
        send_to_journal(priority, tag, line);
    } else {
        fprintf(stderr, "%s %s\n", tag, line);
    }
    g_free(line);
    g_free(text);
    return length;
}
