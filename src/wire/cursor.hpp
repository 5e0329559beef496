// SPDX-License-Identifier: Apache-2.0
//
// The cursors: a writer of a message's bytes, and a reader.
//
// A trusting cursor believes its pointers and the counts that it reads, and takes memory from the
// heap. A guarded cursor is for untrusted bytes and for the messages of the guarded path. It knows
// where the buffer ends, and reads into the message's own arena. It keeps the first step that does
// not fit as its fault, and has failed then. No byte remains for it, so every later step that needs
// one fails, too: it writes nothing, or reads zeros and empty lists.
//
// A reader of parts is a guarded reader for which no byte ever remains. So each of its steps takes
// the way of a step that does not fit, and asks for one part there.
//
// Each step takes the path of its field, for the fault and for the part.
#pragma once

#include <array>
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
#include "wire/parts.hpp"
#include "wire/words.hpp"

namespace mdm {

// The bytes that remain for a trusting cursor: it does not know the end of its buffer.
inline constexpr size_t no_end = SIZE_MAX;

// The message head without its text, from offset 8 of a message on.
inline constexpr uint32_t smallest_head_size = 8 * word_size;

class Cursor {
public:
    // Whether it has a buffer and has not failed.
    explicit operator bool() const { return !has_failed_; }

    // The log of the handler that the cursor was made for.
    const Log &log() const { return log_; }
    void set_log(const Log &log) { log_ = log; }

protected:
    // A trusting cursor if `fault` is null; otherwise a guarded one for a message of `total` bytes.
    Cursor(const void *buffer, size_t remaining, size_t total, Log log, ipc_fault_t *fault)
        : remaining_(remaining), total_(total), fault_(fault), has_failed_(buffer == nullptr),
          log_(log)
    {
    }

    bool is_guarded() const { return fault_ != nullptr; }
    Names names() const { return Names(log_.origin()); }

    size_t remaining() const { return remaining_; }
    void set_remaining(size_t remaining) { remaining_ = remaining; }

    // Whether `count` more bytes are there for the field. If not, a guarded cursor fails.
    bool require(uint64_t count, const char *path)
    {
        return count <= remaining_ || !fail(count, path);
    }

    // Whether a record or a head fits, whose texts have `text_bytes` bytes. A trusting cursor does
    // not compare: on a machine with 32-bit addresses, a text may announce all of them.
    bool fits(size_t smallest, size_t text_bytes) const
    {
        return !is_guarded() || (smallest <= remaining_ && text_bytes <= remaining_ - smallest);
    }
    size_t remaining_after(size_t smallest) const
    {
        return is_guarded() ? remaining_ - smallest : no_end;
    }

    // Like require(), and counts the bytes as used. The position stays, because the cursor is about
    // to fail.
    bool reserve(size_t count, const char *path)
    {
        const bool is_there = require(count, path);
        remaining_ -= is_there ? count : 0;
        return is_there;
    }

    // Moves behind bytes that are known to be there, and returns where they begin.
    template <class Byte>
    Byte *advance(Byte *&position, size_t count)
    {
        Byte *bytes = position;
        position += count;
        remaining_ -= count;
        return bytes;
    }

    // Ends a guarded cursor with this fault. A trusting cursor goes on, and the result is false.
    [[gnu::cold, gnu::noinline]] bool fail(uint64_t needed, const char *path);
    [[gnu::cold, gnu::noinline]] void fail_without_memory(size_t size);

private:
    void end_with(const ipc_fault_t &fault);
    uint32_t offset() const { return static_cast<uint32_t>(total_ - remaining_); }

    size_t remaining_;
    size_t total_;
    ipc_fault_t *fault_;
    bool has_failed_;
    Log log_;
};

class Writer : public Cursor {
public:
    // A trusting writer, which begins at `offset`. It clears gaps up to the end of the message, at
    // `total`, and no further. `lengths` are those that the size handler has kept.
    Writer(uint8_t *buffer, uint32_t offset, uint32_t total, Log log,
           const Lengths *lengths = nullptr)
        : Cursor(buffer, no_end, 0, log, nullptr), position_(buffer + offset), end_(buffer + total),
          lengths_(lengths)
    {
    }
    // A guarded writer. It writes nothing behind the message.
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

    // Writes the `data_size` bytes that a body's `data` points to.
    void raw_bytes(const void *data, int32_t data_size);

    // Writes and returns the count of a list from the given cell on, null elements included.
    // A guarded cursor refuses a list with null elements, or one entered in the middle.
    uint32_t count(void *list, const char *path);

    // Writes the list's count, then its records.
    // A null record is counted, but not written. Q-WIRE-3
    void records(void *records, const char *path, Fields list);

    // Writes the list's strings up to the first null element, without a count.
    void strings_before_null(void *strings, const char *path, EachLine each = no_line);

