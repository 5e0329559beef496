// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>

#include "hex_lines.hpp"

namespace mdm::msg {
namespace {

constexpr std::string_view letters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

// strace escapes all other characters.
bool is_text(char character)
{
    return (character >= 0x20 && character < 0x7f) ||
           blanks.find(character) != std::string_view::npos;
}

bool is_octal(char character)
{
    return character >= '0' && character <= '7';
}

class Strace {
public:
    HexText read(std::string_view text) &&
    {
        Lines lines(text);
        while (!text_.error && text_.warning.empty()) {
            const auto line = lines.next();
            if (!line) {
                break;
            }
            if (!line->is_empty()) {
                read(*line);
            }
        }
        if (text_.bytes.empty()) {
            text_.bytes = std::move(failed_);
        }
        return std::move(text_);
    }

private:
    void fail(const Line &line, size_t index, std::string reason)
    {
        text_.error = line.error(index, std::move(reason));
    }

    void read(const Line &line)
    {
        const auto good = std::ranges::find_if_not(line.text, is_text) - line.text.begin();
        const auto bad = static_cast<size_t>(good);
        if (bad < line.text.size()) {
            return fail(line, bad, no_hex_digit(line.text, bad));
        }
        const size_t quote = line.text.find('"');
        if (quote == std::string_view::npos) {
            if (line.text.find_first_of("()+-") == std::string_view::npos) {
                fail(line, 0, "this is no line of strace");
            }
            return;
        }
        const std::string_view name = name_of_call(line.text);
        if (!carries_bytes(name)) {
            return;
        }
        const size_t before = text_.bytes.size();
        size_t behind = 0;
        for (size_t index = first_string(line.text);
             index != std::string_view::npos && !text_.error; index = line.text.find('"', behind)) {
            behind = read_string(line, index);
        }
        if (has_failed(line.text) && text_.warning.empty()) {
            const auto begin = text_.bytes.begin() + static_cast<ptrdiff_t>(before);
            failed_.assign(begin, text_.bytes.end());
            text_.bytes.resize(before);
        } else if (text_.warning.empty() && !name.ends_with("mmsg")) {  // counts messages
            text_.bytes.resize(
                std::min(text_.bytes.size(), before + result(line.text.substr(behind))));
        }
    }

    // Empty if the line is no call: a string alone, or the end of a call that was interrupted.
    static std::string_view name_of_call(std::string_view line)
    {
        const size_t parenthesis = std::min(line.find('('), line.find('"'));
        if (parenthesis == std::string_view::npos || parenthesis == 0 || line[parenthesis] != '(') {
            return {};
        }
        const size_t front = line.find_last_not_of(letters, parenthesis - 1);
        const size_t begin = front == std::string_view::npos ? 0 : front + 1;
        return line.substr(begin, parenthesis - begin);
    }

    static bool carries_bytes(std::string_view name)
    {
        constexpr std::array<std::string_view, 18> names = {
            "send",     "sendto",   "sendmsg", "sendmmsg", "recv",     "recvfrom",
            "recvmsg",  "recvmmsg", "write",   "writev",   "pwrite64", "pwritev",
            "pwritev2", "read",     "readv",   "pread64",  "preadv",   "preadv2"};
        return name.empty() || std::ranges::find(names, name) != names.end();
    }

    static bool has_failed(std::string_view line)
    {
        const size_t sign = line.rfind(") = ");
        return sign != std::string_view::npos && line.substr(sign).starts_with(") = -1 ");
    }

    // Behind the descriptor: strace -yy writes the paths of a socket there, in quotation marks.
    static size_t first_string(std::string_view line)
    {
        const size_t quote = line.find('"');
        const size_t open = line.find('<');
        const size_t close = line.find(">, ");
        const bool is_in_descriptor = open < quote && close != std::string_view::npos;
        return is_in_descriptor ? line.find('"', close) : quote;
    }

