// SPDX-License-Identifier: Apache-2.0
//
// Field lists: the members of a record that travel, in wire order, as data. One function each
// sizes, writes, reads and releases a record by its list, so these four cannot drift apart.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "mdm/inspect.h"
#include "wire/words.hpp"

namespace mdm {

// The wire types, numbered like the kinds of parts. `none` ends a list.
enum class WireType : uint8_t {
    byte = IPC_PART_U8,
    word = IPC_PART_U32,
    signed_word = IPC_PART_I32,
    text = IPC_PART_STR,
    none = UINT8_MAX,
};

template <class Member>
constexpr WireType wire_type_of()
{
    if constexpr (std::is_same_v<Member, char *>) {
        return WireType::text;
    } else if constexpr (std::is_same_v<Member, uint8_t>) {
        return WireType::byte;
    } else if constexpr (std::is_same_v<Member, int32_t>) {
        return WireType::signed_word;
    } else {
        static_assert(std::is_same_v<Member, uint32_t>, "no wire type for this member");
        return WireType::word;
    }
}

// The size of a member in memory.
constexpr size_t size_of(WireType type)
{
    switch (type) {
    case WireType::none:
    case WireType::byte:
        return sizeof(uint8_t);
    case WireType::word:
    case WireType::signed_word:
        return sizeof(uint32_t);
    case WireType::text:
        break;
    }
    return sizeof(char *);
}

// The size of a member on the wire; for a string, the size of an empty one.
constexpr uint32_t smallest_size(WireType type)
{
    return type == WireType::byte ? sizeof(uint8_t) : word_size;
}

// A member that travels, with the path that names it among all fields of all messages.
struct Field {
    std::string_view path;
    WireType type;
    size_t offset;
};

// Members of one wire type that are adjacent both in the record and on the wire: `count` members,
// the first at `offset`.
struct Run {
    WireType type;
    uint8_t count;
    uint8_t offset;
};

// A field list is an array of bytes: three facts about the record, the runs, a mark that ends them,
// and the paths, each with its terminator. It holds no pointer, so the dynamic linker has nothing
// to relocate.
namespace field_list {
inline constexpr size_t record_size = 0;
inline constexpr size_t smallest_size = 1;  // of the record on the wire
inline constexpr size_t is_whole = 2;       // whether every byte of the record belongs to a field
inline constexpr size_t runs = 3;
inline constexpr size_t run_size = 3;
inline constexpr size_t end_size = 1;  // of the mark that ends the runs
}  // namespace field_list

template <class Record, size_t size>
struct FieldList {
    std::array<uint8_t, size> bytes;
};

// Any field list, whatever its record and its size.
class Fields {
public:
    template <class Record, size_t size>
    // NOLINTNEXTLINE(google-explicit-constructor): it is the same list
    constexpr Fields(const FieldList<Record, size> &list) : bytes_(list.bytes.data())
    {
    }

    constexpr size_t record_size() const { return bytes_[field_list::record_size]; }
    constexpr uint32_t smallest_size() const { return bytes_[field_list::smallest_size]; }
    constexpr bool is_whole() const { return bytes_[field_list::is_whole] != 0; }

    class Iterator {
    public:
        struct End {};

        explicit constexpr Iterator(const uint8_t *run) : run_(run) {}
        constexpr Run operator*() const { return {type(), run_[1], run_[2]}; }
        constexpr Iterator &operator++()
        {
            run_ += field_list::run_size;
            return *this;
        }
        constexpr bool operator!=(End /*end*/) const { return type() != WireType::none; }

    private:
        constexpr WireType type() const { return static_cast<WireType>(*run_); }

        const uint8_t *run_;
    };
    constexpr Iterator begin() const { return Iterator(bytes_ + field_list::runs); }
    static constexpr Iterator::End end() { return {}; }

