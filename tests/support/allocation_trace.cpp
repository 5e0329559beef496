// SPDX-License-Identifier: Apache-2.0
#include "support/allocation_trace.hpp"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <glib.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MDM_UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MDM_UNDER_SANITIZER 1
#endif
#endif

namespace mdm::test {
namespace {

thread_local AllocationTrace *active = nullptr;

}  // namespace

std::ostream &operator<<(std::ostream &out, const Block &block)
{
    return out << block.size << " bytes at " << block.address;
}

std::vector<size_t> sizes_of(const std::vector<Block> &blocks)
{
    std::vector<size_t> sizes;
    for (const Block &block : blocks) {
        sizes.push_back(block.size);
    }
    return sizes;
}

void release_blocks(const std::vector<Block> &blocks)
{
    for (const Block &block : blocks) {
        g_free(const_cast<void *>(block.address));
    }
}

AllocationTrace::AllocationTrace() : events_{}
{
    active = this;
}

AllocationTrace::~AllocationTrace()
{
    active = nullptr;
}

void AllocationTrace::stop()
{
    active = nullptr;
    if (count_ > events_.size()) {
        throw std::length_error("more blocks than a trace can hold");
    }
}

void AllocationTrace::during_release(std::function<void(const void *)> action)
{
    const Pause pause;
    action_during_release_ = std::move(action);
}

void AllocationTrace::record(Kind kind, Block block)
{
    if (count_ < events_.size()) {
        events_[count_] = {kind, block};
    }
    ++count_;
}

std::vector<AllocationTrace::Event> AllocationTrace::events() const
{
    return {events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(count_)};
}

std::vector<Block> AllocationTrace::allocated() const
{
    std::vector<Block> blocks;
    for (const Event &event : events()) {
        if (event.kind == Kind::allocated) {
            blocks.push_back(event.block);
        }
    }
    return blocks;
}

std::vector<size_t> AllocationTrace::allocated_sizes() const
{
    return sizes_of(allocated());
}

std::vector<const void *> AllocationTrace::released() const
{
    std::vector<const void *> addresses;
    for (const Event &event : events()) {
        if (event.kind == Kind::released) {
            addresses.push_back(event.block.address);
        }
    }
    return addresses;
}

std::vector<Block> AllocationTrace::kept() const
{
    std::vector<Block> blocks;
    for (const Event &event : events()) {
        if (event.kind == Kind::allocated) {
            blocks.push_back(event.block);
        } else {
            std::erase_if(blocks,
                          [&](const Block &block) { return block.address == event.block.address; });
        }
    }
    return blocks;
}

AllocationTrace::Pause::Pause() : paused_(active)
{
    active = nullptr;
}

AllocationTrace::Pause::~Pause()
{
    active = paused_;
}

void AllocationTrace::on_allocated(const volatile void *address, size_t size)
{
    if (active != nullptr && address != nullptr) {
        active->record(Kind::allocated, {const_cast<const void *>(address), size});
    }
}

void AllocationTrace::on_released(const volatile void *address)
{
    if (active == nullptr || address == nullptr) {
        return;
    }
    const void *block = const_cast<const void *>(address);
    active->record(Kind::released, {block, 0});
    if (active->action_during_release_) {
        const auto &action = active->action_during_release_;
        const Pause pause;
        action(block);
    }
}

}  // namespace mdm::test

using mdm::test::AllocationTrace;

#ifdef MDM_UNDER_SANITIZER

#include <sanitizer/allocator_interface.h>

namespace {

[[maybe_unused]] const int hooks_installed = __sanitizer_install_malloc_and_free_hooks(
    AllocationTrace::on_allocated, AllocationTrace::on_released);

}  // namespace

#else

// The program's own malloc family, in front of the C library's. GLib must see it too.
#pragma GCC visibility push(default)
extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *address, size_t size);
void __libc_free(void *address);

void *malloc(size_t size)
{
    void *address = __libc_malloc(size);
    AllocationTrace::on_allocated(address, size);
    return address;
}

void *calloc(size_t count, size_t size)
{
    void *address = __libc_calloc(count, size);
    AllocationTrace::on_allocated(address, count * size);
    return address;
}

void *realloc(void *address, size_t size)
{
    AllocationTrace::on_released(address);
    void *moved = __libc_realloc(address, size);
    AllocationTrace::on_allocated(moved, size);
    return moved;
}

void free(void *address)
{
    AllocationTrace::on_released(address);
    __libc_free(address);
}

}  // extern "C"
#pragma GCC visibility pop

#endif
