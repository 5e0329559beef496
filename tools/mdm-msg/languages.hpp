// SPDX-License-Identifier: Apache-2.0
//
// The format in the languages of other programs. The categories have their fields.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "describe.hpp"

namespace mdm::msg {

using Categories = std::span<const CategoryDescription>;

// A Kaitai Struct description.
std::string kaitai_description(Categories categories);

// A dissector for Wireshark, in Lua.
std::string wireshark_dissector(Categories categories);

// What the dissector does with its tables: wireshark.lua.
extern const std::string_view wireshark_functions;

// The elements of a list are texts with the path of the list, or records.
bool has_texts(const FieldDescription &list, std::span<const FieldDescription> elements);

// The path of the record that an element is: "apn.profile" of "apn.profile.num0".
std::string record_path(std::span<const FieldDescription> elements);

// Ends the program if a form has what the descriptions have no words for.
void check_forms(Categories categories);

}  // namespace mdm::msg
