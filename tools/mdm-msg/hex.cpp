// SPDX-License-Identifier: Apache-2.0
#include "hex.hpp"

#include <glib.h>

#include "hex_lines.hpp"
#include "text.hpp"

namespace mdm::msg {
namespace {

constexpr std::string_view separators = " \t\r\v\f,:";
constexpr const char *use_other_dump =
    "this looks like a dump with offsets; use the output of 'xxd' or 'hexdump -C' instead";

// Reads digits that no program has arranged.
class Plain {
public:
    HexText read(std::string_view text) &&
    {
        Lines lines(text);
        while (const auto line = lines.next()) {
            if (is_dump_row(line->text)) {
                refuse(text_, *line, 0, "a row of a dump stands behind other text");
            }
            read(*line);
            if (text_.error) {
                break;
            }
        }
        return std::move(text_);
    }

private:
    void read(const Line &line)
    {
        const size_t bytes_before = text_.bytes.size();
        const std::string_view text = line.text;
        size_t index = text.find_first_not_of(separators);
        bool is_first = true;
        while (!text_.error && index < text.size() && text[index] != '#') {
            const size_t begin = behind_prefix(text, index);
            const size_t digits = count_digits(text, begin);
            if (is_first) {
                refuse_offset(line, index, text.substr(begin, digits));
            }
            take(line, begin, digits);
            is_first = false;
            index = text.find_first_not_of(separators, begin + digits);
        }
        if (!is_first) {
            bytes_in_row_ = text_.bytes.size() - bytes_before;
        }
    }

    static size_t behind_prefix(std::string_view text, size_t index)
    {
        const std::string_view begin = text.substr(index, 2);
        return begin == "0x" || begin == "0X" || begin == "\\x" ? index + 2 : index;
    }

    void take(const Line &line, size_t begin, size_t digits)
    {
        const std::string_view text = line.text;
        const size_t end = begin + digits;
        const bool ends_well = end == text.size() || text[end] == '#' || text[end] == '\\' ||
                               separators.find(text[end]) != std::string_view::npos;
        if (!ends_well) {
            return refuse(text_, line, end, no_hex_digit(text, end));
        }
        if (digits == 0) {
            return begin < text.size() && text[begin] == '\\'
                       ? refuse(text_, line, begin, no_hex_digit(text, begin))
                       : refuse(text_, line, begin - 1, "no digits follow");
        }
        if (digits % 2 != 0) {
            return refuse(text_, line, end - 1, "an odd number of digits");
        }
        for (size_t i = begin; i < end; i += 2) {
            text_.bytes.push_back(
                static_cast<uint8_t>(hex_digit(text[i]) << 4 | hex_digit(text[i + 1])));
        }
    }

    // Dumps of other programs begin each row with its offset. Read as bytes, it would be taken for
    // a piece of the message. hexdump and od write seven digits and words in an unknown byte order.
    void refuse_offset(const Line &line, size_t index, std::string_view digits)
    {
        const bool is_zero = digits.find_first_not_of('0') == std::string_view::npos;
        const size_t bytes_in_row = bytes_in_row_ - digits.size() / 2;
        const bool is_offset =
            is_second_row_ && digits.size() == offset_digits_ &&
            (is_number(digits, bytes_in_row, 16) || is_number(digits, bytes_in_row, 8));
        if (digits.size() == 7 || is_offset) {
            refuse(text_, line, index, use_other_dump);
        }
        is_second_row_ = offset_digits_ == unknown && is_zero && digits.size() >= 4;
        offset_digits_ = digits.size();
    }

    static bool is_number(std::string_view digits, size_t number, unsigned base)
    {
        gchar *end = nullptr;
        const std::string copy(digits);
        return number != 0 && g_ascii_strtoull(copy.c_str(), &end, base) == number && *end == '\0';
    }

    static constexpr size_t unknown = SIZE_MAX;

    HexText text_;
    size_t bytes_in_row_ = 0;  // of the row in front
    size_t offset_digits_ = unknown;
    bool is_second_row_ = false;  // and the first begins with a zero of as many digits
};

}  // namespace

int hex_digit(char character)
{
    return g_ascii_xdigit_value(character);
}

size_t count_digits(std::string_view text, size_t index)
{
    size_t end = index;
    while (end < text.size() && hex_digit(text[end]) != no_digit) {
        ++end;
    }
    return end - index;
}

std::string no_hex_digit(std::string_view text, size_t index)
{
    const std::string_view rest = text.substr(index);
    const gunichar character =
        g_utf8_get_char_validated(rest.data(), static_cast<gssize>(rest.size()));
    const bool is_character = character < static_cast<gunichar>(-2) && rest.front() != '\0';
    const auto size = is_character ? g_utf8_next_char(rest.data()) - rest.data() : 1;
    return "'" + printable(rest.substr(0, static_cast<size_t>(size))) + "' is no hex digit";
}

HexText read_hex(std::string_view text)
{
    bool is_first = true;
    Lines lines(text);
    while (const auto line = lines.next()) {
        if (line->is_empty()) {
            continue;
        }
        const size_t first = line->text.find_first_not_of(blanks);
        if (is_first && line->text[first] == '{') {
            HexText text_of_json;
            text_of_json.error =
                line->error(first, "this is JSON; 'mdm-msg make' makes a message of it");
            return text_of_json;
        }
        if (is_first && is_dump_row(line->text)) {
            return read_dump(text);
        }
        if (has_string(line->text)) {
            return read_strace(text);
        }
        is_first = false;
    }
    return Plain().read(text);
}

}  // namespace mdm::msg
