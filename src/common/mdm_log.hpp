// SPDX-License-Identifier: Apache-2.0
//
// The library's own logging macros. A line that the threshold drops costs one relaxed load: no
// argument of it is evaluated.
#pragma once

#include <atomic>
#include <cstdint>

#include <pthread.h>

#include "mdm/log.h"

namespace mdm {

extern std::atomic<uint32_t> log_level;

inline bool log_passes(uint32_t level)
{
    const uint32_t threshold = log_level.load(std::memory_order_relaxed);
    return threshold != MDM_LOG_NONE && threshold <= level;
}

// Keeps the calling thread from being cancelled while it lives. A cancelled thread would leave its
// locks locked, and everybody else would wait for them.
class CancellationOff {
public:
    CancellationOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
    // A thread with the asynchronous cancelability type may end here. That unwinds its stack, which
    // noexcept would forbid.
    ~CancellationOff() noexcept(false) { pthread_setcancelstate(previous_, &previous_); }
    CancellationOff(const CancellationOff &) = delete;
    CancellationOff &operator=(const CancellationOff &) = delete;

private:
    int previous_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace mdm

// One line with the prefix of the place that logs. Log in the handler or exported function
// itself (or a named step of the envelope), never in a lambda: the reader of the log looks for the
// function's name.
#define MDM_LOG_LINE(level, text, ...) \
    MDM_LOG_LINE_OF(__func__, __LINE__, level, text __VA_OPT__(, ) __VA_ARGS__)

// The same for a helper that logs in the name of a function and a line that it was told.
#define MDM_LOG_LINE_OF(function, line, level, text, ...)                                     \
    (::mdm::log_passes(level) ? static_cast<void>(__mdm_log_print(                            \
                                    level, "MDM_COMMON", "%s: %s(%d) > " text, __FILE_NAME__, \
                                    function, line __VA_OPT__(, ) __VA_ARGS__))               \
                              : static_cast<void>(0))

#define MDM_DEBUG(text, ...) MDM_LOG_LINE(MDM_LOG_DEBUG, text __VA_OPT__(, ) __VA_ARGS__)
#define MDM_INFO(text, ...) MDM_LOG_LINE(MDM_LOG_INFO, text __VA_OPT__(, ) __VA_ARGS__)
#define MDM_CRITICAL(text, ...) MDM_CRITICAL_OF(__func__, __LINE__, text __VA_OPT__(, ) __VA_ARGS__)
#define MDM_CRITICAL_OF(function, line, text, ...)    \
    MDM_LOG_LINE_OF(function, line, MDM_LOG_CRITICAL, \
                    "\033[0;31m* Critical * " text "\033[0;m" __VA_OPT__(, ) __VA_ARGS__)

#define MDM_ENTER() MDM_DEBUG("\033[0;32mENTER >>>>\033[0;m")

// Logs the exit line, then yields the result, if one is given: return MDM_EXIT(result);
#define MDM_EXIT(...) (MDM_DEBUG("\033[0;32mEXIT  <<<<\033[0;m") __VA_OPT__(, ) __VA_ARGS__)

// An argument check: the function that fails it returns `result` without an exit line.
#define MDM_ASSERT(condition, result)      \
    do {                                   \
        if (!(condition)) {                \
            MDM_CRITICAL("_ASSERT fails"); \
            return result;                 \
        }                                  \
    } while (0)
