// SPDX-License-Identifier: Apache-2.0
//
// The adapter from the logger to this system's log, syslog(3).
#include <cstdio>
#include <cstdlib>

#include <syslog.h>

#include "log/log.hpp"

namespace {

int severity_of(int priority)
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
        return LOG_NOTICE;  // Q-LOG-7
    }
}

}  // namespace

// Weak, so that a program's own definition replaces it. It names no facility, so the facility that
// the program chose with openlog(3) applies.
__attribute__((weak)) int platform_log_vprint(int /*buffer_id*/, int priority, const char *tag,
                                              const char *format, va_list args)
{
    if (priority == MDM_PLATFORM_LOG_SILENT) {
        return 0;
    }
    const mdm::CancellationOff cancellation_off;  // the program may call this itself
    // Not GLib's g_vasprintf(), which may end the process if there is no memory.
    char *text = nullptr;
    const int length = vasprintf(&text, format, args);
    if (length < 0) {
        return length;
    }
    syslog(severity_of(priority), "%s: %s", tag, text);
    std::free(text);
    return length;
}
