// SPDX-License-Identifier: Apache-2.0
//
// The cursors: a writer of a message's bytes, and a reader.
//
// A trusting cursor believes its pointers and the counts that it reads, and takes memory from the
// heap. A guarded cursor is for bytes and messages that nobody vouched for. It knows where the buffer
// ends, and reads into the message's own arena. The first step that has no room is kept as a fault,
// and ends the cursor: it has nothing left, so every later step that needs a byte fails, too. From
// then on it writes nothing, or reads zeros and empty lists.
//
// Each step takes the path of its field, for the fault.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <glib.h>

#include "log/log.hpp"
#include "mdm/guarded.h"
#include "mdm/message.h"
#include "wire/arena.hpp"
#include "wire/fields.hpp"
#include "wire/lengths.hpp"
#include "wire/lists.hpp"
#include "wire/names.hpp"
#include "wire/words.hpp"

namespace mdm {

// What a trusting cursor has left: no end is in sight.
inline constexpr size_t no_end = SIZE_MAX;

// The message head without its text, from offset 8 of a message on.
inline constexpr uint32_t smallest_head_size = 8 * word_size;

class Cursor {
public:
    // Whether it has a buffer and has not failed.
    explicit operator bool() const { return !has_failed_; }

    // The lines of the handler that it was made for.
    const Log &log() const { return log_; }

protected:
    // A trusting one if `fault` is null, and a guarded one of a message of `total` bytes otherwise.
    Cursor(const void *buffer, size_t left, size_t total, Log log, ipc_fault_t *fault)
        : left_(left), total_(total), fault_(fault), has_failed_(buffer == nullptr), log_(log)
    {
    }

    bool is_guarded() const { return fault_ != nullptr; }
    Names names() const { return Names(log_.origin()); }

    size_t left() const { return left_; }
    void set_left(size_t left) { left_ = left; }

    // Whether `count` more bytes are there for the field.
    bool has(uint64_t count, const char *path) { return count <= left_ || !fail(count, path); }

    // Whether a record or a head has room, whose texts have so many bytes. A trusting cursor does not
    // compare: where addresses have 32 bits, a text may claim to be as long as all of them.
    bool fits(size_t smallest, size_t text_bytes) const
    {
        return !is_guarded() || (smallest <= left_ && text_bytes <= left_ - smallest);
    }
    size_t left_after(size_t smallest) const { return is_guarded() ? left_ - smallest : no_end; }

    // As has(), and counts the bytes as gone. The position stays: the cursor is about to fail.
    bool reserve(size_t count, const char *path)
    {
        const bool is_there = has(count, path);
        left_ -= is_there ? count : 0;
        return is_there;
    }

    // Moves over bytes that are known to be there, and returns where they begin.
    template <class Byte>
    Byte *pass(Byte *&position, size_t count)
    {
        Byte *bytes = position;
        position += count;
        left_ -= count;
        return bytes;
    }

    // False for a trusting cursor, which goes on.
    [[gnu::cold, gnu::noinline]] bool fail(uint64_t needed, const char *path);
    [[gnu::cold, gnu::noinline]] void fail_without_memory(size_t size);

    // Fails at the first word of a body head that has no room.
    [[gnu::cold, gnu::noinline]] void fail_in_body_head();

private:
    void end_with(const ipc_fault_t &fault);
    uint32_t offset() const { return static_cast<uint32_t>(total_ - left_); }

    size_t left_;
    size_t total_;
    ipc_fault_t *fault_;
    bool has_failed_;
    Log log_;
};

class Writer : public Cursor {
public:
    // Writes from `offset` on. Gaps are cleared up to the end of the message, at `total`. `lengths` are
    // those that the size handler has kept.
    Writer(uint8_t *buffer, uint32_t offset, uint32_t total, Log log,
           const Lengths *lengths = nullptr)
        : Cursor(buffer, no_end, 0, log, nullptr), position_(buffer + offset), end_(buffer + total),
          lengths_(lengths)
    {
    }
    // The guarded one, which writes no further than that.
    Writer(uint8_t *buffer, uint32_t offset, uint32_t total, Log log, ipc_fault_t &fault,
           const Lengths *lengths = nullptr)
        : Cursor(buffer, total - offset, total, log, &fault), position_(buffer + offset),
          end_(buffer + total), lengths_(lengths)
    {
    }

