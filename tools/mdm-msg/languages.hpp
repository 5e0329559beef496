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

}  // namespace mdm::msg
