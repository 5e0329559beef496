// SPDX-License-Identifier: Apache-2.0
//
// The parts of the reading of hex text, one for each way of writing it.
#pragma once

#include <string_view>
#include <utility>

#include "hex.hpp"

namespace mdm::msg {

inline constexpr std::string_view blanks = " \t\r\v\f";

// A line of a text, with its number from 1.
struct Line {
    size_t number;
    std::string_view text;

    HexError error(size_t index, std::string reason) const
    {
        return {number, index + 1, std::move(reason)};
    }
    // Whether nothing stands in the line but a comment.
    bool is_empty() const
    {
        const size_t first = text.find_first_not_of(blanks);
        return first == std::string_view::npos || text[first] == '#';
    }
};

// The first error of a text counts.
inline void refuse(HexText &text, const Line &line, size_t index, std::string reason)
{
    if (!text.error) {
        text.error = line.error(index, std::move(reason));
    }
}

// Takes the lines from a text.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {}

    std::optional<Line> next()
    {
        if (rest_.empty()) {
            return std::nullopt;
        }
        const size_t end = rest_.find('\n');
        const Line line = {++number_, rest_.substr(0, end)};
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return line;
    }

private:
    std::string_view rest_;
    size_t number_ = 0;
};

inline constexpr int no_digit = -1;
int hex_digit(char character);

// How many hex digits stand there.
size_t count_digits(std::string_view text, size_t index);

// "'g' is no hex digit"
std::string no_hex_digit(std::string_view text, size_t index);

// Whether the line is a row of xxd or of hexdump -C.
bool is_dump_row(std::string_view line);
HexText read_dump(std::string_view text);

// Whether a string begins in the line.
bool has_string(std::string_view line);
HexText read_strace(std::string_view text);

}  // namespace mdm::msg
