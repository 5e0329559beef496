// SPDX-License-Identifier: Apache-2.0
//
// The checked cursors: the steps of the trusting ones, for bytes and messages that nobody vouched
// for. The first step that cannot be taken is kept as a fault, and ends the cursor: it stands
// nowhere, with nothing left, so that every later step fails, too.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

#include <glib.h>

#include "mdm/guarded.h"
#include "mdm_wire.hpp"

namespace mdm {

inline uint32_t saturated(uint64_t number)
{
    return static_cast<uint32_t>(std::min<uint64_t>(number, std::numeric_limits<uint32_t>::max()));
}

// Where a checked cursor is in a buffer.
template <class Byte>
class CheckedPosition {
public:
    // `fault` is written when a step fails.
    CheckedPosition(Byte *buffer, uint32_t length, uint32_t offset, ipc_fault_t &fault)
        : begin_(buffer), position_(buffer + offset), end_(buffer + length), fault_(fault)
    {
    }

    explicit operator bool() const { return position_ != nullptr; }

protected:
    size_t left() const { return static_cast<size_t>(end_ - position_); }

    // Whether `count` more bytes are there for the field.
    bool has(uint64_t count, const char *path)
    {
        if (count > left()) [[unlikely]] {
            fail(count, path);
            return false;
        }
        return true;
    }

    // The bytes that has() has found, which the cursor leaves behind.
    Byte *pass(size_t count)
    {
        Byte *bytes = position_;
        position_ += count;
        return bytes;
    }

    // Takes the fields of a list in turn, with one comparison for all that has a fixed size: a step
    // is told how many bytes it may take without reaching into what the fields behind it need at
    // least. Returns how many fields there were before the first that did not fit.
    template <class Record, class... Fields, class Step>
    size_t take_claimed(const FieldList<Record, Fields...> &list, Step step)
    {
        size_t rest = smallest_size(list);
        size_t done = 0;
        if (rest > left()) [[unlikely]] {
            return done;
        }
        Byte *at = position_;  // in a register, which a member is not
        std::apply(
            [&](const auto &...field) {
                ((rest -= smallest_size_of<typename Fields::Value>(),
                  step(field, at, static_cast<size_t>(end_ - at) - rest) && ++done != 0) &&
                 ...);
            },
            list.fields);
        position_ = at;
        return done;
    }

    [[gnu::cold]] void fail(uint64_t needed, const char *path)
    {
        if (position_ == nullptr) {
            return;  // the first fault counts
        }
        fault_ = {static_cast<uint32_t>(position_ - begin_), saturated(needed),
                  static_cast<uint32_t>(left()), path};
        position_ = nullptr;
        end_ = nullptr;
    }

private:
    Byte *begin_;
    Byte *position_;
    Byte *end_;
    ipc_fault_t &fault_;
};

class CheckedWriter : public CheckedPosition<uint8_t>, public WritingSteps<CheckedWriter> {
public:
    using CheckedPosition::CheckedPosition;

    void u8(uint8_t value, const char *path)
    {
        if (has(sizeof value, path)) {
            *pass(sizeof value) = value;
        }
    }

    void u32(uint32_t value, const char *path)
    {
        if (has(word_size, path)) {
            store_u32(pass(word_size), value);
        }
    }

    void str(const char *text, const char *path)
    {
        const size_t length = text == nullptr ? 0 : std::strlen(text);
        if (has(uint64_t{word_size} + length, path)) {
            store_u32(pass(word_size), static_cast<uint32_t>(length));
            copy(text, length);
        }
    }

    template <class Record, class... Fields>
    void fields(const Record &record, const FieldList<Record, Fields...> &list)
    {
        const size_t done = take_claimed(list, [&](const auto &field, uint8_t *&at, size_t room) {
            return put(field.of(record), at, room);
        });
        if (done != sizeof...(Fields)) [[unlikely]] {
            fields_from(done, record, list);
        }
    }

    void bytes(const void *data, int32_t count, const char *path)
    {
        if (data == nullptr) {
            return omit(path);
        }
        if (count < 0) {
            return fail(std::numeric_limits<uint64_t>::max(), path);
        }
        if (has(static_cast<uint32_t>(count), path)) {
            copy(data, static_cast<uint32_t>(count));
        }
    }

    void skip(int32_t count, const char *path)
    {
        if (has(static_cast<uint32_t>(count), path)) {
            pass(static_cast<uint32_t>(count));
        }
    }