    // Writes the list's count, then its strings.
    // A null string is a gap of `gap_size` zero bytes.
    void strings_with_gaps(void *strings, int32_t gap_size, const char *path);

    // For an element that was counted, but is not written. A guarded cursor refuses the message,
    // because a receiver would look for the element.
    void refuse(const char *path)
    {
        if (is_guarded()) {
            fail(0, path);
        }
    }

    // Clears `count` bytes. A guarded cursor refuses gaps.
    void gap(int32_t count, const char *path);

    // Clears the bytes at the end of the message that nobody has written. Mostly there are none.
    void clear_rest()
    {
        if (position_ < end_) {
            clear(SIZE_MAX);
        }
    }

private:
    void write_body_head(uint32_t type, uint32_t param, uint32_t data_size);
    [[gnu::cold, gnu::noinline]] void fail_in_body_head();
    bool write_fields(const uint8_t *record, Fields list);
    void fail_in_fields(const uint8_t *record, Fields list);
    [[gnu::cold, gnu::noinline]] void fail_in_message_head(const mdm_msg_t &msg);
    void clear(size_t count);
    uint8_t *advance(size_t count) { return Cursor::advance(position_, count); }

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
    // A guarded reader. The arena is the message's.
    Reader(const uint8_t *buffer, uint32_t offset, uint32_t length, Log log, ipc_fault_t &fault,
           Arena &arena)
        : Cursor(buffer, length - offset, length, log, &fault), position_(buffer + offset),
          arena_(&arena)
    {
    }
    // A reader of parts. It makes no texts and keeps no raw bytes.
    Reader(Parts &parts, Log log, ipc_fault_t &fault, Arena &arena)
        : Cursor(&parts, 0, size_t{parts.offset()} + parts.left(), log, &fault), position_(nullptr),
          arena_(&arena), parts_(&parts)
    {
    }

    const uint8_t *position() const { return position_; }

    // Overwrites `hdr_text`, and does not release it.
    void message_head(mdm_msg_t &msg);
    // The same, field by field.
    [[gnu::cold, gnu::noinline]] void message_head_by_fields(mdm_msg_t &msg);

    // Leaves `aux` and `data` as they were.
    template <class Body>
    void body_head(Body &body)
    {
        constexpr auto type_need = static_cast<Need>(wire_type_of<decltype(body.type)>());
        read_body_head(reinterpret_cast<uint32_t &>(body.type), type_need, body.param,
                       body.data_size);
    }

    [[gnu::cold]] uint8_t u8(const char *path);
    uint32_t u32(const char *path) { return word(path, Need::u32); }
    int32_t i32(const char *path) { return static_cast<int32_t>(word(path, Need::i32)); }
    [[gnu::cold]] void reserved(uint32_t size, const char *path);

    // Reads how many elements follow, each of `smallest` bytes or more. Below 1, none follow. A
    // guarded cursor refuses a count whose elements do not fit into the remaining bytes. Q-WIRE-5
    int32_t count(const char *path, uint32_t smallest);
    // Like count(), for a list whose count is unsigned.
    uint32_t unsigned_count(const char *path, uint32_t smallest);

    // Reads a new string, or null for an empty one. Q-WIRE-1
    char *str(const char *path);

    // Reads a new string of `data_size` bytes and a terminator. A zero byte ends its text early.
    char *raw_bytes(int32_t data_size);

    void fields(void *record, Fields list);

    // Reads the listed fields into a new record, in which every other byte is zero.
    template <class Record, size_t size>
    Record *record(const FieldList<Record, size> &list)
    {
        static_assert(sizeof(Record) <= largest_record);
        return static_cast<Record *>(record(Fields(list)));
    }
    void *record(Fields list);

    // Reads a count and a new list of records; null for a count below 1.
    GList *records(const char *path, Fields list);

    // Reads a new list of strings, in which an empty string is a null element; null for a count
    // below 1. Q-WIRE-6
    GList *strings(int64_t count, const char *path, EachLine each = no_line);

    // Returns a second copy of a string that str() returned. In an arena no string is released on
    // its own, so one copy is enough. Q-GUARDED-1
    char *copy(char *text) { return is_guarded() ? text : g_strdup(text); }

    // Returns a new zero-filled record.
    template <class Record>
    Record *make()
    {
        static_assert(alignof(Record) <= alignof(void *));
        static_assert(sizeof(Record) <= largest_record);
        return static_cast<Record *>(make(sizeof(Record)));
    }

    // Like record(), but returns null without memory, for categories with a rule for this case. A
    // guarded cursor fails instead, and returns scratch memory that no message keeps.
    template <class Record, size_t size>
    Record *try_record(const FieldList<Record, size> &list)
    {
        return static_cast<Record *>(try_record(Fields(list)));
    }

