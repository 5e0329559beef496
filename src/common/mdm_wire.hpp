// SPDX-License-Identifier: Apache-2.0
//
// The wire format's building blocks, bottom up: words, strings, the body head, field lists, the
// trusting cursors.
//
//   u8, u32, i32   little-endian, at any alignment
//   str            u32 byte count, then the bytes; no terminator; null and empty are count 0
//   body head      type, param, data_size: 12 bytes
//
// Values stand back to back, without padding. Nothing here logs, checks a pointer or knows where
// a buffer ends; only reading allocates.
#pragma once

#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>

#include <glib.h>

namespace mdm {

// Words.

inline constexpr uint32_t word_size = 4;

inline uint8_t *store_u32(uint8_t *position, uint32_t value)
{
    const uint32_t wire = GUINT32_TO_LE(value);
    std::memcpy(position, &wire, word_size);
    return position + word_size;
}

inline uint32_t load_u32(const uint8_t *position)
{
    uint32_t wire = 0;
    std::memcpy(&wire, position, word_size);
    return GUINT32_FROM_LE(wire);
}

// Strings.

inline uint32_t text_length(const char *text)
{
    return text == nullptr ? 0 : static_cast<uint32_t>(std::strlen(text));
}

inline uint8_t *write_str(uint8_t *position, const char *text)
{
    const uint32_t length = text_length(text);
    position = store_u32(position, length);
    if (length == 0) {
        return position;
    }
    std::memcpy(position, text, length);
    return position + length;
}

// What g_strndup() returns, one call cheaper: a new block of count + 1 bytes, whose text ends at
// the first zero byte and whose rest is zero.
inline char *new_text(const uint8_t *bytes, size_t count)
{
    auto *text = static_cast<char *>(g_malloc(count + 1));
    std::strncpy(text, reinterpret_cast<const char *>(bytes), count);
    text[count] = '\0';
    return text;
}

// The previous value of *text is overwritten, not freed.
inline const uint8_t *read_str(const uint8_t *position, char **text)
{
    const uint32_t length = load_u32(position);
    position += word_size;
    if (length == 0) {
        *text = nullptr;
        return position;
    }
    *text = new_text(position, length);
    return position + length;
}

// The body head.

inline constexpr uint32_t body_head_size = 12;

// `aux` stands between `type` and `param` in memory and is not sent.
template <class Body>
uint8_t *write_body_head(uint8_t *position, const Body *body)
{
    position = store_u32(position, static_cast<uint32_t>(body->type));
    position = store_u32(position, body->param);
    return store_u32(position, static_cast<uint32_t>(body->data_size));
}

template <class Body>
const uint8_t *read_body_head(const uint8_t *position, Body *body)
{
    body->type = static_cast<decltype(body->type)>(load_u32(position));
    body->param = load_u32(position + word_size);
    body->data_size = static_cast<int32_t>(load_u32(position + word_size + word_size));
    return position + body_head_size;
}

// Field lists: the members of a record that travel, in wire order, each with its name. Sizing,
// writing, reading and releasing a record run over such lists, so they cannot drift apart.

template <class Record, class Member>
struct Field {
    const char *name;
    Member Record::*member;
};

template <class Record, class Member>
Field(const char *, Member Record::*) -> Field<Record, Member>;

template <class Record, class... Members>
struct FieldList {
    std::tuple<Field<Record, Members>...> fields;
};

template <class Record, class... Members>
constexpr FieldList<Record, Members...> fields(Field<Record, Members>... list)
{
    return {std::tuple(list...)};
}

// MDM_FIELDS(record, a, b) is fields(Field{"a", &record::a}, Field{"b", &record::b}).
#define MDM_FIELDS(record, ...) ::mdm::fields(MDM_EXPAND(MDM_FIELD_STEP(record, __VA_ARGS__)))
#define MDM_FIELD_STEP(record, first, ...) \
    ::mdm::Field{#first,                   \
                 &record::first} __VA_OPT__(, MDM_FIELD_NEXT MDM_PARENS(record, __VA_ARGS__))
#define MDM_FIELD_NEXT() MDM_FIELD_STEP
#define MDM_PARENS ()
// Each level rescans four times as often: enough for 64 fields and more.
#define MDM_EXPAND(...) MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(__VA_ARGS__))))
#define MDM_EXPAND_16(...) MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(__VA_ARGS__))))
#define MDM_EXPAND_4(...) MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(__VA_ARGS__))))
#define MDM_EXPAND_1(...) __VA_ARGS__

template <class Record, class... Members, class Visit>
constexpr void for_each_field(const FieldList<Record, Members...> &list, Visit visit)
{
    std::apply([&visit](const auto &...field) { (visit(field), ...); }, list.fields);
}

template <class Record, class... Members>
uint32_t size_of_fields(const Record &record, const FieldList<Record, Members...> &list)
{
    uint32_t size = 0;
    for_each_field(list, [&](const auto &field) {
        const auto &value = record.*field.member;
        if constexpr (std::is_convertible_v<decltype(value), const char *>) {
            size += word_size + text_length(value);
        } else {
            using Value = std::remove_cvref_t<decltype(value)>;
            static_assert(std::is_same_v<Value, uint8_t> || std::is_same_v<Value, uint32_t> ||
                              std::is_same_v<Value, int32_t>,
                          "no wire type for this member");
            size += static_cast<uint32_t>(sizeof value);
        }
    });
    return size;
}

template <class Out, class Record, class... Members>
void write_fields(Out &out, const Record &record, const FieldList<Record, Members...> &list)
{
    for_each_field(list, [&](const auto &field) { out.value(record.*field.member); });
}

template <class In, class Record, class... Members>
void read_fields(In &in, Record &record, const FieldList<Record, Members...> &list)
{
    for_each_field(list, [&](const auto &field) { in.value(record.*field.member); });
}

inline void release_string(char *&text)
{
    if (text != nullptr) {  // most are
        g_free(text);
        text = nullptr;
    }
}

// Releases the strings of a record, in wire order, and sets each to null.
template <class Record, class... Members>
void release_strings(Record &record, const FieldList<Record, Members...> &list)
{
    for_each_field(list, [&](const auto &field) {
        auto &value = record.*field.member;
        if constexpr (std::is_same_v<decltype(value), char *&>) {
            release_string(value);
        }
    });
}

// The trusting cursors: they believe their pointers and the counts that they read.

class Writer {
public:
    explicit Writer(uint8_t *position) : position_(position) {}

