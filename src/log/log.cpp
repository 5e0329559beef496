// SPDX-License-Identifier: Apache-2.0
#include "log/log.hpp"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mdm {

constinit std::atomic<uint32_t> log_level{MDM_LOG_INFO};

namespace {

// The caller's own string, not a copy. It changes under log_mutex, which also guards every append
// to the file. Whether there is a path is read without the lock.
constinit std::atomic<const char *> log_path{nullptr};  // Q-LOG-4
pthread_mutex_t log_mutex = PTHREAD_MUTEX_INITIALIZER;

// The process's umask removes bits, as for any new file.
constexpr mode_t file_permissions = 0666;

constexpr std::array<int, MDM_LOG_NONE + 1> platform_priorities = {
    MDM_PLATFORM_LOG_DEBUG, MDM_PLATFORM_LOG_INFO,   MDM_PLATFORM_LOG_WARN,
    MDM_PLATFORM_LOG_ERROR, MDM_PLATFORM_LOG_SILENT,
};

int platform_priority(uint32_t level)  // Q-LOG-6
{
    return level < platform_priorities.size() ? platform_priorities[level]
                                              : MDM_PLATFORM_LOG_DEFAULT;
}

struct Release {
    void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Release>;

// A line as a caller gives it, with the errno that its format may ask for ("%m").
struct Line {
    uint32_t level;
    const char *tag;
    const char *format;
    int error;
};

// `result` comes from a printing function. Only a lack of memory counts as a failure. After any
// other failure the line goes without the text that could not be formatted.
bool had_memory(int result)
{
    return result >= 0 || errno != ENOMEM;
}

// The line for the file; null without memory. It is made as a whole before its first byte is
// written. Q-LOG-8
Text text_of(const Line &line, va_list args, size_t &size)
{
    char *bytes = nullptr;
    FILE *stream = open_memstream(&bytes, &size);
    if (stream == nullptr) {
        return nullptr;
    }
    bool is_whole =
        had_memory(std::fprintf(stream, "%d %s ", static_cast<int>(line.level), line.tag));
    errno = line.error;
    is_whole = had_memory(std::vfprintf(stream, line.format, args)) && is_whole;
    is_whole = had_memory(std::fputc('\n', stream)) && is_whole;
    is_whole = std::fclose(stream) == 0 && is_whole;
    Text text(bytes);
    return is_whole ? std::move(text) : nullptr;
}

// The identity and the size of a regular file.
struct FileState {
    dev_t device;
    ino_t inode;
    off_t size;

    friend bool operator==(const FileState &, const FileState &) = default;
};

std::optional<FileState> state_of(int file)
{
    struct stat state {};
    const bool is_regular = fstat(file, &state) == 0 && S_ISREG(state.st_mode);
    return is_regular ? std::optional(FileState{state.st_dev, state.st_ino, state.st_size})
                      : std::nullopt;
}

// The file whose last line is incomplete. Guarded by log_mutex.
std::optional<FileState> torn_file;

// Cuts off an incomplete line, so that the next line does not continue it. Another process may have
// appended to the file meanwhile; then the incomplete line stays.
void take_back(int file, off_t begin, size_t length)
{
    const auto state = state_of(file);
    if (state && state->size == begin + static_cast<off_t>(length) && ftruncate(file, begin) != 0) {
        torn_file = state;  // it can only be appended to
    }
}

// Returns how many bytes were written. A file with enough space needs one write. Signals interrupt
// writes to a FIFO or a terminal.
size_t append(int file, std::string_view text)
{
    off_t begin = 0;
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        if (written == 0) {
            begin = lseek(file, 0, SEEK_CUR) - count;
        }
        written += static_cast<size_t>(count);
    }
    if (written > 0 && written < text.size()) {
        take_back(file, begin, written);
    }
    return written;
}

// Ends the incomplete line, if the file still ends with it. False if there is no space.
bool end_torn_line(int file)
{
    if (!torn_file || torn_file != state_of(file)) {
        torn_file.reset();
        return true;
    }
    const bool is_ended = append(file, "\n") == 1;
    if (is_ended) {
        torn_file.reset();
    }
    return is_ended;
}

void append_line(const char *path, const Line &line, va_list args)
{
    // O_CLOEXEC keeps the descriptor from programs that another thread starts meanwhile.
    int file = -1;
    do {
        file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, file_permissions);
    } while (file < 0 && errno == EINTR);
    if (file < 0) {  // Q-LOG-5
        return;
    }
    size_t size = 0;
    const Text text = text_of(line, args, size);
    if (text != nullptr && end_torn_line(file)) {
        append(file, {text.get(), size});
    }
    close(file);
}