    // Refuses a count that is not that of the elements written: a null one is counted, but not
    // written, and what stands in front of the given cell is written, but not counted.
    uint32_t count(void *list, const char *path)
    {
        const auto *cell = static_cast<GList *>(list);
        if (cell != nullptr && cell->prev != nullptr) {
            omit(path);
        }
        uint32_t count = 0;
        for (; cell != nullptr; cell = cell->next) {
            if (cell->data == nullptr) {
                omit(path);
            }
            ++count;
        }
        u32(count, path);
        return count;
    }

    // What a receiver would look for in vain is no message.
    void omit(const char *path) { fail(0, path); }

    template <class Body, class... Fields>
    void body_head(const Body &body, const FieldList<Body, Fields...> &list)
    {
        fields(body, list);
    }

private:
    // The steps of take_claimed().
    static bool put(uint8_t value, uint8_t *&at, size_t /*room*/)
    {
        *at++ = value;
        return true;
    }
    static bool put(uint32_t value, uint8_t *&at, size_t /*room*/)
    {
        at = store_u32(at, value);
        return true;
    }
    static bool put(int32_t value, uint8_t *&at, size_t room)
    {
        return put(static_cast<uint32_t>(value), at, room);
    }
    static bool put(const char *text, uint8_t *&at, size_t room)
    {
        const size_t length = text == nullptr ? 0 : std::strlen(text);
        if (length > room - word_size) [[unlikely]] {
            return false;
        }
        at = store_u32(at, static_cast<uint32_t>(length));
        if (length != 0) {
            std::memcpy(at, text, length);
            at += length;
        }
        return true;
    }

    template <class Record, class... Fields>
    [[gnu::cold, gnu::noinline]] void fields_from(size_t first, const Record &record,
                                                  const FieldList<Record, Fields...> &list)
    {
        size_t index = 0;
        for_each_field(list, [&](const auto &field) {
            if (index++ >= first) {
                value(field.of(record), field.path);
            }
        });
    }

    void copy(const void *bytes, size_t count)
    {
        if (count != 0) {
            std::memcpy(pass(count), bytes, count);
        }
    }
};

// All memory of one opened message. The first block begins with the message and ends with its texts,
// for which it has room: a text and its terminator are never longer than what travels of it, count
// or head included. Records and list cells fill that block from its other end, and then blocks that
// grow.
class Region {
public:
    explicit Region(uint32_t length)
        : capacity_(allocation_size(sizeof(mdm_msg_t) + uint64_t{length} * 2))
    {
        auto *block = static_cast<Block *>(g_malloc(capacity_));
        block->next = nullptr;
        begin_ = reinterpret_cast<std::byte *>(block + 1);
        text_ = reinterpret_cast<std::byte *>(block) + capacity_ - length;
        end_ = text_;
        msg_ = static_cast<mdm_msg_t *>(take(sizeof(mdm_msg_t), 0));
        msg_->hdr_aux = 0;
        std::memset(&msg_->body, 0, sizeof msg_->body);  // the rest of the header is read
    }
    ~Region()
    {
        if (msg_ != nullptr) {
            release(msg_);
        }
    }
    Region(const Region &) = delete;
    Region &operator=(const Region &) = delete;

    mdm_msg_t &message() { return *msg_; }

    // The message outlives the region: whoever has it releases it.
    mdm_msg_t *keep() { return std::exchange(msg_, nullptr); }
    static void release(mdm_msg_t *msg);

    // Aligned for whatever holds pointers. `left` bytes of the message may still ask for more.
    void *take(size_t size, size_t left)
    {
        constexpr size_t step = alignof(void *);
        const size_t room = (size + step - 1) / step * step;
        if (room > static_cast<size_t>(end_ - begin_)) [[unlikely]] {
            grow(room, left);
        }
        std::byte *place = begin_;
        begin_ += room;
        return place;
    }

    void *take_zeroed(size_t size, size_t left);

    char *take_text(size_t size)
    {
        std::byte *place = text_;
        text_ += size;
        return reinterpret_cast<char *>(place);
    }

private:
    struct Block {
        Block *next;
    };

    static Block *first_block(mdm_msg_t *msg) { return reinterpret_cast<Block *>(msg) - 1; }

    // With its head; g_malloc() ends the process for what cannot be had.
    static size_t allocation_size(uint64_t capacity)
    {
        return static_cast<size_t>(
            std::min<uint64_t>(sizeof(Block) + capacity, std::numeric_limits<size_t>::max()));
    }

    void grow(size_t size, size_t left);

    size_t capacity_;  // of the newest block
    std::byte *begin_;
    std::byte *end_;
    std::byte *text_;
    mdm_msg_t *msg_;
};

class CheckedReader : public CheckedPosition<const uint8_t>, public ReadingSteps<CheckedReader> {
public:
    CheckedReader(const uint8_t *buffer, uint32_t length, uint32_t offset, ipc_fault_t &fault,
                  Region &region)
        : CheckedPosition(buffer, length, offset, fault), region_(region)
    {
    }