    uint8_t *position() const { return position_; }

    void message_head(const mdm_msg_t &msg);

    template <class Body>
    void body_head(const Body &body)
    {
        write_body_head(static_cast<uint32_t>(body.type), body.param,
                        static_cast<uint32_t>(body.data_size));
    }

    void u32(uint32_t value, const char *path);
    void i32(int32_t value, const char *path) { u32(static_cast<uint32_t>(value), path); }
    void str(const char *text, const char *path);

    void fields(const void *record, Fields list);

    // What a body's `data` points to, as `data_size` bytes.
    void raw_bytes(const void *data, int32_t data_size);

    // The count of a list, null elements included. A guarded cursor refuses a list with a null element,
    // and one that is given by a later cell than its first: its count is not that of the elements
    // written.
    uint32_t count(void *list, const char *path);

    // The list's count, then its records; a null one is counted, but not written. Q-WIRE-3
    void records(void *records, const char *path, Fields list);

    // The list's strings, without a count, up to the first null one.
    void strings_before_null(void *strings, const char *path, EachLine each = no_line);

    // The list's count, then its strings; a null string is a gap of `gap_size` zero bytes.
    void strings_with_gaps(void *strings, int32_t gap_size, const char *path);

    // An element that was counted is not written. A guarded cursor refuses that: a receiver would look
    // for it.
    void refuse(const char *path)
    {
        if (is_guarded()) {
            fail(0, path);
        }
    }

    // Clears bytes, which a guarded cursor refuses, too.
    void gap(int32_t count, const char *path);

    // Clears what nobody has written at the end of the message; mostly there is nothing.
    void clear_rest()
    {
        if (position_ < end_) {
            clear(SIZE_MAX);
        }
    }

private:
    void write_body_head(uint32_t type, uint32_t param, uint32_t data_size);
    bool fields_fast_path(const uint8_t *record, Fields list);
    void fields_slow_path(const uint8_t *record, Fields list);
    [[gnu::cold, gnu::noinline]] void fail_in_message_head(const mdm_msg_t &msg);
    void clear(size_t count);
    uint8_t *pass(size_t count) { return Cursor::pass(position_, count); }

    uint8_t *position_;
    uint8_t *end_;
    const Lengths *lengths_;
};

class Reader : public Cursor {
public:
    Reader(const uint8_t *buffer, uint32_t offset, Log log)
        : Cursor(buffer, no_end, 0, log, nullptr), position_(buffer + offset)
    {
    }
    // The guarded one. The arena is the message's.
    Reader(const uint8_t *buffer, uint32_t offset, uint32_t length, Log log, ipc_fault_t &fault,
           Arena &arena)
        : Cursor(buffer, length - offset, length, log, &fault), position_(buffer + offset),
          arena_(&arena)
    {
    }

    const uint8_t *position() const { return position_; }

    // The text that is there is overwritten, not released.
    void message_head(mdm_msg_t &msg);

    // `aux` and `data` stay as they were.
    template <class Body>
    void body_head(Body &body)
    {
        read_body_head(reinterpret_cast<uint32_t &>(body.type), body.param, body.data_size);
    }

    uint32_t u32(const char *path);
    int32_t i32(const char *path) { return static_cast<int32_t>(u32(path)); }

    // How many elements follow, each of `smallest` bytes or more; below 1 none do. A guarded cursor
    // refuses a number that the bytes left have no room for. Q-WIRE-5
    int32_t count(const char *path, uint32_t smallest);
    // The same for a list that may be longer than a signed number tells.
    uint32_t unsigned_count(const char *path, uint32_t smallest);

    // A new string, or null for an empty one. Q-WIRE-1
    char *str(const char *path);

    // A new string of the next `data_size` bytes and a terminator; a zero byte ends its text early.
    char *raw_bytes(int32_t data_size);

    void fields(void *record, Fields list);

    // A new record with the listed fields read and every other byte zero.
    template <class Record, size_t size>
    Record *record(const FieldList<Record, size> &list)
    {
        static_assert(sizeof(Record) <= largest_record);
        return static_cast<Record *>(record(Fields(list)));
    }
    void *record(Fields list);

    // A new list of records, from its count on; null for a count below 1.
    GList *records(const char *path, Fields list);

    // A new list of strings, an empty one a null element; null for a count below 1. Q-WIRE-6
    GList *strings(int64_t count, const char *path, EachLine each = no_line);

