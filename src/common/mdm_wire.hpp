// SPDX-License-Identifier: Apache-2.0
//
// The wire format's building blocks, bottom up: words, strings, the body head, field lists, lists,
// what every cursor can do, the trusting cursors.
//
//   u8, u32, i32   little-endian, at any alignment
//   str            u32 byte count, then the bytes; no terminator; null and empty are count 0
//   body head      type, param, data_size: 12 bytes
//
// Values stand back to back, without padding. Nothing here logs, checks a pointer or knows where
// a buffer ends; only reading allocates.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
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

inline uint32_t size_of_str(const char *text)
{
    return word_size + text_length(text);
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

// Fills a block of count + 1 bytes as g_strndup() does: the text ends at the first zero byte, and
// the rest is zero.
inline char *copy_text(char *text, const uint8_t *bytes, size_t count)
{
    std::strncpy(text, reinterpret_cast<const char *>(bytes), count);
    text[count] = '\0';
    return text;
}

// What g_strndup() returns, one call cheaper.
inline char *new_text(const uint8_t *bytes, size_t count)
{
    return copy_text(static_cast<char *>(g_malloc(count + 1)), bytes, count);
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
// A body whose list is empty: the head and the list's count.
inline constexpr uint32_t empty_list_size = body_head_size + word_size;

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

// Field lists: the members of a record that travel, in wire order, each with its path, which names
// it among all fields of all messages. Sizing, writing, reading and releasing a record run over
// such lists, so they cannot drift apart.

template <class Record, class Member>
struct Field {
    using Owner = Record;
    using Value = Member;

    const char *path;
    Member Record::*member;

    constexpr Member &of(Record &record) const { return record.*member; }
    constexpr const Member &of(const Record &record) const { return record.*member; }
};

template <class Record, class Member>
Field(const char *, Member Record::*) -> Field<Record, Member>;

// A member that is a union: the list says which of its arms travels.
template <class Record, class Union, class Arm>
struct UnionField {
    using Owner = Record;
    using Value = Arm;

    const char *path;
    Union Record::*member;
    Arm Union::*arm;

    constexpr Arm &of(Record &record) const { return record.*member.*arm; }
    constexpr const Arm &of(const Record &record) const { return record.*member.*arm; }
};

template <class Record, class Union, class Arm>
UnionField(const char *, Union Record::*, Arm Union::*) -> UnionField<Record, Union, Arm>;

template <class Record, class... Fields>
struct FieldList {
    std::tuple<Fields...> fields;
};

template <class First, class... Rest>
constexpr FieldList<typename First::Owner, First, Rest...> fields(First first, Rest... rest)
{
    return {std::tuple(first, rest...)};
}

// MDM_FIELDS(record, "place", a, b) is
// fields(Field{"place.a", &record::a}, Field{"place.b", &record::b}).
#define MDM_FIELDS(record, place, ...) \
    ::mdm::fields(MDM_EXPAND(MDM_FIELD_STEP(record, place, __VA_ARGS__)))
#define MDM_FIELD_STEP(record, place, first, ...)              \
    ::mdm::Field{place "." #first, &record::first} __VA_OPT__( \
        , MDM_FIELD_NEXT MDM_PARENS(record, place, __VA_ARGS__))
#define MDM_FIELD_NEXT() MDM_FIELD_STEP
#define MDM_PARENS ()
// Each level rescans four times as often: enough for 64 fields and more.
#define MDM_EXPAND(...) MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(__VA_ARGS__))))
#define MDM_EXPAND_16(...) MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(__VA_ARGS__))))
#define MDM_EXPAND_4(...) MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(__VA_ARGS__))))
#define MDM_EXPAND_1(...) __VA_ARGS__

template <class Record, class... Fields, class Visit>
constexpr void for_each_field(const FieldList<Record, Fields...> &list, Visit visit)
{
    std::apply([&visit](const auto &...field) { (visit(field), ...); }, list.fields);
}

// The fields of a body head.
#define MDM_BODY_HEAD_FIELDS(category) \
    MDM_FIELDS(mdm_##category##_info_t, #category, type, param, data_size)

// The size of a number, and of a string without its bytes.
template <class Value>
constexpr uint32_t smallest_size_of()
{
    if constexpr (std::is_same_v<Value, char *>) {
        return word_size;
    } else {
        static_assert(std::is_same_v<Value, uint8_t> || std::is_same_v<Value, uint32_t> ||
                          std::is_same_v<Value, int32_t>,
                      "no wire type for this member");
        return sizeof(Value);
    }
}

// The size of a record whose strings are all empty.
template <class Record, class... Fields>
constexpr uint32_t smallest_size(const FieldList<Record, Fields...> & /*list*/)
{
    return (smallest_size_of<typename Fields::Value>() + ...);
}

// Whether every byte of the record belongs to a listed field, none of which is listed twice.
template <class Record, class... Fields>
constexpr bool is_whole(const FieldList<Record, Fields...> & /*list*/)
{
    return (sizeof(typename Fields::Value) + ...) == sizeof(Record);
}

template <class Record, class... Fields>
uint32_t size_of_fields(const Record &record, const FieldList<Record, Fields...> &list)
{
    uint32_t size = smallest_size(list);
    for_each_field(list, [&](const auto &field) {
        if constexpr (std::is_convertible_v<decltype(field.of(record)), const char *>) {
            size += text_length(field.of(record));
        }
    });
    return size;
}

// The same for the record that a body's `data` points to.
template <class Record, class... Fields>
uint32_t size_of_fields(const void *record, const FieldList<Record, Fields...> &list)
{
    return size_of_fields(*static_cast<const Record *>(record), list);
}

template <class Out, class Record, class... Fields>
void write_fields(Out &out, const Record &record, const FieldList<Record, Fields...> &list)
{
    for_each_field(list, [&](const auto &field) { out.value(field.of(record), field.path); });
}

template <class In, class Record, class... Fields>
void read_fields(In &in, Record &record, const FieldList<Record, Fields...> &list)
{
    for_each_field(list, [&](const auto &field) { in.value(field.of(record), field.path); });
}

// What a size handler returns for a payload that it cannot size. The envelope takes it for a size
// like any other: what is then written has no room, so a sender must not pass such a body.
inline constexpr uint32_t no_room = 0;

// The payload that a body's `data` points to.

// For the categories that test `data_size` against zero, so that a negative one announces a payload
// too.
template <class Body>
bool has_payload(const Body &body)
{
    return body.data != nullptr && body.data_size != 0;
}

// The record that a body's `data` points to.
template <class Record, class Body>
Record &payload(const Body &body)
{
    return *static_cast<Record *>(body.data);
}

// Releases what a body's `data` points at, if that owns nothing further.
template <class Body>
void release_data(Body &body)
{
    g_free(body.data);
    body.data = nullptr;
}

inline void release_string(char *&text)
{
    if (text != nullptr) {  // most are
        g_free(text);
        text = nullptr;
    }
}

// Releases the strings of a record, in wire order, and sets each to null.
template <class Record, class... Fields>
void release_strings(Record &record, const FieldList<Record, Fields...> &list)
{
    for_each_field(list, [&](const auto &field) {
        auto &value = field.of(record);
        if constexpr (std::is_same_v<decltype(value), char *&>) {
            release_string(value);
        }
    });
}

// Releases a record's strings, then the record.
template <class Record, class... Fields>
void release_record(void *record, const FieldList<Record, Fields...> &list)
{
    release_strings(*static_cast<Record *>(record), list);
    g_free(record);
}

// Lists. A walk begins at the list's first element, and so does a release. The count on the wire is
// that of g_list_length(), null elements included.

template <class Element, bool ends_at_null>
class ListWalk {
public:
    struct End {};

    class Iterator {
    public:
        explicit Iterator(GList *cell) : cell_(cell) {}
        Element *operator*() const { return static_cast<Element *>(cell_->data); }
        Iterator &operator++()
        {
            cell_ = cell_->next;
            return *this;
        }
        bool operator!=(End /*end*/) const
        {
            return cell_ != nullptr && !(ends_at_null && cell_->data == nullptr);
        }

    private:
        GList *cell_;
    };

    explicit ListWalk(GList *list) : list_(list) {}
    Iterator begin() const { return Iterator(g_list_first(list_)); }
    End end() const { return {}; }

private:
    GList *list_;
};

// A body keeps its list in a pointer to void; both kinds will do.
template <class Element>
ListWalk<Element, false> elements(void *list)
{
    return ListWalk<Element, false>(static_cast<GList *>(list));
}

template <class Element>
ListWalk<Element, true> elements_before_null(void *list)
{
    return ListWalk<Element, true>(static_cast<GList *>(list));
}

inline uint32_t length_of(void *list)
{
    return g_list_length(static_cast<GList *>(list));
}

inline bool has_null_element(void *list)
{
    return g_list_find(g_list_first(static_cast<GList *>(list)), nullptr) != nullptr;
}

inline uint32_t size_of_strings_before_null(void *strings)
{
    uint32_t size = 0;
    for (const char *text : elements_before_null<char>(strings)) {
        size += size_of_str(text);
    }
    return size;
}

// Nothing if an element is null.
template <class Record, class... Fields>
std::optional<uint32_t> size_of_records(void *records, const FieldList<Record, Fields...> &list)
{
    uint32_t size = 0;
    for (const Record *record : elements<Record>(records)) {
        if (record == nullptr) {
            return std::nullopt;
        }
        size += size_of_fields(*record, list);
    }
    return size;
}

inline void release_cells(void *list)
{
    g_list_free(g_list_first(static_cast<GList *>(list)));
}

// Releases each record with its strings, then the cells.
template <class Record, class... Fields>
void release_records(void *records, const FieldList<Record, Fields...> &list)
{
    for (Record *record : elements<Record>(records)) {
        if (record != nullptr) {
            release_record(record, list);
        }
    }
    release_cells(records);
}

// Releases the elements, which own nothing further, then the cells.
inline void release_elements(void *list)
{
    g_list_free_full(g_list_first(static_cast<GList *>(list)), g_free);
}

// What every cursor can do with the few steps that it has of its own. A cursor that checks is false
// once a step has failed, and from then on writes nothing, or reads zeros and empty lists. Each step
// takes the path of the field that it is at, for whoever wants to know.

template <class Cursor>
class WritingSteps {
public:
    void i32(int32_t value, const char *path) { self().u32(static_cast<uint32_t>(value), path); }

    template <class Record, class... Fields>
    void fields(const Record &record, const FieldList<Record, Fields...> &list)
    {
        write_fields(self(), record, list);
    }

    // The record that a body's `data` points to.
    template <class Record, class... Fields>
    void record(const void *record, const FieldList<Record, Fields...> &list)
    {
        self().fields(*static_cast<const Record *>(record), list);
    }

    // The list's count, then its records; a null one is counted, but not written.
    template <class Record, class... Fields>
    void records(void *records, const char *path, const FieldList<Record, Fields...> &list)
    {
        self().count(records, path);
        for (const Record *record : elements<Record>(records)) {
            if (record != nullptr) {
                self().fields(*record, list);
            }
        }
    }

    // The list's strings, without a count, up to the first null one.
    void strings_before_null(void *strings, const char *path)
    {
        for (const char *text : elements_before_null<char>(strings)) {
            self().str(text, path);
        }
    }

    // The list's count, then its strings; in a null one's place `gap` bytes are skipped.
    void strings_or_gaps(void *strings, int32_t gap, const char *path)
    {
        self().count(strings, path);
        for (const char *text : elements<char>(strings)) {
            if (text != nullptr) {
                self().str(text, path);
            } else {
                self().skip(gap, path);
            }
        }
    }

    void value(uint8_t number, const char *path) { self().u8(number, path); }
    void value(uint32_t number, const char *path) { self().u32(number, path); }
    void value(int32_t number, const char *path) { i32(number, path); }
    void value(const char *text, const char *path) { self().str(text, path); }

private:
    Cursor &self() { return static_cast<Cursor &>(*this); }
};

template <class Cursor>
class ReadingSteps {
public:
    int32_t i32(const char *path) { return static_cast<int32_t>(self().u32(path)); }

    template <class Record, class... Fields>
    void fields(Record &record, const FieldList<Record, Fields...> &list)
    {
        read_fields(self(), record, list);
    }

    // A new record with the listed fields read and every other byte zero.
    template <class Record, class... Fields>
    Record *record(const FieldList<Record, Fields...> &list)
    {
        auto *record = self().template make<Record>();
        self().fields(*record, list);
        return record;
    }

    // A new list of records, from its count on; null for a count below 1.
    template <class Record, class... Fields>
    GList *records(const char *path, const FieldList<Record, Fields...> &list)
    {
        const int32_t count = self().count(path, smallest_size(list));
        auto records = self().new_list();
        for (int32_t i = 0; self() && i < count; ++i) {
            records.append(self().record(list));
        }
        return records.head();
    }

    // A new list of strings, an empty one a null element; null for a count below 1.
    GList *strings(int64_t count, const char *path)
    {
        auto strings = self().new_list();
        for (int64_t i = 0; self() && i < count; ++i) {
            strings.append(self().str(path));
        }
        return strings.head();
    }

    void value(uint8_t &number, const char *path) { number = self().u8(path); }
    void value(uint32_t &number, const char *path) { number = self().u32(path); }
    void value(int32_t &number, const char *path) { number = i32(path); }
    void value(char *&text, const char *path) { text = self().str(path); }

private:
    Cursor &self() { return static_cast<Cursor &>(*this); }
};

// The trusting cursors: they believe their pointers and the counts that they read, and take memory
// from the heap.

class Writer : public WritingSteps<Writer> {
public:
    explicit Writer(uint8_t *position) : position_(position) {}

    explicit operator bool() const { return position_ != nullptr; }
    uint8_t *position() const { return position_; }

    void u8(uint8_t value, const char * /*path*/) { *position_++ = value; }
    void u32(uint32_t value, const char * /*path*/) { position_ = store_u32(position_, value); }
    void str(const char *text, const char * /*path*/) { position_ = write_str(position_, text); }

    void bytes(const void *data, int32_t count, const char * /*path*/)
    {
        std::memcpy(position_, data, static_cast<size_t>(count));
        position_ += count;
    }

    // Leaves bytes as they are: zero, in the envelope's buffer.
    void skip(int32_t count, const char * /*path*/) { position_ += count; }

    // The count of a list, null elements included.
    uint32_t count(void *list, const char *path)
    {
        const uint32_t count = length_of(list);
        u32(count, path);
        return count;
    }

    // An element that was counted is not written.
    void omit(const char * /*path*/) {}

    template <class Body, class... Fields>
    void body_head(const Body &body, const FieldList<Body, Fields...> & /*list*/)
    {
        position_ = write_body_head(position_, &body);
    }

private:
    uint8_t *position_;
};

class Reader : public ReadingSteps<Reader> {
public:
    explicit Reader(const uint8_t *position) : position_(position) {}

    explicit operator bool() const { return position_ != nullptr; }
    const uint8_t *position() const { return position_; }

    uint8_t u8(const char * /*path*/) { return *position_++; }

    uint32_t u32(const char * /*path*/)
    {
        const uint32_t value = load_u32(position_);
        position_ += word_size;
        return value;
    }

    // How many elements follow, each of `smallest` bytes or more; below 1 none do.
    int32_t count(const char *path, uint32_t /*smallest*/) { return i32(path); }
    // The same for a list that may be longer than a signed number tells.
    uint32_t unsigned_count(const char *path, uint32_t /*smallest*/) { return u32(path); }

    // A new string, or null for an empty one.
    char *str(const char * /*path*/)
    {
        char *text = nullptr;
        position_ = read_str(position_, &text);
        return text;
    }

    // A new string of the next `count` bytes and a terminator; a zero byte ends its text early.
    char *bytes(int32_t count, const char * /*path*/)
    {
        char *text = new_text(position_, static_cast<size_t>(count));
        position_ += count;
        return text;
    }

    template <class Body, class... Fields>
    void body_head(Body &body, const FieldList<Body, Fields...> & /*list*/)
    {
        position_ = read_body_head(position_, &body);
    }

    // A second copy of a string that str() returned.
    // NOLINTNEXTLINE(readability-convert-member-functions-to-static): memory is the cursor's
    char *copy(char *text) { return g_strdup(text); }

    // A new zero-filled record.
    template <class Record>
    Record *make()
    {
        return static_cast<Record *>(g_malloc0(sizeof(Record)));
    }

    // The same where a category says what happens without memory: null.
    template <class Record>
    Record *try_make()
    {
        return static_cast<Record *>(g_try_malloc0(sizeof(Record)));
    }

    // A new zero-filled array for as many strings as follow; of null for a count below 1.
    // NOLINTNEXTLINE(readability-convert-member-functions-to-static): memory is the cursor's
    std::span<char *> make_array(int32_t count, const char * /*path*/)
    {
        const auto size = static_cast<size_t>(std::max(count, 0));
        return {g_new0(char *, size), size};
    }

    // A new list, null until something is appended. It keeps its tail, so n elements cost n steps.
    class List {
    public:
        void append(void *element) { g_queue_push_tail(&queue_, element); }
        GList *head() const { return queue_.head; }

    private:
        GQueue queue_ = G_QUEUE_INIT;
    };
    // NOLINTNEXTLINE(readability-convert-member-functions-to-static): memory is the cursor's
    List new_list() { return {}; }

private:
    const uint8_t *position_;
};

}  // namespace mdm
