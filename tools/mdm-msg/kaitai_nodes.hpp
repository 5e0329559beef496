// SPDX-License-Identifier: Apache-2.0
//
// The values of a Kaitai type. Such a type has one sequence, in which each value may have a
// condition. So the forms of a category become one sequence, and each value says for which forms it
// is there. The variants of a form become one in the same way.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "describe.hpp"

namespace mdm::msg {

// The type of a text.
inline constexpr const char *kaitai_text = "counted_text";

using Forms = std::vector<const FormDescription *>;
using Variants = std::vector<const Variant *>;

// A value of a type's sequence.
struct Node {
    enum class Kind { number, text, bytes, reserved, list, array, record };

    Kind kind;
    std::string name;
    bool is_byte = false;          // a number
    bool has_sign = false;         // a number or the count of a list
    std::vector<Node> nodes = {};  // of a record, or of an element of a list or an array
    uint32_t element_size = 1;     // what an element takes at least
    std::string type = {};         // of a record, or of elements
    Forms forms = {};              // that have it; none for a value inside of a record
    Variants variants = {};        // that have it; none if its form has no variants
};
using Nodes = std::vector<Node>;

// Whether both have the same fields.
bool is_same(const Node &one, const Node &two);

Nodes header_nodes();

// The values that all forms of a category begin with, and those that follow.
Nodes head_nodes_of(const CategoryDescription &category);
Nodes payload_nodes_of(const CategoryDescription &category);

// The level of the names in an element that is a record: "num0" in "apn.profile.num0".
inline constexpr size_t element_level = 2;

// A name in a path: "network" of "wifi.network.ssid" at 1.
std::string name_at(std::string_view path, size_t level);

// "wifi_network" of "wifi.network"
std::string identifier(std::string path);

}  // namespace mdm::msg
