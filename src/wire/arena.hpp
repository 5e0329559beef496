// SPDX-License-Identifier: Apache-2.0
//
// The memory of one opened message: a chain of blocks. The first block holds the message, then as
// many bytes as were received for records and list cells, then as many again for texts. Texts never
// need more: a text and its terminator are no longer than the text on the wire with its count or
// its body head. Records and list cells that do not fit into the first block go into further ones.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include <glib.h>

#include "mdm/message.h"
#include "wire/words.hpp"

namespace mdm {

class Arena {
public:
    // For a message of `length` bytes on the wire. Its body and `hdr_aux` are zero; the rest of its
    // header is left to the caller, who reads it. Without memory, message() is null.
    explicit Arena(uint32_t length)
        : capacity_(allocation_size(sizeof(mdm_msg_t) + uint64_t{length} * 2))
    {
        auto *block = static_cast<Block *>(g_try_malloc(capacity_));
        if (block == nullptr) [[unlikely]] {
            return;
        }
        block->next = nullptr;
        msg_ = reinterpret_cast<mdm_msg_t *>(block + 1);
        msg_->hdr_aux = 0;
        std::memset(&msg_->body, 0, sizeof msg_->body);
        begin_ = reinterpret_cast<std::byte *>(msg_ + 1);
        end_ = begin_ + length;
        text_ = end_;
    }

    mdm_msg_t *message() const { return msg_; }

    // The size of the newest block, or of the block that could not be allocated.
    size_t capacity() const { return capacity_; }

    // Releases a message with all of its memory.
    static void release(mdm_msg_t *msg)
    {
        Block *block = first_block(msg);
        while (block != nullptr) {
            Block *next = block->next;
            g_free(block);
            block = next;
        }
    }

    // Returns memory of the newest block, aligned for pointers; null if it does not fit there.
    void *take(size_t size)
    {
        size = aligned(size);
        if (size > static_cast<size_t>(end_ - begin_)) [[unlikely]] {
            return nullptr;
        }
        std::byte *memory = begin_;
        begin_ += size;
        return memory;
    }

    // Adds a block in which `size` bytes fit. The block is larger, because the `unread` bytes of
    // the message may need memory as well: it has twice the size of the newest block, but no more
    // than all these bytes can need. False without memory.
    [[gnu::cold]] bool grow(size_t size, size_t unread)
    {
        // The most memory that a byte of a message can need, texts aside: a number in a list has
        // four bytes, and takes a record and a list cell.
        constexpr size_t growth = (sizeof(GList) + sizeof(void *)) / word_size;
        size = aligned(size);
        const uint64_t needed = size + uint64_t{unread} * growth;
        capacity_ =
            allocation_size(std::min(std::max<uint64_t>(size, uint64_t{capacity_} * 2), needed));
        auto *block = static_cast<Block *>(g_try_malloc(capacity_));
        if (block == nullptr) {
            return false;
        }
        Block *first = first_block(msg_);
        block->next = first->next;
        first->next = block;
        begin_ = reinterpret_cast<std::byte *>(block + 1);
        end_ = reinterpret_cast<std::byte *>(block) + capacity_;
        return true;
    }

    // Stands in for every record and cell after memory has run out. The message is dropped then.
    void *scratch() { return scratch_.data(); }

    // Where the next text goes.
    char *next_text() const { return reinterpret_cast<char *>(text_); }
    void set_next_text(char *text) { text_ = reinterpret_cast<std::byte *>(text); }

private:
    // The memory behind a block's head is aligned for pointers.
    struct Block {
        Block *next;
    };
    static_assert(alignof(mdm_msg_t) <= alignof(Block));

    static constexpr size_t aligned(size_t size)
    {
        constexpr size_t step = alignof(void *);
        return (size + step - 1) / step * step;
    }

    static Block *first_block(mdm_msg_t *msg) { return reinterpret_cast<Block *>(msg) - 1; }

    // The block's head is included.
    static size_t allocation_size(uint64_t capacity)
    {
        return static_cast<size_t>(
            std::min<uint64_t>(sizeof(Block) + capacity, std::numeric_limits<size_t>::max()));
    }

    size_t capacity_;
    mdm_msg_t *msg_ = nullptr;
    std::byte *begin_ = nullptr;
    std::byte *end_ = nullptr;
    std::byte *text_ = nullptr;
    alignas(void *) std::array<std::byte, largest_record + 1> scratch_;
};

}  // namespace mdm