    uint8_t u8(const char *path) { return has(sizeof(uint8_t), path) ? *pass(sizeof(uint8_t)) : 0; }

    uint32_t u32(const char *path) { return has(word_size, path) ? load_u32(pass(word_size)) : 0; }

    // A count that the bytes left have room for.
    int32_t count(const char *path, uint32_t smallest)
    {
        const int32_t count = i32(path);
        return count < 1 || has(uint64_t{smallest} * static_cast<uint32_t>(count), path) ? count
                                                                                         : 0;
    }

    uint32_t unsigned_count(const char *path, uint32_t smallest)
    {
        const uint32_t count = u32(path);
        return has(uint64_t{smallest} * count, path) ? count : 0;
    }

    char *str(const char *path)
    {
        const uint32_t length = u32(path);
        return length == 0 ? nullptr : text(length, path);
    }

    char *bytes(int32_t count, const char *path)
    {
        return has_length(count, path) ? text(static_cast<uint32_t>(count), path) : nullptr;
    }

    template <class Record, class... Fields>
    void fields(Record &record, const FieldList<Record, Fields...> &list)
    {
        const size_t done =
            take_claimed(list, [&](const auto &field, const uint8_t *&at, size_t room) {
                return take(field.of(record), at, room);
            });
        if (done != sizeof...(Fields)) [[unlikely]] {
            fields_from(done, record, list);
        }
    }

    template <class Body, class... Fields>
    void body_head(Body &body, const FieldList<Body, Fields...> &list)
    {
        fields(body, list);
    }

    // One copy is enough, because nothing of a region is released on its own.
    static char *copy(char *text) { return text; }

    template <class Record>
    Record *make()
    {
        static_assert(alignof(Record) <= alignof(void *));
        return static_cast<Record *>(region_.take_zeroed(sizeof(Record), left()));
    }

    template <class Record>
    Record *try_make()
    {
        return make<Record>();
    }

    std::span<char *> make_array(int32_t count, const char *path)
    {
        if (!has_length(count, path) ||
            !has(uint64_t{word_size} * static_cast<uint32_t>(count), path)) {
            return {};
        }
        const auto size = static_cast<uint32_t>(count);
        return {static_cast<char **>(region_.take_zeroed(size * sizeof(char *), left())), size};
    }

    class List {
    public:
        explicit List(CheckedReader &in) : in_(in) {}

        void append(void *element)
        {
            auto *cell = static_cast<GList *>(in_.region_.take(sizeof(GList), in_.left()));
            *cell = {element, nullptr, tail_};
            (tail_ == nullptr ? head_ : tail_->next) = cell;
            tail_ = cell;
        }
        GList *head() const { return head_; }

    private:
        CheckedReader &in_;
        GList *head_ = nullptr;
        GList *tail_ = nullptr;
    };
    List new_list() { return List(*this); }

private:
    bool has_length(int32_t length, const char *path)
    {
        if (length < 0) [[unlikely]] {
            fail(std::numeric_limits<uint64_t>::max(), path);
            return false;
        }
        return true;
    }

    char *text(uint32_t length, const char *path)
    {
        if (!has(length, path)) {
            return nullptr;
        }
        const uint8_t *bytes = pass(length);
        return copy_text(region_.take_text(size_t{length} + 1), bytes, length);
    }

    // The steps of take_claimed().
    static bool take(uint8_t &value, const uint8_t *&at, size_t /*room*/)
    {
        value = *at++;
        return true;
    }
    static bool take(uint32_t &value, const uint8_t *&at, size_t /*room*/)
    {
        value = load_u32(at);
        at += word_size;
        return true;
    }
    static bool take(int32_t &value, const uint8_t *&at, size_t /*room*/)
    {
        value = static_cast<int32_t>(load_u32(at));
        at += word_size;
        return true;
    }
    bool take(char *&value, const uint8_t *&at, size_t room)
    {
        const uint32_t length = load_u32(at);
        if (length > room - word_size) [[unlikely]] {
            return false;
        }
        at += word_size;
        value =
            length == 0 ? nullptr : copy_text(region_.take_text(size_t{length} + 1), at, length);
        at += length;
        return true;
    }

    template <class Record, class... Fields>
    [[gnu::cold, gnu::noinline]] void fields_from(size_t first, Record &record,
                                                  const FieldList<Record, Fields...> &list)
    {
        size_t index = 0;
        for_each_field(list, [&](const auto &field) {
            if (index++ >= first) {
                value(field.of(record), field.path);
            }
        });
    }

    Region &region_;
};

}  // namespace mdm
