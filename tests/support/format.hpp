// SPDX-License-Identifier: Apache-2.0
//
// The wire format as the tests know it: one entry a category, made without the library. Dumps,
// generated messages, expected faults, mutation points and the fuzzers' dictionary come from it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <ostream>
#include <span>
#include <type_traits>
#include <vector>

#include "mdm/message.h"

namespace mdm::test {

enum class Type : uint8_t {
    byte,
    word,
    text,
    low_byte,  // a word as wide as a pointer, whose first byte in memory travels
    strings,   // a list of strings
    record,    // a pointer to a record of its own
};

struct NestedRecord;

// A member of a record, and its path in a fault.
struct Field {
    const char *path;
    Type type;
    size_t offset;
    const NestedRecord *nested = nullptr;
};
using Fields = std::span<const Field>;

// Numbers that select something.
class Numbers {
public:
    constexpr Numbers() = default;
    constexpr Numbers(std::initializer_list<uint32_t> numbers)
    {
        for (const uint32_t number : numbers) {
            numbers_[count_++] = number;
        }
    }
    static constexpr Numbers between(uint32_t first, uint32_t last)
    {
        Numbers numbers;
        while (first <= last) {
            numbers.numbers_[numbers.count_++] = first++;
        }
        return numbers;
    }

    constexpr const uint32_t *begin() const { return numbers_.data(); }
    constexpr const uint32_t *end() const { return numbers_.data() + count_; }
    constexpr bool has(uint32_t number) const { return std::find(begin(), end(), number) != end(); }

private:
    std::array<uint32_t, 64> numbers_{};
    size_t count_ = 0;
};

struct Alternative {
    Numbers selectors;  // none for a record that is there for every selector
    Fields fields;
};

inline constexpr size_t no_offset = SIZE_MAX;

// A record that another one points to. The word at `selector` in the outer record says which
// alternative travels; if it selects none, there is no record.
struct NestedRecord {
    size_t size;
    size_t selector;
    Fields members;
    std::span<const Alternative> alternatives;

    const Alternative *alternative(const void *outer) const;
};

enum class Payload : uint8_t {
    nothing,
    body,  // fields of the body itself
    record,
    records,
    strings,
    text,
    array,  // `data_size` texts
    raw,    // `data_size` bytes
};

// The `data_size` that travels.
enum class DataSize : uint8_t {
    as_given,       // a switch
    anything,       // a number without a meaning
    length,         // of the payload, as the sender gives it
    two_words,      // the payload's length, always 8
    stored,         // the payload's size and `extra`
    added,          // what the sender has given, and the payload's size
    padded,         // as given; that many zero bytes follow the payload
    stored_twelve,  // as given by a sender, and 12 in what a receiver holds
};

// What a sender's list may hold beside ordinary elements.
enum class Elements : uint8_t {
    ordinary,
    lose_empty,  // an empty string does not arrive
    null_gaps,   // a null element leaves its bytes at the end, as zeros
    nameless,    // so does a record whose first text is null
};

// When ipc_free() leaves blocks of a received body.
enum class Leak : uint8_t { never, always, with_data, without_data };

// One form of a body.
struct Form {
    const char *name;
    Numbers types;  // the discriminators; for the last form of a category, some of all others
    Payload payload = Payload::nothing;
    const char *path = nullptr;  // of a list, an array, a text or raw bytes
    size_t size = 0;             // of a record in memory
    Fields fields = {};          // that travel, in wire order
    Fields members = {};         // that a record has
    DataSize data_size = DataSize::as_given;
    int32_t extra = 0;
    Elements elements = Elements::ordinary;
    uint32_t gap = 0;  // the bytes that a null element leaves
    Leak leak = Leak::never;
    bool is_always_there = false;     // whatever `data_size` says
    bool is_in_param = false;         // the list stands in the place of `param`
    bool may_be_absent = false;       // without a record the head travels alone, its `data_size` 0
    bool is_raw_record = false;       // a sender's record, which a receiver takes for raw bytes
    bool trusts_sign = false;         // a negative `data_size` is counted, and cannot be sent
    uint32_t empty_list_padding = 0;  // zeros behind the head that a null list is sent as
};

// The `data_size` that announces a payload.
enum class Announced : uint8_t { positive, nonzero };

struct CategoryFormat {
    const char *name;
    const char *file;  // of its handlers
    Numbers types;
    Fields head;     // that travels
    Fields members;  // that the body has, but its payload
    std::span<const Form> forms;
    size_t data_size = no_offset;
    size_t data = no_offset;
    Announced announced = Announced::positive;
    bool sends_empty_lists = true;  // a null list travels as a count of 0, or as the head alone
    bool counts_body = false;       // `data_size` travels as the size of the body
    bool is_payload_read = true;    // by a receiver

    constexpr uint8_t first_type() const { return static_cast<uint8_t>(*types.begin()); }
    constexpr uint8_t last_type() const { return static_cast<uint8_t>(*(types.end() - 1)); }
};

std::span<const CategoryFormat> category_formats();
std::ostream &operator<<(std::ostream &out, const CategoryFormat &category);

// The message types from 1 to 80 that have no category.
std::vector<uint8_t> types_without_category();

// Null for a type without a category.
const CategoryFormat *format_of(uint8_t message_type);
const Form &form_of(const CategoryFormat &category, uint32_t discriminator);

// The value at an offset of a body or a record.
template <class Value>
Value value_at(const void *record, size_t offset)
{
    Value value;
    std::memcpy(&value, static_cast<const char *>(record) + offset, sizeof value);
    return value;
}
template <class Value>
Value &member_at(void *record, size_t offset)
{
    return *reinterpret_cast<Value *>(static_cast<char *>(record) + offset);
}

inline uint32_t discriminator_of(const mdm_body_t &body)
{
    return value_at<uint32_t>(&body, 0);
}

// The discriminators that select the form: forms before it may take some of its numbers.
std::vector<uint32_t> discriminators_of(const CategoryFormat &category, const Form &form);

bool is_data_size(const Field &field);

// Whether the body's `data_size` announces a payload, or none is asked.
bool is_announced(const CategoryFormat &category, const Form &form, int32_t data_size);

// Whether a field selects a nested record among the fields beside it.
bool selects(const Field &field, Fields fields);

// The bytes that a field takes at least.
uint32_t smallest_size(const Field &field);
uint32_t smallest_size(Fields fields);

}  // namespace mdm::test
