// SPDX-License-Identifier: Apache-2.0
//
// Takes the place of the platform's log and keeps what the logger hands to it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "mdm/log.h"

namespace mdm::test {

// A call of platform_log_vprint().
struct PlatformLine {
    int buffer_id;
    int priority;
    std::optional<std::string> tag;     // empty for a null pointer
    std::optional<std::string> format;  // empty for a null pointer
    std::string text;
};

// Where a line comes from.
struct Origin {
    std::string function;
    std::string file;
};

// The constant of a function, which may stand for the origin of its lines.
class LoggingFunction {
public:
    constexpr LoggingFunction(const char *name, const char *file) : name_(name), file_(file) {}

    // NOLINTNEXTLINE(google-explicit-constructor): see above
    operator Origin() const { return {name_, file_}; }

private:
    const char *name_;
    const char *file_;
};

// A line of the library: its level, the function that logged it, the text behind the prefix, and
// its place. An expected line has no source line.
struct LogLine {
    uint32_t level;
    std::string function;
    std::string text;
    std::string file;
    int source_line = 0;

    friend bool operator==(const LogLine &left, const LogLine &right)
    {
        return left.level == right.level && left.function == right.function &&
               left.text == right.text && left.file == right.file;
    }
};

std::ostream &operator<<(std::ostream &out, const LogLine &line);

LogLine enter(const Origin &from);
LogLine leave(const Origin &from);
std::vector<LogLine> enter_and_leave(const Origin &from);
LogLine debug(const Origin &from, const char *text);
LogLine info(const Origin &from, const std::string &text);
std::vector<LogLine> infos(const Origin &from, const std::vector<std::string> &texts);
LogLine critical(const Origin &from, const std::string &text);
LogLine assert_fails(const Origin &from);

// Records from its construction to its destruction, one at a time, under a threshold of its own.
// Any number of threads may log meanwhile.
class LogRecorder {
public:
    explicit LogRecorder(mdm_log_level_t threshold = MDM_LOG_DEBUG);
    ~LogRecorder();
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    const std::vector<PlatformLine> &platform_lines() const;

    // Called, with nothing locked, each time the logger hands a line to the platform.
    void during_print(std::function<void()> action);

    // The recorded lines of the library, which are then forgotten.
    std::vector<LogLine> take();

private:
    mdm_log_level_t previous_threshold_;
};

// What platform_log_vprint() returns to the logger while a recorder exists.
inline constexpr int recorder_result = 1234;

}  // namespace mdm::test