    // How many bytes the call has carried; all of them if it has not ended.
    static size_t result(std::string_view text)
    {
        const size_t sign = text.rfind(") = ");
        if (sign == std::string_view::npos) {
            return SIZE_MAX / 2;
        }
        size_t number = 0;
        size_t index = sign + 4;
        if (index >= text.size() || text[index] < '0' || text[index] > '9') {
            return SIZE_MAX / 2;
        }
        for (; index < text.size() && text[index] >= '0' && text[index] <= '9'; ++index) {
            number = std::min<size_t>(number * 10 + static_cast<size_t>(text[index] - '0'),
                                      SIZE_MAX / 32);
        }
        return number;
    }

    // Returns the index behind the string.
    size_t read_string(const Line &line, size_t quote)
    {
        const std::string_view text = line.text;
        const std::string_view front = text.substr(0, quote);
        const bool is_name =
            front.ends_with("=@") || (front.ends_with('=') && !front.ends_with("iov_base="));
        const size_t before = text_.bytes.size();
        size_t index = quote + 1;
        while (index < text.size() && text[index] != '"') {
            index = text[index] == '\\' ? read_escape(line, index) : read_letter(text, index);
            if (text_.error) {
                return index;
            }
        }
        if (index >= text.size()) {
            fail(line, quote, "the string has no end");
            return index;
        }
        ++index;
        if (is_name) {  // of a socket or a file
            text_.bytes.resize(before);
        } else if (text.substr(index).starts_with("...")) {
            text_.warning = "strace has cut the string in line " + std::to_string(line.number) +
                            ", and the bytes end there; call strace with -s 65536";
            return text.size();
        }
        return index;
    }

    size_t read_letter(std::string_view text, size_t index)
    {
        text_.bytes.push_back(static_cast<uint8_t>(text[index]));
        return index + 1;
    }

    // Returns the index behind the escape.
    size_t read_escape(const Line &line, size_t backslash)
    {
        const std::string_view text = line.text;
        size_t index = backslash + 1;
        const char letter = index < text.size() ? text[index] : '\0';
        if (letter == 'x') {
            return read_hex_escape(line, index + 1);
        }
        if (is_octal(letter)) {
            unsigned number = 0;
            for (const size_t end = index + 3; index < std::min(end, text.size()); ++index) {
                if (!is_octal(text[index])) {
                    break;
                }
                number = number * 8 + static_cast<unsigned>(text[index] - '0');
            }
            if (number > UINT8_MAX) {
                fail(line, backslash, "an unknown escape");
            }
            text_.bytes.push_back(static_cast<uint8_t>(number));
            return index;
        }
        constexpr std::string_view escapes = "ntrvfabe\"\\'";
        constexpr std::string_view values = "\n\t\r\v\f\a\b\x1b\"\\'";
        const size_t which = escapes.find(letter);
        if (which == std::string_view::npos) {
            fail(line, backslash, "an unknown escape");
            return index;
        }
        text_.bytes.push_back(static_cast<uint8_t>(values[which]));
        return index + 1;
    }

    size_t read_hex_escape(const Line &line, size_t index)
    {
        const std::string_view text = line.text;
        if (count_digits(text.substr(0, index + 2), index) != 2) {
            const size_t bad = index + count_digits(text, index);
            fail(line, std::min(bad, text.size()),
                 bad < text.size() ? no_hex_digit(text, bad) : "the string has no end");
            return index;
        }
        text_.bytes.push_back(
            static_cast<uint8_t>(hex_digit(text[index]) << 4 | hex_digit(text[index + 1])));
        return index + 2;
    }

    HexText text_;
    std::vector<uint8_t> failed_;  // the bytes of a call that has failed; mostly it is repeated
};

}  // namespace

bool has_string(std::string_view line)
{
    const size_t quote = line.find('"');
    return quote != std::string_view::npos && quote < line.find('#');
}

HexText read_strace(std::string_view text)
{
    return Strace().read(text);
}

}  // namespace mdm::msg
