// SPDX-License-Identifier: Apache-2.0
//
// The library's own log lines.
#pragma once

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include <pthread.h>

#include "mdm/log.h"

namespace mdm {

[[gnu::visibility("hidden")]] extern std::atomic<uint32_t> log_level;

inline bool log_passes(uint32_t level)
{
    const uint32_t threshold = log_level.load(std::memory_order_relaxed);
    return threshold <= level && threshold != MDM_LOG_NONE;  // Q-LOG-2
}

// Keeps the calling thread from being cancelled while the object lives. A cancelled thread would
// leave its locks locked, and all other threads would wait for them.
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

// The log lines of one function. Each line begins with the file, the function and the number of the
// source line.
class Log {
public:
    // A silent function logs nothing, whatever the threshold. A named function's name stands in its
    // origin. A handler's name is made of what it does and its category: "_set_" and "wifi".
    enum class Function : uint8_t { silent, named, set, get, size, free };

    // `origin` is MDM_ORIGIN(). The origin of a handler is its file without "mdm_ipc_" and ".cpp",
    // and its category behind the terminator.
    explicit constexpr Log(const char *origin, Function function = Function::named)
        : origin_(origin), function_(function)
    {
    }

    const char *origin() const { return origin_; }

    // Whether a line of this level is logged.
    bool says(uint32_t level) const;

    void enter(int line) const
    {
        if (log_passes(MDM_LOG_DEBUG)) [[unlikely]] {
            debug(line, "\033[0;32mENTER >>>>\033[0;m");
        }
    }
    void exit(int line) const
    {
        if (log_passes(MDM_LOG_DEBUG)) [[unlikely]] {
            debug(line, "\033[0;32mEXIT  <<<<\033[0;m");
        }
    }
    [[gnu::format(printf, 3, 4)]] void debug(int line, const char *text, ...) const;
    [[gnu::format(printf, 3, 4)]] void info(int line, const char *text, ...) const;
    // A failure.
    [[gnu::format(printf, 3, 4)]] void critical(int line, const char *text, ...) const;

    // Sizes with the terminator. The macros check them. Code that calls debug(), info() or
    // critical() directly has to keep to them.
    static constexpr size_t longest_origin = 80;
    static constexpr size_t longest_text = 192;

private:
    friend class ListLog;

    // The format of a line for the platform's log. It includes the place of the line: the origin
    // and, in `marks_size` bytes, the source line's number, punctuation and colours.
    static constexpr size_t marks_size = 48;
    using Format = std::array<char, longest_origin + marks_size + longest_text>;

    void compose(Format &format, uint32_t level, int line, const char *text) const;
    void print(uint32_t level, int line, const char *text, va_list args) const;

    const char *origin_;
    Function function_;
};

template <size_t limit, size_t size>
consteval const char *within(const char (&text)[size])
{
    static_assert(size <= limit);
    return text;
}

// A line for each element of a list: `text` formats the element.
struct EachLine {
    int line;
    const char *text;
};
#define MDM_EACH(text) (::mdm::EachLine{__LINE__, ::mdm::within<::mdm::Log::longest_text>(text)})
inline constexpr EachLine no_line = {0, nullptr};

// The lines of one list. They differ only in the element, so their format is composed once.
class ListLog {
public:
    ListLog(const Log &log, EachLine each)
        : log_(log), each_(log.function_ == Log::Function::silent ? no_line : each)
    {
    }

    void info(const char *element)
    {
        if (each_.text != nullptr && log_passes(MDM_LOG_INFO)) [[unlikely]] {
            print(element);
        }
    }

private:
    [[gnu::cold, gnu::noinline]] void print(const char *element);

    const Log &log_;
    EachLine each_;
    bool is_composed_ = false;
    Log::Format format_;
};

}  // namespace mdm

// The origin of a function's lines, for Log: the file without its directory, and the function
// behind the terminator.
#define MDM_ORIGIN(function) ::mdm::within<::mdm::Log::longest_origin>(__FILE_NAME__ "\0" function)

// These log through the `Log` called `log`. They do not evaluate the arguments of a line that is
// not logged.
#define MDM_LOG_LINE(print, level, text, ...)                    \
    do {                                                         \
        static_assert(sizeof(text) <= ::mdm::Log::longest_text); \
        __VA_OPT__(if (log.says(level)))                         \
        log.print(__LINE__, text __VA_OPT__(, ) __VA_ARGS__);    \
    } while (0)
#define MDM_DEBUG(text, ...) MDM_LOG_LINE(debug, MDM_LOG_DEBUG, text __VA_OPT__(, ) __VA_ARGS__)
#define MDM_INFO(text, ...) MDM_LOG_LINE(info, MDM_LOG_INFO, text __VA_OPT__(, ) __VA_ARGS__)
#define MDM_CRITICAL(text, ...) \
    MDM_LOG_LINE(critical, MDM_LOG_CRITICAL, text __VA_OPT__(, ) __VA_ARGS__)

#define MDM_ENTER() log.enter(__LINE__)

// Logs the exit line, then yields the result, if there is one: return MDM_EXIT(result);
#define MDM_EXIT(...) (log.exit(__LINE__) __VA_OPT__(, ) __VA_ARGS__)

// An argument check. If it fails, the function returns `result` without an exit line. Q-LOG-1
#define MDM_ASSERT(condition, result)      \
    do {                                   \
        if (!(condition)) {                \
            MDM_CRITICAL("_ASSERT fails"); \
            return result;                 \
        }                                  \
    } while (0)

// The entry line and the first argument check.
#define MDM_ENTER_ASSERT(condition, result) \
    MDM_ENTER();                            \
    MDM_ASSERT(condition, result)

// A check that fails if the condition is true. Its failure has a text of its own and an exit line.
#define MDM_FAIL_IF(condition, result, ...) \
    do {                                    \
        if (condition) {                    \
            MDM_CRITICAL(__VA_ARGS__);      \
            return MDM_EXIT(result);        \
        }                                   \
    } while (0)