    explicit operator bool() const { return position_ != nullptr; }
    uint8_t *position() const { return position_; }

    void u8(uint8_t value) { *position_++ = value; }
    void u32(uint32_t value) { position_ = store_u32(position_, value); }
    void i32(int32_t value) { u32(static_cast<uint32_t>(value)); }
    void str(const char *text) { position_ = write_str(position_, text); }

    void bytes(const void *data, int32_t count)
    {
        std::memcpy(position_, data, static_cast<size_t>(count));
        position_ += count;
    }

    template <class Body>
    void body_head(const Body &body)
    {
        position_ = write_body_head(position_, &body);
    }

    template <class Record, class... Members>
    void record(const Record &record, const FieldList<Record, Members...> &list)
    {
        write_fields(*this, record, list);
    }

    void value(uint8_t number) { u8(number); }
    void value(uint32_t number) { u32(number); }
    void value(int32_t number) { i32(number); }
    void value(const char *text) { str(text); }

private:
    uint8_t *position_;
};

class Reader {
public:
    explicit Reader(const uint8_t *position) : position_(position) {}

    explicit operator bool() const { return position_ != nullptr; }
    const uint8_t *position() const { return position_; }

    uint8_t u8() { return *position_++; }

    uint32_t u32()
    {
        const uint32_t value = load_u32(position_);
        position_ += word_size;
        return value;
    }

    int32_t i32() { return static_cast<int32_t>(u32()); }

    // A new string, or null for an empty one.
    char *str()
    {
        char *text = nullptr;
        position_ = read_str(position_, &text);
        return text;
    }

    // A new string of the next `count` bytes and a terminator; a zero byte ends its text early.
    char *bytes(int32_t count)
    {
        char *text = new_text(position_, static_cast<size_t>(count));
        position_ += count;
        return text;
    }

    template <class Body>
    void body_head(Body &body)
    {
        position_ = read_body_head(position_, &body);
    }

    // A new zero-filled record.
    template <class Record>
    Record *make()
    {
        return static_cast<Record *>(g_malloc0(sizeof(Record)));
    }

    // A new record with the listed fields read and every other byte zero.
    template <class Record, class... Members>
    Record *record(const FieldList<Record, Members...> &list)
    {
        auto *record = make<Record>();
        read_fields(*this, *record, list);
        return record;
    }

    // A new list of `count` elements, each made by read_element(); null for a count below 1. The
    // queue keeps the tail, so n elements cost n steps.
    template <class ReadElement>
    GList *list(int32_t count, ReadElement read_element)
    {
        GQueue elements = G_QUEUE_INIT;
        for (int32_t i = 0; i < count; ++i) {
            g_queue_push_tail(&elements, read_element());
        }
        return elements.head;
    }

    void value(uint8_t &number) { number = u8(); }
    void value(uint32_t &number) { number = u32(); }
    void value(int32_t &number) { number = i32(); }
    void value(char *&text) { text = str(); }

private:
    const uint8_t *position_;
};

// The record that a body's `data` points to.
template <class Record, class Body>
Record &payload(const Body &body)
{
    return *static_cast<Record *>(body.data);
}

}  // namespace mdm
