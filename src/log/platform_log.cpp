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

// Weak, so that a program's own definition takes its place. No facility is named: the one that
// the host program chose with openlog(3) holds.
__attribute__((weak)) int platform_log_vprint(int /*buffer_id*/, int priority, const char *tag,
                                              const char *format, va_list args)
{
    if (priority == MDM_PLATFORM_LOG_SILENT) {
        return 0;
    }
    const mdm::CancellationOff cancellation_off;  // the program may call this itself
    // GLib's g_vasprintf() may end the process where there is no memory.
    char *text = nullptr;
    const int length = vasprintf(&text, format, args);
    if (length < 0) {
        return length;
    }
    syslog(severity_of(priority), "%s: %s", tag, text);
    std::free(text);
    return length;
}
