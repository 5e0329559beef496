// SPDX-License-Identifier: Apache-2.0
//
// A message as a page for a browser.
//
// The page is as long as its input times a factor: 8 for long values, up to 70 for a list of empty
// texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "input.hpp"
#include "mdm/inspect.h"

namespace mdm::msg {

// Of a value, so many rows are shown that have no byte of another field. The others are folded, if
// they are more than this number, too.
inline constexpr size_t rows_before_fold = 16;

// A longer text is shown in part; the whole is folded.
inline constexpr size_t text_before_fold = 160;

// A list of more elements is closed at first.
inline constexpr size_t elements_before_fold = 64;

struct Page {
    std::string html;
    std::optional<ipc_fault_t> fault;  // of a malformed message
};

// If `hides_texts`, the page depends on no byte of a text, of raw bytes, or of bytes that belong to
// no field.
Page page_of(const Input &input, bool hides_texts);

// page.css and page.js
extern const std::string_view page_style;
extern const std::string_view page_script;

}  // namespace mdm::msg
