// SPDX-License-Identifier: Apache-2.0
//
// Records which heap blocks the calling thread allocates and releases, in order, between two
// points of a test.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <ostream>
#include <vector>

namespace mdm::test {

struct Block {
    const void *address;
    size_t size;

    friend bool operator==(const Block &, const Block &) = default;
};

std::ostream &operator<<(std::ostream &out, const Block &block);

std::vector<size_t> sizes_of(const std::vector<Block> &blocks);

// Releases what a category has left allocated.
void release_blocks(const std::vector<Block> &blocks);

// Records from its construction until stop(). One trace at a time.
class AllocationTrace {
public:
    AllocationTrace();
    ~AllocationTrace();
    AllocationTrace(const AllocationTrace &) = delete;
    AllocationTrace &operator=(const AllocationTrace &) = delete;

    void stop();

    // Called with each block that is about to be released: what it still holds can be looked at.
    void during_release(std::function<void(const void *)> action);

    enum class Kind { allocated, released };
    struct Event {
        Kind kind;
        Block block;  // of size 0 when released

        friend bool operator==(const Event &, const Event &) = default;
        friend std::ostream &operator<<(std::ostream &out, const Event &event)
        {
            return out << (event.kind == Kind::allocated ? "allocated " : "released ")
                       << event.block;
        }
    };

    // Everything that happened, in order.
    std::vector<Event> events() const;
    // The blocks that were allocated, in order.
    std::vector<Block> allocated() const;
    // The sizes of the blocks that were allocated, in order.
    std::vector<size_t> allocated_sizes() const;
    // The addresses that were released, in order.
    std::vector<const void *> released() const;
    // The blocks that were allocated and not released, in order.
    std::vector<Block> kept() const;

    // Leaves the calling thread's blocks out of the trace while it lives.
    class Pause {
    public:
        Pause();
        ~Pause();
        Pause(const Pause &) = delete;
        Pause &operator=(const Pause &) = delete;

    private:
        AllocationTrace *paused_;
    };

    // Called for every block of the process; not for tests.
    static void on_allocated(const volatile void *address, size_t size);
    static void on_released(const volatile void *address);

private:
    void record(Kind kind, Block block);

    // Fixed, because recording must not allocate.
    std::array<Event, 4096> events_;
    size_t count_ = 0;
    std::function<void(const void *)> action_during_release_;
};

}  // namespace mdm::test
