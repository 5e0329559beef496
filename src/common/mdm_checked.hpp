// SPDX-License-Identifier: Apache-2.0
//
// The checked cursors: the steps of the trusting ones, for bytes and messages that nobody vouched
// for. The first step that cannot be taken is kept as a fault, and ends the cursor: it has nothing
// left, so that every later step that needs a byte fails, too.
//
// The fields of a record have a way of their own, because they are most of what travels: one
// comparison claims all that has a fixed size, and each string costs one more. Only if not all of
// them fit are they taken one by one, to find the first that does not.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

#include <glib.h>

#include "mdm/guarded.h"
#include "mdm_ipc_fault.hpp"
#include "mdm_region.hpp"
#include "mdm_wire.hpp"

namespace mdm {

// Where a checked cursor is in a buffer.
template <class Byte>
class CheckedPosition {
public:
    // `fault` is written when a step fails.
    CheckedPosition(Byte *buffer, uint32_t length, uint32_t offset, ipc_fault_t &fault)
        : begin_(buffer), position_(buffer + offset), end_(buffer + length), fault_(fault)
    {
    }

    explicit operator bool() const { return !has_failed_; }

protected:
    Byte *position() const { return position_; }
    void move_to(Byte *position) { position_ = position; }

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

    // The same for as many elements as a number says that may be negative.
    bool has_length(int32_t length, uint32_t element_size, const char *path)
    {
        if (length < 0) [[unlikely]] {
            fail(std::numeric_limits<uint64_t>::max(), path);
            return false;
        }
        return has(uint64_t{element_size} * static_cast<uint32_t>(length), path);
    }

    // The bytes that has() has found, which the cursor leaves behind.
    Byte *pass(size_t count)
    {
        Byte *bytes = position_;
        position_ += count;
        return bytes;
    }

    [[gnu::cold]] void fail(uint64_t needed, const char *path)
    {
        end_with({offset(), saturated(needed), static_cast<uint32_t>(left()), path});
    }

    [[gnu::cold]] void fail_without_memory(size_t size)
    {
        end_with(fault_without_memory(offset(), size));
    }

private:
    uint32_t offset() const { return static_cast<uint32_t>(position_ - begin_); }

    void end_with(const ipc_fault_t &fault)
    {
        if (has_failed_) {
            return;  // the first fault counts
        }
        fault_ = fault;
        has_failed_ = true;
        end_ = position_;
    }

    Byte *begin_;
    Byte *position_;
    Byte *end_;
    ipc_fault_t &fault_;
    bool has_failed_ = false;
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
        u32(static_cast<uint32_t>(length), path);
        if (has(length, path)) {
            copy(text, length);
        }
    }

    template <class Record, class... Fields>
    void fields(const Record &record, const FieldList<Record, Fields...> &list)
    {
        if (!fields_at_once(record, list, std::index_sequence_for<Fields...>())) [[unlikely]] {
            fields_one_by_one(record, list);
        }
    }

    template <class Body, class... Fields>
    void body_head(const Body &body, const FieldList<Body, Fields...> &list)
    {
        fields(body, list);
    }

