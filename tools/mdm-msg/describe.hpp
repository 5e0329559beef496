// SPDX-License-Identifier: Apache-2.0
//
// Which messages there are: what the library answers when it is asked for every message type and
// every discriminator, and the parts that it asks for when it makes a message.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "mdm/inspect.h"

namespace mdm::msg {

// The numbers from the first to the last.
struct Run {
    uint32_t first;
    uint32_t last;
};

// What selects something: numbers, or every number that selects nothing else.
struct Selectors {
    std::vector<uint32_t> numbers;  // none if it is the others
    bool others = false;

    std::vector<Run> runs() const;
    std::string text() const;  // "281, 283, 394 to 421", "any other"
};

// A field or a count.
struct FieldDescription {
    std::string path;
    ipc_part_kind_t kind;
    int depth;  // 1 in the elements of a list, 2 in those of a list within an element

    bool operator==(const FieldDescription &) const = default;
};
using FieldDescriptions = std::vector<FieldDescription>;

// The fields that some values of another field select.
struct Variant {
    Selectors values;
    FieldDescriptions fields;
};

// When the payload follows the head.
enum class PayloadFollows : uint8_t {
    always,  // also if there is no payload
    if_positive,
    if_not_zero,  // also if `data_size` is below 0; it is refused then if it counts the payload
};

struct FormDescription {
    std::string name;  // "wifi.pair"
    mdm_form_t id;
    Selectors discriminators;
    FieldDescriptions fields;  // in wire order, without the header
    PayloadFollows payload = PayloadFollows::always;
    // The variants of what follows the last field, whose value selects one. Mostly none.
    std::vector<Variant> variants = {};
};

struct CategoryDescription {
    std::string name;
    std::vector<uint32_t> types;
    std::vector<FormDescription> forms;
    // How many fields all forms have in common at the beginning, whether or not a payload follows.
    size_t head = 0;
};

// In the order of their message types. The forms have no fields yet.
std::vector<CategoryDescription> describe_categories();

void add_fields(CategoryDescription &category);

FieldDescriptions describe_header();

// The message types that there are, without a gap.
Run message_types();

// The size of a message without a body, and how many bytes of a message its length field does not
// count.
struct EnvelopeSizes {
    uint32_t smallest_message;
    uint32_t uncounted;
};
EnvelopeSizes envelope_sizes();

// The message types whose body is not read.
std::vector<uint32_t> types_without_category();

bool is_data_size(const FieldDescription &field);

// How many fields the elements of a list have. They stand in front of the others.
size_t elements_size(std::span<const FieldDescription> fields, int depth);

// The bytes that an element of a list takes at least. An element has no `bytes` and no
// `reserved`.
uint32_t element_size(std::span<const FieldDescription> elements);

}  // namespace mdm::msg
