// SPDX-License-Identifier: Apache-2.0
#include "mdm_log.hpp"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
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

// The caller's own string, not a copy. Guarded by log_mutex, like every append to the file.
const char *log_path = nullptr;
pthread_mutex_t log_mutex = PTHREAD_MUTEX_INITIALIZER;

// What the process's umask leaves of them, as for any text file.
constexpr mode_t file_permissions = 0666;

constexpr std::array<int, MDM_LOG_NONE + 1> platform_priorities = {
    MDM_PLATFORM_LOG_DEBUG, MDM_PLATFORM_LOG_INFO,   MDM_PLATFORM_LOG_WARN,
    MDM_PLATFORM_LOG_ERROR, MDM_PLATFORM_LOG_SILENT,
};

int platform_priority(uint32_t level)
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

// Tells by the result of a printing function. Whatever else it could not format is left out.
bool had_memory(int result)
{
    return result >= 0 || errno != ENOMEM;
}

// The line as it stands in the file, null if there is no memory for it. It is whole before the
// first byte is written.
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

// A regular file, and how long it is.
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

// The file that ends with the beginning of a line. Guarded by log_mutex.
std::optional<FileState> torn_file;

// Cuts off the beginning of a line that the file did not take whole, so that the next line does not
// run into it. Another process may append to the file as well: what stands among its lines is left.
void take_back(int file, off_t begin, size_t length)
{
    const auto state = state_of(file);
    if (state && state->size == begin + static_cast<off_t>(length) && ftruncate(file, begin) != 0) {
        torn_file = state;  // it can only be appended to
    }
}

// How many bytes were written. One write is enough for a file that has room. Signals interrupt those
// to a FIFO or a terminal.
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

// Ends the line of which the file has only the beginning, if it still ends with that. False if there
// is no room.
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
    if (file < 0) {
        return;
    }
    size_t size = 0;
    const Text text = text_of(line, args, size);
    if (text != nullptr && end_torn_line(file)) {
        append(file, {text.get(), size});
    }
    close(file);
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
        mdm::append_line(mdm::log_path, {level, tag, format, errno_before}, file_args);
    }
    pthread_mutex_unlock(&mdm::log_mutex);

    va_end(file_args);
    va_end(platform_args);
    errno = errno_before;
    return result;
}