    // A second copy of a string that str() returned. Of a arena, where nothing is released on its
    // own, one is enough. Q-GUARDED-1
    char *copy(char *text) { return is_guarded() ? text : g_strdup(text); }

    // A new zero-filled record.
    template <class Record>
    Record *make()
    {
        static_assert(alignof(Record) <= alignof(void *));
        static_assert(sizeof(Record) <= largest_record);
        return static_cast<Record *>(make(sizeof(Record)));
    }

    // As record(), but null without memory, for the categories that say what happens then. A guarded
    // cursor fails instead, and returns a place that no message keeps.
    template <class Record, size_t size>
    Record *try_record(const FieldList<Record, size> &list)
    {
        return static_cast<Record *>(try_record(Fields(list)));
    }

    // A new zero-filled array for as many strings as follow; of null for a count below 1.
    std::span<char *> make_array(int32_t count, const char *path);

    // A new list, null until something is appended.
    class List {
    public:
        explicit List(Reader &in) : in_(in) {}
        void append(void *element);
        GList *head() const { return head_; }

    private:
        Reader &in_;
        GList *head_ = nullptr;
        GList *tail_ = nullptr;
    };

private:
    void read_body_head(uint32_t &type, uint32_t &param, int32_t &data_size);
    bool fields_fast_path(uint8_t *record, Fields list);
    const uint8_t *texts(const uint8_t *position, char **texts, size_t count, size_t &rest);
    void fields_slow_path(uint8_t *record, Fields list);
    [[gnu::cold, gnu::noinline]] void fail_in_message_head(mdm_msg_t &msg);
    void *make(size_t size);
    void *try_record(Fields list);

    // Room for a record or a cell.
    void *place(size_t size)
    {
        if (!is_guarded()) {
            return g_malloc(size);
        }
        void *place = take(size);
        return place != nullptr ? place : arena_->scratch();
    }
    // Of the arena. Null without memory, which ends the cursor.
    void *take(size_t size)
    {
        void *place = arena_->take(size);
        return place != nullptr ? place : take_from_new_block(size);
    }
    [[gnu::cold, gnu::noinline]] void *take_from_new_block(size_t size);

    char *new_text(const uint8_t *bytes, size_t length);

    const uint8_t *pass(size_t count) { return Cursor::pass(position_, count); }

    const uint8_t *position_;
    Arena *arena_ = nullptr;
};

inline void Writer::message_head(const mdm_msg_t &msg)
{
    const size_t size = text_size(msg.hdr_text);
    if (!fits(smallest_head_size, size)) [[unlikely]] {
        return fail_in_message_head(msg);
    }
    const auto length = static_cast<uint32_t>(size);
    uint8_t *position = pass(smallest_head_size + size_t{length});
    position = store_u32(position, msg.hdr_word1);
    position = store_u32(position, msg.hdr_word2);
    position = write_str(position, msg.hdr_text, length);
    position = store_u32(position, msg.hdr_word3);
    position = store_u32(position, msg.hdr_word6);
    position = store_u32(position, msg.hdr_word7);
    position = store_u32(position, msg.hdr_word4);
    store_u32(position, msg.hdr_word5);
}

// The envelope has made sure that a head without its text is there.
inline void Reader::message_head(mdm_msg_t &msg)
{
    const uint8_t *position = position_;
    const size_t length = load_u32(position + size_t{2} * word_size);
    if (is_guarded() && length > left() - smallest_head_size) [[unlikely]] {
        return fail_in_message_head(msg);
    }
    pass(smallest_head_size + length);
    msg.hdr_word1 = load_u32(position);
    msg.hdr_word2 = load_u32(position + word_size);
    msg.hdr_text = nullptr;
    position += size_t{3} * word_size;
    const uint8_t *behind_text = position + length;
    msg.hdr_word3 = load_u32(behind_text);
    msg.hdr_word6 = load_u32(behind_text + word_size);
    msg.hdr_word7 = load_u32(behind_text + size_t{2} * word_size);
    msg.hdr_word4 = load_u32(behind_text + size_t{3} * word_size);
    msg.hdr_word5 = load_u32(behind_text + size_t{4} * word_size);
    if (length != 0) {
        msg.hdr_text = new_text(position, length);
    }
}

}  // namespace mdm