    // The first path. Each further path begins behind the terminator of the previous one.
    const char *paths() const
    {
        const uint8_t *run = bytes_ + field_list::runs;
        while (static_cast<WireType>(*run) != WireType::none) {
            run += field_list::run_size;
        }
        return reinterpret_cast<const char *>(run + field_list::end_size);
    }

private:
    const uint8_t *bytes_;
};

// Whether a field continues the run of the previous field.
template <size_t count>
constexpr bool goes_on(const std::array<Field, count> &fields, size_t index)
{
    return index > 0 && fields[index].type == fields[index - 1].type &&
           fields[index].offset == fields[index - 1].offset + size_of(fields[index].type);
}

template <size_t count>
constexpr size_t count_runs(const std::array<Field, count> &fields)
{
    size_t runs = 0;
    for (size_t i = 0; i < count; ++i) {
        runs += goes_on(fields, i) ? 0 : 1;
    }
    return runs;
}

template <size_t count>
constexpr size_t size_of_paths(const std::array<Field, count> &fields)
{
    size_t size = 0;
    for (const Field &field : fields) {
        size += field.path.size() + 1;
    }
    return size;
}

// Whether each number of a field list fits into its byte.
template <size_t count>
constexpr bool all_fit(const std::array<Field, count> &fields)
{
    return count * word_size <= UINT8_MAX &&
           std::all_of(fields.begin(), fields.end(),
                       [](const Field &field) { return field.offset <= UINT8_MAX; });
}

// `Maker` returns an array of the record's fields.
template <class Record, class Maker>
consteval auto make_field_list(Maker /*maker*/)
{
    constexpr auto fields = Maker()();
    static_assert(all_fit(fields));
    constexpr size_t run_count = count_runs(fields);
    constexpr size_t runs_size = run_count * field_list::run_size + field_list::end_size;
    FieldList<Record, field_list::runs + runs_size + size_of_paths(fields)> list{};
    auto run = list.bytes.begin() + field_list::runs;
    auto path = run + runs_size;
    size_t size_of_all = 0;
    uint32_t smallest = 0;
    for (size_t i = 0; i < fields.size(); ++i) {
        const Field &field = fields[i];
        if (goes_on(fields, i)) {
            ++*(run - 2);
        } else {
            *run++ = static_cast<uint8_t>(field.type);
            *run++ = 1;
            *run++ = static_cast<uint8_t>(field.offset);
        }
        path = std::copy(field.path.begin(), field.path.end(), path) + 1;
        size_of_all += size_of(field.type);
        smallest += smallest_size(field.type);
    }
    // No reader makes a larger record, so its size is not needed.
    *run = static_cast<uint8_t>(WireType::none);
    list.bytes[field_list::record_size] = sizeof(Record) <= largest_record ? sizeof(Record) : 0;
    list.bytes[field_list::smallest_size] = static_cast<uint8_t>(smallest);
    list.bytes[field_list::is_whole] = size_of_all == sizeof(Record) ? 1 : 0;
    return list;
}

// MDM_FIELDS(record, "place", a, b) is the list of record::a, "place.a", and record::b, "place.b".
#define MDM_FIELDS(record, place, ...) \
    MDM_FIELD_LIST(record, MDM_EXPAND(MDM_FIELD_STEP(record, place, __VA_ARGS__)))
#define MDM_FIELD_STEP(record, place, first, ...)                       \
    MDM_FIELD(record, place "." #first, first, decltype(record::first)) \
    __VA_OPT__(, MDM_FIELD_NEXT MDM_PARENS(record, place, __VA_ARGS__))
#define MDM_FIELD_NEXT() MDM_FIELD_STEP
#define MDM_PARENS ()
// Each level rescans four times as often. That is enough for more than 64 fields.
#define MDM_EXPAND(...) MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(MDM_EXPAND_16(__VA_ARGS__))))
#define MDM_EXPAND_16(...) MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(MDM_EXPAND_4(__VA_ARGS__))))
#define MDM_EXPAND_4(...) MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(MDM_EXPAND_1(__VA_ARGS__))))
#define MDM_EXPAND_1(...) __VA_ARGS__

// A list of MDM_FIELD()s. A member that is a union travels as one of its arms: `type` is the arm's.
#define MDM_FIELD_LIST(record, ...) \
    ::mdm::make_field_list<record>([] { return std::array{__VA_ARGS__}; })
#define MDM_FIELD(record, path, member, type)                       \
    ::mdm::Field                                                    \
    {                                                               \
        path, ::mdm::wire_type_of<type>(), offsetof(record, member) \
    }

template <class Record, size_t size>
constexpr uint32_t smallest_size(const FieldList<Record, size> &list)
{
    return Fields(list).smallest_size();
}

// The byte count of a record on the wire.
uint32_t size_of_fields(const void *record, Fields list);

// The byte count of a list's records on the wire, up to the first null record, without the list's
// count.
uint32_t size_of_records_before_null(void *records, Fields list);

// Releases the strings of a record, in wire order, and sets each to null.
void release_strings(void *record, Fields list);
// Releases a record's strings, then the record.
void release_record(void *record, Fields list);
// Releases each record with its strings, then the cells.
void release_records(void *records, Fields list);

}  // namespace mdm
