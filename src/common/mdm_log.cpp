// SPDX-License-Identifier: Apache-2.0
#include "mdm_log.hpp"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include <pthread.h>

namespace mdm {

constinit std::atomic<uint32_t> log_level{MDM_LOG_INFO};

namespace {

// The caller's own string, not a copy. Guarded by log_mutex, like every append to the file.
const char *log_path = nullptr;
pthread_mutex_t log_mutex = PTHREAD_MUTEX_INITIALIZER;

constexpr std::array<int, MDM_LOG_NONE + 1> platform_priorities = {
    MDM_PLATFORM_LOG_DEBUG, MDM_PLATFORM_LOG_INFO,   MDM_PLATFORM_LOG_WARN,
    MDM_PLATFORM_LOG_ERROR, MDM_PLATFORM_LOG_SILENT,
};

int platform_priority(uint32_t level)
{
    return level < platform_priorities.size() ? platform_priorities[level]
                                              : MDM_PLATFORM_LOG_DEFAULT;
}

void append_line(const char *path, uint32_t level, const char *tag, const char *format,
                 va_list args)
{
    // "e" keeps the descriptor from programs that another thread starts meanwhile.
    FILE *file = std::fopen(path, "ae");
    if (file == nullptr) {
        return;
    }
    std::fprintf(file, "%d %s ", static_cast<int>(level), tag);
    std::vfprintf(file, format, args);
    std::fputc('\n', file);
    std::fclose(file);
}

}  // namespace
}  // namespace mdm

void mdm_log_set_enabled(int flag)
{
    mdm_log_set_level(flag != 0 ? MDM_LOG_INFO : MDM_LOG_NONE);
}

void mdm_log_set_level(mdm_log_level_t level)
{
    mdm::log_level.store(level, std::memory_order_relaxed);
}

mdm_log_level_t mdm_log_get_level()
{
    return mdm::log_level.load(std::memory_order_relaxed);
}

int mdm_log_set_path(const char *path)
{
    const mdm::CancellationOff cancellation_off;
    pthread_mutex_lock(&mdm::log_mutex);
    mdm::log_path = path;
    return pthread_mutex_unlock(&mdm::log_mutex);
}

int __mdm_log_print(mdm_log_level_t level, const char *tag, const char *format, ...)
{
    if (!mdm::log_passes(level)) {
        return 0;
    }

    const mdm::CancellationOff cancellation_off;
    const int errno_before = errno;  // a caller's failure is often logged before it is handled
    va_list platform_args;
    va_list file_args;
    va_start(platform_args, format);
    va_copy(file_args, platform_args);

    const int result = platform_log_vprint(MDM_PLATFORM_LOG_SYSTEM, mdm::platform_priority(level),
                                           tag, format, platform_args);

    pthread_mutex_lock(&mdm::log_mutex);
    if (mdm::log_path != nullptr) {
        mdm::append_line(mdm::log_path, level, tag, format, file_args);
    }
    pthread_mutex_unlock(&mdm::log_mutex);

    va_end(file_args);
    va_end(platform_args);
    errno = errno_before;
    return result;
}
