// SPDX-License-Identifier: Apache-2.0
//
// Bytes with nothing readable behind them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mdm::test {

// Bytes that end where the readable memory ends and that nobody may write: a read beyond them ends
// the program, also where no sanitizer looks, and so does a write.
class GuardedBytes {
public:
    explicit GuardedBytes(const std::vector<uint8_t> &bytes);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes &) = delete;
    GuardedBytes &operator=(const GuardedBytes &) = delete;

    // Replaces the bytes by others, which must fit into the pages of the first ones. Pointers to
    // the old bytes are then invalid.
    void assign(const std::vector<uint8_t> &bytes);

    const uint8_t *data() const { return view_ + capacity_ - size_; }
    size_t size() const { return size_; }

private:
    size_t size_ = 0;
    size_t capacity_;
    uint8_t *writable_;    // the pages
    const uint8_t *view_;  // the same pages, read-only, and an unreadable one
};

}  // namespace mdm::test
