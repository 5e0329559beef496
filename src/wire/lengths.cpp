// SPDX-License-Identifier: Apache-2.0
#include "wire/lengths.hpp"

#include <algorithm>
#include <cstring>

#include "wire/words.hpp"

namespace mdm {

uint32_t Lengths::measure(void *strings, const Log &log, EachLine each)
{
    ListLog lines(log, each);
    const GList *cell = g_list_first(static_cast<GList *>(strings));
    list_ = cell;
    count_ = 0;
    uint32_t size = 0;
    for (; cell != nullptr && cell->data != nullptr; cell = cell->next) {
        const auto *text = static_cast<const char *>(cell->data);
        lines.info(text);
        const size_t length = std::strlen(text);
        add(length);
        size += word_size + static_cast<uint32_t>(length);
    }
    has_all_ = cell == nullptr;
    return size;
}

// If one length cannot be kept, none of the list's lengths is known.
inline void Lengths::add(size_t length)
{
    if (length > UINT32_MAX || (count_ == capacity_ && !grow())) [[unlikely]] {
        list_ = nullptr;
        count_ = 0;
        return;
    }
    lengths_[count_++] = static_cast<uint32_t>(length);
}

[[gnu::cold, gnu::noinline]] bool Lengths::grow()
{
    auto *lengths = g_try_new(uint32_t, capacity_ * 2);
    if (lengths == nullptr) {
        return false;
    }
    std::copy(lengths_, lengths_ + count_, lengths);
    release();
    lengths_ = lengths;
    capacity_ *= 2;
    return true;
}

}  // namespace mdm
