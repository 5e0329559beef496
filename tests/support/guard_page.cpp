// SPDX-License-Identifier: Apache-2.0
#include "support/guard_page.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include <sys/mman.h>
#include <unistd.h>

namespace mdm::test {
namespace {

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

uint8_t *checked(void *memory)
{
    if (memory == MAP_FAILED) {
        fail("mmap");
    }
    return static_cast<uint8_t *>(memory);
}

size_t page_size()
{
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// Whole pages, of which an empty buffer takes one.
size_t capacity_for(size_t size)
{
    return (size / page_size() + 1) * page_size();
}

}  // namespace

GuardedBytes::GuardedBytes(const std::vector<uint8_t> &bytes)
    : capacity_(capacity_for(bytes.size()))
{
    const int file = memfd_create("guarded bytes", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, static_cast<off_t>(capacity_)) != 0) {
        fail("memfd");
    }
    writable_ = checked(mmap(nullptr, capacity_, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    uint8_t *view = checked(
        mmap(nullptr, capacity_ + page_size(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    checked(mmap(view, capacity_, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0));
    view_ = view;
    close(file);
    assign(bytes);
}

GuardedBytes::~GuardedBytes()
{
    munmap(writable_, capacity_);
    munmap(const_cast<uint8_t *>(view_), capacity_ + page_size());
}

void GuardedBytes::assign(const std::vector<uint8_t> &bytes)
{
    if (bytes.size() > capacity_) {
        throw std::length_error("more bytes than the pages hold");
    }
    size_ = bytes.size();
    std::ranges::copy(bytes, writable_ + capacity_ - size_);
}

}  // namespace mdm::test