// Gives the line to the platform's log, then to the file. `line.error` is the caller's errno.
int emit(const Line &line, va_list args)
{
    const CancellationOff cancellation_off;
    va_list platform_args;
    va_copy(platform_args, args);
    const int result = platform_log_vprint(MDM_PLATFORM_LOG_SYSTEM, platform_priority(line.level),
                                           line.tag, line.format, platform_args);
    va_end(platform_args);

    if (log_path.load(std::memory_order_relaxed) != nullptr) {
        pthread_mutex_lock(&log_mutex);
        if (const char *path = log_path.load(std::memory_order_relaxed)) {
            append_line(path, line, args);
        }
        pthread_mutex_unlock(&log_mutex);
    }
    errno = line.error;
    return result;
}

// The tag of the library's own lines.
constexpr const char *tag = "MDM_COMMON";

// The prefixes of the functions' names, by Log::Function.
constexpr char prefixes[][sizeof "_size_of_"] = {"", "", "_set_", "_get_", "_size_of_", "_free_"};

// A number as text.
class Digits {
public:
    explicit Digits(unsigned number)
    {
        text_.back() = '\0';
        do {
            *--first_ = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
    }
    const char *c_str() const { return first_; }

private:
    std::array<char, 11> text_;
    char *first_ = &text_.back();
};

}  // namespace

bool Log::says(uint32_t level) const
{
    return function_ != Function::silent && log_passes(level);
}

// Nothing can be added to an argument list, so the place stands in the format. No name of a file or
// a function contains a conversion.
void Log::compose(Format &format, uint32_t level, int line, const char *text) const
{
    const bool is_failure = level == MDM_LOG_CRITICAL;
    const bool is_handler = function_ > Function::named;
    const Digits digits(static_cast<unsigned>(line));
    char *end = format.data();
    for (const char *part :
         {is_handler ? "mdm_ipc_" : "", origin_, is_handler ? ".cpp: " : ": ",
          prefixes[static_cast<size_t>(function_)], origin_ + std::strlen(origin_) + 1, "(",
          digits.c_str(), ") > ", is_failure ? "\033[0;31m* Critical * " : "", text,
          is_failure ? "\033[0;m" : ""}) {
        end = stpcpy(end, part);
    }
}

void Log::print(uint32_t level, int line, const char *text, va_list args) const
{
    if (!says(level)) {
        return;
    }
    Format format;
    compose(format, level, line, text);
    emit({level, tag, format.data(), errno}, args);
}

// Does not call __mdm_log_print(), because a program may replace that function, and would then get
// only these lines.
static void emit_info(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    emit({MDM_LOG_INFO, tag, format, errno}, args);
    va_end(args);
}

void ListLog::print(const char *element)
{
    if (!is_composed_) {
        log_.compose(format_, MDM_LOG_INFO, each_.line, each_.text);
        is_composed_ = true;
    }
    emit_info(format_.data(), element);
}

void Log::debug(int line, const char *text, ...) const
{
    va_list args;
    va_start(args, text);
    print(MDM_LOG_DEBUG, line, text, args);
    va_end(args);
}

void Log::info(int line, const char *text, ...) const
{
    va_list args;
    va_start(args, text);
    print(MDM_LOG_INFO, line, text, args);
    va_end(args);
}

void Log::critical(int line, const char *text, ...) const
{
    va_list args;
    va_start(args, text);
    print(MDM_LOG_CRITICAL, line, text, args);
    va_end(args);
}

}  // namespace mdm

void mdm_log_set_enabled(int flag)
{
    mdm_log_set_level(flag != 0 ? MDM_LOG_INFO : MDM_LOG_NONE);  // Q-LOG-3
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
    pthread_mutex_lock(&mdm::log_mutex);
    mdm::log_path.store(path, std::memory_order_relaxed);
    return pthread_mutex_unlock(&mdm::log_mutex);
}

int __mdm_log_print(mdm_log_level_t level, const char *tag, const char *format, ...)
{
    if (!mdm::log_passes(level)) {
        return 0;
    }
    va_list args;
    va_start(args, format);
    const int result = mdm::emit({level, tag, format, errno}, args);
    va_end(args);
    return result;
}
