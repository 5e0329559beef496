// SPDX-License-Identifier: Apache-2.0
//
// The lengths of a list's strings, kept from the pass that sizes a message to the pass that writes
// it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <glib.h>

#include "log/log.hpp"

namespace mdm {

// The lengths of the list that was measured last, up to its first null element. The strings of any
// other list have to be measured again.
class Lengths {
public:
    Lengths() = default;
    ~Lengths() { release(); }
    Lengths(const Lengths &) = delete;
    Lengths &operator=(const Lengths &) = delete;

    // Measures a list's strings up to the first null element, and logs each. Returns their size on
    // the wire, without the list's count.
    uint32_t measure(void *strings, const Log &log, EachLine each = no_line);

    // The lengths of a list's strings, up to the first null element. Null if they are not known:
    // for another list, for a cell that is not the first, without memory, or if a length does not
    // fit into 32 bits. For an empty list there is nothing to read.
    const uint32_t *of(const void *list) const { return list == list_ ? lengths_ : nullptr; }

    // Whether count() is the length of this list: the list was measured last, and has no null
    // element.
    bool has_all(const void *list) const { return list != nullptr && list == list_ && has_all_; }
    uint32_t count() const { return static_cast<uint32_t>(count_); }

private:
    void add(size_t length);
    bool grow();
    void release()
    {
        if (lengths_ != first_.data()) {
            g_free(lengths_);
        }
    }

    const GList *list_ = nullptr;
    std::array<uint32_t, 64> first_;  // longer lists allocate memory
    uint32_t *lengths_ = first_.data();
    size_t count_ = 0;
    size_t capacity_ = first_.size();
    bool has_all_ = false;
};

}  // namespace mdm