    // A message that lacks them is refused before it is sized.
    void bytes(const void *data, int32_t count, const char *path)
    {
        if (has_length(count, 1, path)) {
            copy(data, static_cast<uint32_t>(count));
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

    // What a receiver would look for in vain is no message, and neither is a gap.
    void omit(const char *path) { fail(0, path); }
    void skip(int32_t /*count*/, const char *path) { omit(path); }

private:
    // The bytes of a record, from a position that stays in a register: a member might be changed by
    // any text that is copied. What is spare is for texts.
    struct Claim {
        uint8_t *position;
        size_t spare;

        bool put(uint8_t value)
        {
            *position++ = value;
            return true;
        }
        bool put(uint32_t value)
        {
            position = store_u32(position, value);
            return true;
        }
        bool put(int32_t value) { return put(static_cast<uint32_t>(value)); }
        [[gnu::always_inline]] bool put(const char *text)
        {
            const size_t length = text == nullptr ? 0 : std::strlen(text);
            if (length > spare) [[unlikely]] {
                return false;
            }
            spare -= length;
            position = store_u32(position, static_cast<uint32_t>(length));
            if (length != 0) {
                std::memcpy(position, text, length);
                position += length;
            }
            return true;
        }
    };

    // False, and the cursor stays, if not all of the fields have room.
    template <class Record, class... Fields, size_t... index>
    bool fields_at_once(const Record &record, const FieldList<Record, Fields...> &list,
                        std::index_sequence<index...> /*all*/)
    {
        if (smallest_size(list) > left()) [[unlikely]] {
            return false;
        }
        Claim claim{position(), left() - smallest_size(list)};
        if (!(claim.put(std::get<index>(list.fields).of(record)) && ...)) {
            return false;
        }
        move_to(claim.position);
        return true;
    }

    template <class Record, class... Fields>
    [[gnu::cold, gnu::noinline]] void fields_one_by_one(const Record &record,
                                                        const FieldList<Record, Fields...> &list)
    {
        WritingSteps::fields(record, list);
    }

    void copy(const void *bytes, size_t count)
    {
        if (count != 0) {
            std::memcpy(pass(count), bytes, count);
        }
    }
};

// Takes its memory from the message's region. That comes first: what is set before it allocates
// would be read back from memory.
class CheckedReader : private Region,
                      public CheckedPosition<const uint8_t>,
                      public ReadingSteps<CheckedReader> {
public:
    CheckedReader(const uint8_t *buffer, uint32_t length, uint32_t offset, ipc_fault_t &fault)
        : Region(length), CheckedPosition(buffer, length, offset, fault)
    {
        if (message() == nullptr) [[unlikely]] {
            fail_without_memory(Region::capacity());
        }
    }

    using Region::message;

    uint8_t u8(const char *path) { return has(sizeof(uint8_t), path) ? *pass(sizeof(uint8_t)) : 0; }

    uint32_t u32(const char *path) { return has(word_size, path) ? load_u32(pass(word_size)) : 0; }

    // A count that the bytes left have room for.
    int32_t count(const char *path, uint32_t smallest)
    {
        const int32_t count = i32(path);
        const bool is_possible =
            count < 1 || has(uint64_t{smallest} * static_cast<uint32_t>(count), path);
        return is_possible ? count : 0;
    }

    uint32_t unsigned_count(const char *path, uint32_t smallest)
    {
        const uint32_t count = u32(path);
        return has(uint64_t{smallest} * count, path) ? count : 0;
    }

    char *str(const char *path)
    {
        const uint32_t length = u32(path);
        return length != 0 && has(length, path) ? text(length) : nullptr;
    }

    char *bytes(int32_t count, const char *path)
    {
        return has_length(count, 1, path) ? text(static_cast<uint32_t>(count)) : nullptr;
    }

    template <class Record, class... Fields>
    void fields(Record &record, const FieldList<Record, Fields...> &list)
    {
        if (!fields_at_once(record, list, std::index_sequence_for<Fields...>())) [[unlikely]] {
            fields_one_by_one(record, list);
        }
    }

    template <class Body, class... Fields>
    void body_head(Body &body, const FieldList<Body, Fields...> &list)
    {
        fields(body, list);
    }

    // A new record with the listed fields read and every other byte zero.
    template <class Record, class... Fields>
    Record *record(const FieldList<Record, Fields...> &list)
    {
        auto *record = is_whole(list) ? place<Record>() : make<Record>();
        fields(*record, list);
        return record;
    }

    // One copy is enough, because nothing of a region is released on its own.
    static char *copy(char *text) { return text; }

    template <class Record>
    Record *make()
    {
        return static_cast<Record *>(std::memset(place<Record>(), 0, sizeof(Record)));
    }

    template <class Record>
    Record *try_make()
    {
        return make<Record>();
    }

    std::span<char *> make_array(int32_t count, const char *path)
    {
        if (!has_length(count, word_size, path)) {
            return {};
        }
        const auto size = static_cast<uint32_t>(count);
        void *place = take(size * sizeof(char *));
        if (place == nullptr) {
            return {};
        }
        return {static_cast<char **>(std::memset(place, 0, size * sizeof(char *))), size};
    }

    class List {
    public:
        explicit List(CheckedReader &in) : in_(in) {}

        void append(void *element)
        {
            auto *cell = in_.place<GList>();
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
    // Null without memory, which ends the cursor.
    void *take(size_t size)
    {
        void *place = Region::take(size);
        return place != nullptr ? place : take_from_new_block(size);
    }

    [[gnu::cold, gnu::noinline]] void *take_from_new_block(size_t size)
    {
        void *place = grow(size, left()) ? Region::take(size) : nullptr;
        if (place == nullptr) {
            fail_without_memory(Region::capacity());
        }
        return place;
    }

    // Room for a record or a cell. Without memory it is a place that no message keeps: whoever is
    // reading need not look for null, and the message is dropped.
    template <class Record>
    Record *place()
    {
        static_assert(alignof(Record) <= alignof(void *));
        static_assert(sizeof(Record) <= largest_record);
        void *place = Region::take(sizeof(Record));
        return static_cast<Record *>(place != nullptr ? place : place_in_new_block(sizeof(Record)));
    }

    [[gnu::cold, gnu::noinline]] void *place_in_new_block(size_t size)
    {
        void *place = take_from_new_block(size);
        return place != nullptr ? place : dropped_.data();
    }

    // As the writer's.
    struct Claim {
        const uint8_t *position;
        size_t spare;
        char *text;  // where the next one goes

        bool take(uint8_t &value)
        {
            value = *position++;
            return true;
        }
        bool take(uint32_t &value)
        {
            value = load_u32(position);
            position += word_size;
            return true;
        }
        bool take(int32_t &value)
        {
            value = static_cast<int32_t>(load_u32(position));
            position += word_size;
            return true;
        }
        [[gnu::always_inline]] bool take(char *&value)
        {
            const size_t length = load_u32(position);
            if (length > spare) [[unlikely]] {
                return false;
            }
            position += word_size;
            if (length == 0) {
                value = nullptr;
                return true;
            }
            value = copy_text(text, position, length);
            spare -= length;
            position += length;
            text += length + 1;
            return true;
        }
    };

    // False, and the cursor stays, if not all of the fields are there.
    template <class Record, class... Fields, size_t... index>
    bool fields_at_once(Record &record, const FieldList<Record, Fields...> &list,
                        std::index_sequence<index...> /*all*/)
    {
        if (smallest_size(list) > left()) [[unlikely]] {
            return false;
        }
        Claim claim{position(), left() - smallest_size(list), Region::text()};
        if (!(claim.take(std::get<index>(list.fields).of(record)) && ...)) {
            return false;
        }
        move_to(claim.position);
        Region::text_to(claim.text);
        return true;
    }

    template <class Record, class... Fields>
    [[gnu::cold, gnu::noinline]] void fields_one_by_one(Record &record,
                                                        const FieldList<Record, Fields...> &list)
    {
        ReadingSteps::fields(record, list);
    }

    char *text(uint32_t length)
    {
        char *text = copy_text(Region::text(), pass(length), length);
        Region::text_to(text + length + 1);
        return text;
    }

    static constexpr size_t largest_record = 256;
    alignas(void *) std::array<std::byte, largest_record> dropped_;
};

}  // namespace mdm
