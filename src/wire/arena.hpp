// SPDX-License-Identifier: Apache-2.0
//
// All memory of one opened message: blocks, the first of which begins with the message and ends
// with its texts. For those it has room: a text and its terminator are never longer than what
// travels of it, count or head included. Records and list cells fill that block from its other end,
// and then further blocks.
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
    // For a message of `length` bytes. It is zero but for those fields of the header that are read.
    // Without memory there is no message.
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

    // The bytes of the newest block, or of the one that could not be had.
    size_t capacity() const { return capacity_; }

    // Gives back a message with all that belongs to it.
    static void release(mdm_msg_t *msg)
    {
        Block *block = first_block(msg);
        while (block != nullptr) {
            Block *next = block->next;
            g_free(block);
            block = next;
        }
    }

    // A place in the newest block, aligned for whatever holds pointers; null if there is no room.
    void *take(size_t size)
    {
        const size_t room = room_of(size);
        if (room > static_cast<size_t>(end_ - begin_)) [[unlikely]] {
            return nullptr;
        }
        std::byte *place = begin_;
        begin_ += room;
        return place;
    }

    // Makes a block with room for `size` bytes, and for more, because `left` bytes of the message
    // may still ask for it: twice the newest block, but no more than what is left may need. False
    // without memory.
    [[gnu::cold]] bool grow(size_t size, size_t left)
    {
        // What a byte of a message needs at most, texts aside: four of them may be a number in a
        // list, with a record and a cell of its own.
        constexpr size_t growth = (sizeof(GList) + sizeof(void *)) / word_size;
        size = room_of(size);
        const uint64_t needed = size + uint64_t{left} * growth;
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

    // A place for a record or a cell of a message that is dropped, because there is no memory.
    void *scratch() { return scratch_.data(); }

    // Where the next text goes.
    char *next_text() const { return reinterpret_cast<char *>(text_); }
    void set_next_text(char *text) { text_ = reinterpret_cast<std::byte *>(text); }

private:
    // What stands behind it is aligned as a pointer.
    struct Block {
        Block *next;
    };
    static_assert(alignof(mdm_msg_t) <= alignof(Block));

    static constexpr size_t room_of(size_t size)
    {
        constexpr size_t step = alignof(void *);
        return (size + step - 1) / step * step;
    }

    static Block *first_block(mdm_msg_t *msg) { return reinterpret_cast<Block *>(msg) - 1; }

    // With the block's head.
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
