// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>

#include <glib.h>

#include "hex_lines.hpp"

namespace mdm::msg {
namespace {

constexpr size_t least_digits = 8;
constexpr size_t most_digits = 15;

// How many digits the offset at the start of the line has; 0 if there is none.
size_t offset_digits(std::string_view line)
{
    const size_t digits = count_digits(line, 0);
    return digits >= least_digits && digits <= most_digits ? digits : 0;
}

bool is_xxd_row(std::string_view line, size_t digits)
{
    return line.substr(digits).starts_with(": ");
}

bool is_hexdump_row(std::string_view line, size_t digits)
{
    return line.substr(digits).starts_with("  ") && line.find('|') != std::string_view::npos;
}

std::string_view without_blanks_at_end(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

char shown(uint8_t byte)
{
    return byte >= 0x20 && byte < 0x7f ? static_cast<char>(byte) : '.';
}

// Whether the text ends with the characters of the bytes. Blanks at the end may have got lost.
template <class Bytes>
bool ends_with_characters(std::string_view text, const Bytes &bytes)
{
    std::string characters;
    std::ranges::transform(bytes, std::back_inserter(characters), shown);
    return text.ends_with(without_blanks_at_end(characters));
}

class Dump {
public:
    HexText read(std::string_view text) &&
    {
        Lines lines(text);
        while (!text_.error) {
            const auto line = lines.next();
            if (!line) {
                break;
            }
            if (!line->is_empty()) {
                read(*line);
            }
        }
        if (repeating_) {
            refuse(text_, *repeating_, 0,
                   "no row follows '*', so the number of its rows is unknown");
        }
        return std::move(text_);
    }

private:
    void read(const Line &line)
    {
        const std::string_view text = without_blanks_at_end(line.text);
        const size_t digits = offset_digits(text);
        if (text == "*" && row_size_ != 0 && !repeating_) {
            repeating_ = line;
        } else if (digits != 0 && is_xxd_row(text, digits)) {
            row(line, digits, digits + 2, false);
        } else if (digits != 0 && is_hexdump_row(text, digits)) {
            row(line, digits, digits + 2, true);
        } else if (digits != 0 && digits == text.size()) {
            go_to(line, digits);  // the line that ends the output of hexdump
        } else {
            refuse(text_, line, 0, "this is no row of the dump that begins above");
        }
    }

    // Compares the offset with the place that the rows have reached. A new dump begins at 0.
    void go_to(const Line &line, size_t digits)
    {
        const std::string copy(line.text.substr(0, digits));
        const uint64_t offset = g_ascii_strtoull(copy.c_str(), nullptr, 16);
        if (repeating_ && offset > end_) {
            repeat(line, offset - end_);
            repeating_.reset();
        }
        if (is_any_offset_right_ || offset == 0) {
            end_ = offset;
            is_any_offset_right_ = false;
        }
        if (offset != end_ || repeating_) {
            refuse(text_, line, 0, "this row does not follow the row in front of it");
        }
    }

    void repeat(const Line &line, uint64_t size)
    {
        if (size % row_size_ != 0) {
            return;  // does not follow
        }
        repeated_ += size;
        if (repeated_ > most_repeated) {
            return refuse(text_, line, 0,
                          "'*' stands for too many rows; at most 1 MiB is repeated");
        }
        end_ += size;
        for (; size != 0; size -= row_size_) {
            const auto begin = text_.bytes.size() - row_size_;
            for (size_t i = 0; i < row_size_; ++i) {
                const uint8_t byte = text_.bytes[begin + i];
                text_.bytes.push_back(byte);
            }
        }
    }

    // The digits end where two blanks or a '|' stand. In the middle of a row, hexdump has two
    // blanks, too.
    void row(const Line &line, size_t digits, size_t index, bool is_hexdump)
    {
        go_to(line, digits);
        const std::string_view text = line.text;
        const size_t begin = text_.bytes.size();
        size_t group = 0;
        while (!text_.error && index < text.size() && text[index] != '|') {
            const size_t count = count_digits(text, index);
            if (count == 0 && is_hexdump && text[index] == ' ') {
                ++index;
                continue;
            }
            if (count == 0) {
                break;
            }
            take(line, index, count);
            group = std::max(group, count / 2);
            index += count;
            if (index < text.size() && text[index] == ' ') {
                ++index;
            }
        }
        if (index < text.size() && text[index] != (is_hexdump ? '|' : ' ')) {
            refuse(text_, line, index, no_hex_digit(text, index));
        }
        row_size_ = text_.bytes.size() - begin;
        end_ += row_size_;
        if (text_.error) {
            return;
        }
        const std::string_view rest = text.substr(std::min(index, text.size()));
        if (!is_hexdump) {
            compare_characters(line, rest, begin, group);
        } else if (!are_characters(without_blanks_at_end(rest), row_size_)) {
            refuse(text_, line, index, no_hex_digit(text, index));
        }
    }

    // Whether the end of a row of hexdump, "|>...|", has as many characters as the row has bytes;
    // fewer if its last '|' has got lost. Otherwise its first '|' is a wrong digit.
    static bool are_characters(std::string_view text, size_t count)
    {
        return text.ends_with('|') ? text.size() == count + 2 : text.size() < count + 2;
    }

    void take(const Line &line, size_t index, size_t count)
    {
        const size_t end = index + count;
        if (end < line.text.size() &&
            std::string_view(" |\r").find(line.text[end]) == std::string_view::npos) {
            return refuse(text_, line, end, no_hex_digit(line.text, end));
        }
        if (count % 2 != 0) {
            return refuse(text_, line, end - 1, "an odd number of digits");
        }
        for (size_t i = index; i < end; i += 2) {
            text_.bytes.push_back(
                static_cast<uint8_t>(hex_digit(line.text[i]) << 4 | hex_digit(line.text[i + 1])));
        }
    }

    // The characters betray a dump of words in the processor's order.
    void compare_characters(const Line &line, std::string_view text, size_t begin, size_t group)
    {
        const std::string_view characters = without_blanks_at_end(text);
        std::vector<uint8_t> bytes(text_.bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                   text_.bytes.end());
        if (characters.empty() || ends_with_characters(characters, bytes)) {
            return;
        }
        for (size_t i = 0; group != 0 && i < bytes.size(); i += group) {
            const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(i);
            const size_t size = std::min(group, bytes.size() - i);
            std::reverse(first, first + static_cast<std::ptrdiff_t>(size));
        }
        if (ends_with_characters(characters, bytes)) {
            return refuse(text_, line, 0,
                          "the bytes of the words are reversed; use xxd without -e");
        }
        if (text_.warning.empty()) {
            text_.warning = "the characters at the end of line " + std::to_string(line.number) +
                            " are not those of its bytes";
        }
    }

    HexText text_;
    uint64_t end_ = 0;     // the offset behind the last row
    size_t row_size_ = 0;  // of the last row
    uint64_t repeated_ = 0;
    bool is_any_offset_right_ = true;
    std::optional<Line> repeating_;  // a '*' whose rows are not yet counted
};

}  // namespace

bool is_dump_row(std::string_view line)
{
    const size_t digits = offset_digits(line);
    return digits != 0 && (is_xxd_row(line, digits) || is_hexdump_row(line, digits));
}

HexText read_dump(std::string_view text)
{
    return Dump().read(text);
}

}  // namespace mdm::msg
