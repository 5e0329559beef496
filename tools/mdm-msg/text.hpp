// SPDX-License-Identifier: Apache-2.0
//
// Texts and bytes of a message, written so that they cannot act on a terminal, and helpers for
// other texts.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace mdm::msg {

using Bytes = std::span<const uint8_t>;

std::string_view as_text(Bytes bytes);

// The little-endian word in the first four bytes.
uint32_t first_word(Bytes bytes);

// The text between quotation marks. Escaped are control characters, bytes that are no UTF-8, format
// characters such as those that change the direction of others, blanks other than U+0020, quotation
// marks and backslashes: "\n", "\x1b", "\u{202e}".
std::string quoted(std::string_view text);

// The same without quotation marks around it, and with quotation marks and backslashes as they are.
std::string printable(std::string_view text);

// The first bytes of a text, `most` at most, without half a character at the end.
Bytes beginning_of(Bytes text, size_t most);

// "1 byte", "2 bytes"
std::string counted(uint64_t number, const char *noun);

// "0a ff 00"
std::string hex(Bytes bytes);

// The texts of elements with something between them.
template <class Elements, class Text = std::identity>
std::string joined(const Elements &elements, const char *between, Text text_of = {})
{
    std::string all;
    const char *before = "";
    for (const auto &element : elements) {
        all.append(before).append(text_of(element));
        before = between;
    }
    return all;
}

}  // namespace mdm::msg
