// SPDX-License-Identifier: Apache-2.0
#include "file.hpp"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <glib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mdm::msg {
namespace {

// A file that becomes shorter while it is mapped ends the program; small ones are read.
constexpr off_t least_mapped = 1 << 20;

// Of what is no regular file, more is not kept.
constexpr uint64_t most_read = uint64_t{4} << 30;

}  // namespace

File::File(const std::string &name)
{
    if (name == "-") {
        load(STDIN_FILENO);
        return;
    }
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (file < 0) {
        reason_ = g_strerror(errno);
        return;
    }
    load(file);
    close(file);
}

File::~File()
{
    if (mapped_ != nullptr) {
        munmap(mapped_, mapped_size_);
    }
}

Bytes File::bytes() const
{
    return mapped_ != nullptr ? Bytes(static_cast<const uint8_t *>(mapped_), mapped_size_)
                              : Bytes(read_);
}

void File::load(int file)
{
    if (!map(file) && reason_.empty()) {
        read(file);
    }
}

// Returns whether the file is mapped.
bool File::map(int file)
{
    struct stat status = {};
    if (fstat(file, &status) != 0) {
        reason_ = g_strerror(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode) || status.st_size < least_mapped ||
        lseek(file, 0, SEEK_CUR) != 0) {
        return false;
    }
    if (static_cast<uint64_t>(status.st_size) > SIZE_MAX) {
        reason_ = g_strerror(EFBIG);
        return false;
    }
    const auto size = static_cast<size_t>(status.st_size);
    void *begin = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (begin == MAP_FAILED) {
        reason_ = g_strerror(errno);
        return false;
    }
    mapped_ = begin;
    mapped_size_ = size;
    return true;
}

void File::read(int file)
{
    std::array<uint8_t, 65536> buffer;
    for (;;) {
        const ssize_t size = ::read(file, buffer.data(), buffer.size());
        if (size == 0) {
            return;
        }
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size < 0) {
            reason_ = g_strerror(errno);
            return;
        }
        if (read_.size() + static_cast<uint64_t>(size) > most_read) {
            reason_ = "more than 4 GiB, and no regular file";
            return;
        }
        read_.insert(read_.end(), buffer.data(), buffer.data() + size);
    }
}

}  // namespace mdm::msg
