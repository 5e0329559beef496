// SPDX-License-Identifier: Apache-2.0
#include "support/log_recorder.hpp"

#include <array>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/allocation_trace.hpp"

namespace mdm::test {
namespace {

std::mutex mutex;
bool recording = false;
std::vector<PlatformLine> recorded;
std::function<void()> action_during_print;

std::optional<std::string> optional_text(const char *text)
{
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

std::string formatted(const char *format, va_list args)
{
    if (format == nullptr) {
        return "";
    }
    std::array<char, 4096> text{};
    std::vsnprintf(text.data(), text.size(), format, args);
    return text.data();
}

uint32_t level_of(int priority)
{
    switch (priority) {
    case MDM_PLATFORM_LOG_DEBUG:
        return MDM_LOG_DEBUG;
    case MDM_PLATFORM_LOG_INFO:
        return MDM_LOG_INFO;
    case MDM_PLATFORM_LOG_WARN:
        return MDM_LOG_WARN;
    case MDM_PLATFORM_LOG_ERROR:
        return MDM_LOG_CRITICAL;
    default:
        throw std::invalid_argument("the library never logs with this priority");
    }
}

// "file: function(line) > text", as every line of the library reads. Without a regular expression,
// which would take most of the time of tests that look at many lines.
LogLine parsed(const PlatformLine &line)
{
    const std::string &text = line.text;
    const size_t file_end = text.find_first_of(" :/");
    const size_t function = file_end + 2;
    const size_t function_end = text.find_first_of(" (", function);
    const size_t number = function_end + 1;
    const size_t number_end = text.find_first_not_of("0123456789", number);
    const auto has = [&text](size_t position, const char *expected) {
        return position < text.size() &&
               text.compare(position, std::strlen(expected), expected) == 0;
    };
    const bool matches = file_end != 0 && has(file_end, ": ") && function_end != function &&
                         has(function_end, "(") && number_end != number && has(number_end, ") > ");
    if (!matches) {
        throw std::invalid_argument("no prefix: " + text);
    }
    return {level_of(line.priority), text.substr(function, function_end - function),
            text.substr(number_end + 4), text.substr(0, file_end),
            std::stoi(text.substr(number, number_end - number))};
}

}  // namespace

std::ostream &operator<<(std::ostream &out, const LogLine &line)
{
    return out << line.level << ' ' << line.file << ' ' << line.function << ' ' << line.text;
}

LogLine enter(const Origin &from)
{
    return {MDM_LOG_DEBUG, from.function, "\033[0;32mENTER >>>>\033[0;m", from.file};
}

LogLine leave(const Origin &from)
{
    return {MDM_LOG_DEBUG, from.function, "\033[0;32mEXIT  <<<<\033[0;m", from.file};
}

std::vector<LogLine> enter_and_leave(const Origin &from)
{
    return {enter(from), leave(from)};
}

LogLine debug(const Origin &from, const char *text)
{
    return {MDM_LOG_DEBUG, from.function, text, from.file};
}

LogLine info(const Origin &from, const std::string &text)
{
    return {MDM_LOG_INFO, from.function, text, from.file};
}

std::vector<LogLine> infos(const Origin &from, const std::vector<std::string> &texts)
{
    std::vector<LogLine> lines;
    for (const std::string &text : texts) {
        lines.push_back(info(from, text));
    }
    return lines;
}

LogLine critical(const Origin &from, const std::string &text)
{
    return {MDM_LOG_CRITICAL, from.function, "\033[0;31m* Critical * " + text + "\033[0;m",
            from.file};
}

LogLine assert_fails(const Origin &from)
{
    return critical(from, "_ASSERT fails");
}

LogRecorder::LogRecorder(mdm_log_level_t threshold) : previous_threshold_(mdm_log_get_level())
{
    const std::lock_guard lock(mutex);
    recorded.clear();
    recording = true;
    mdm_log_set_level(threshold);
}

LogRecorder::~LogRecorder()
{
    const std::lock_guard lock(mutex);
    recording = false;
    action_during_print = nullptr;
    mdm_log_set_level(previous_threshold_);
}

const std::vector<PlatformLine> &LogRecorder::platform_lines() const
{
    return recorded;
}

void LogRecorder::during_print(std::function<void()> action)
{
    action_during_print = std::move(action);
}

std::vector<LogLine> LogRecorder::take()
{
    const std::lock_guard lock(mutex);
    std::vector<LogLine> lines;
    for (const PlatformLine &line : recorded) {
        lines.push_back(parsed(line));
    }
    recorded.clear();
    return lines;
}

}  // namespace mdm::test

extern "C" int platform_log_vprint(int buffer_id, int priority, const char *tag, const char *format,
                                   va_list args)
{
    using namespace mdm::test;
    const AllocationTrace::Pause pause;  // the recorder's own blocks are nobody's business
    std::string text = formatted(format, args);
    if (action_during_print) {
        action_during_print();
    }
    const std::lock_guard lock(mutex);
    if (recording) {
        recorded.push_back(
            {buffer_id, priority, optional_text(tag), optional_text(format), std::move(text)});
    }
    return recorder_result;
}