    // Returns a new zero-filled array for the `count` strings that follow. It is empty for a count
    // below 1, and for a reader of parts.
    std::span<char *> make_array(int32_t count, const char *path);

    // The elements of a list on the wire, one after the other.
    class Elements {
    public:
        // A count below 1 announces none.
        Elements(Reader &in, int64_t count);
        ~Elements();
        Elements(const Elements &) = delete;
        Elements &operator=(const Elements &) = delete;

        // Whether there is another element, which the next steps read.
        bool next()
        {
            if (!in_ || next_ >= count_) {
                return false;
            }
            position_ = static_cast<int32_t>(next_++);
            return true;
        }

    protected:
        Reader &in_;

    private:
        int32_t &position_;
        uint32_t count_;
        uint32_t next_ = 0;
    };

    // The same, and a new list in memory. Its head is null until an element is appended.
    class List : public Elements {
    public:
        using Elements::Elements;
        void append(void *element);
        GList *head() const { return head_; }

    private:
        GList *head_ = nullptr;
        GList *tail_ = nullptr;
    };

private:
    // What a step needs: a part of a kind, or something that is no part of its own.
    enum class Need : uint8_t {
        u8 = IPC_PART_U8,
        u32 = IPC_PART_U32,
        i32 = IPC_PART_I32,
        count = IPC_PART_COUNT,
        str = IPC_PART_STR,  // the count of its text
        bytes = IPC_PART_BYTES,
        reserved = IPC_PART_RESERVED,
        text,      // of a str
        elements,  // that fit; their parts follow
    };

    // Whether `size` bytes are there. If not, a guarded reader fails. A reader of parts asks for
    // the part.
    bool require(uint64_t size, const char *path, Need need)
    {
        return size <= remaining() || ask(size, path, need);
    }
    [[gnu::cold, gnu::noinline]] bool ask(uint64_t size, const char *path, Need need);
    [[gnu::cold]] bool take_part(uint32_t size, const char *path, Need need);
    [[gnu::cold]] void fail_at_part(uint64_t size, const char *path);

    uint32_t word(const char *path, Need need);
    void read_body_head(uint32_t &type, Need type_need, uint32_t &param, int32_t &data_size);
    [[gnu::cold]] void body_head_by_words(uint32_t &type, Need type_need, uint32_t &param,
                                          int32_t &data_size);
    bool read_fields(uint8_t *record, Fields list);
    const uint8_t *read_texts(const uint8_t *position, char **texts, size_t count, size_t &budget);
    [[gnu::cold]] void fields_one_by_one(uint8_t *record, Fields list);
    [[gnu::cold]] void skip_str(const char *path);
    void *make(size_t size);
    void *try_record(Fields list);

    // Returns memory for a record or a cell; never null.
    void *allocate(size_t size)
    {
        if (!is_guarded()) {
            return g_malloc(size);
        }
        void *memory = allocate_in_arena(size);
        return memory != nullptr ? memory : arena_->scratch();
    }
    // Without memory the cursor fails, and the result is null.
    void *allocate_in_arena(size_t size)
    {
        void *memory = arena_->take(size);
        return memory != nullptr ? memory : allocate_in_new_block(size);
    }
    [[gnu::cold, gnu::noinline]] void *allocate_in_new_block(size_t size);

    char *new_text(const uint8_t *bytes, size_t length);

    const uint8_t *advance(size_t count) { return Cursor::advance(position_, count); }

    const uint8_t *position_;
    Arena *arena_ = nullptr;
    Parts *parts_ = nullptr;
    // In lists of elements: in an outer one, and in one within its element; -1 outside of them.
    std::array<int32_t, 2> positions_ = {-1, -1};
    uint32_t depth_ = 0;
};

inline void Writer::message_head(const mdm_msg_t &msg)
{
    const size_t size = text_size(msg.hdr_text);
    if (!fits(smallest_head_size, size)) [[unlikely]] {
        return fail_in_message_head(msg);
    }
    const auto length = static_cast<uint32_t>(size);
    uint8_t *position = advance(smallest_head_size + size_t{length});
    position = store_u32(position, msg.hdr_word1);
    position = store_u32(position, msg.hdr_word2);
    position = write_str(position, msg.hdr_text, length);
    position = store_u32(position, msg.hdr_word3);
    position = store_u32(position, msg.hdr_word6);
    position = store_u32(position, msg.hdr_word7);
    position = store_u32(position, msg.hdr_word4);
    store_u32(position, msg.hdr_word5);
}

// The envelope has checked that a head without its text is there.
inline void Reader::message_head(mdm_msg_t &msg)
{
    const uint8_t *position = position_;
    const size_t length = load_u32(position + size_t{2} * word_size);
    if (is_guarded() && length > remaining() - smallest_head_size) [[unlikely]] {
        return message_head_by_fields(msg);
    }
    advance(smallest_head_size + length);
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
