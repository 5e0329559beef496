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
        if (text_.bytes.empty() && !failed_.empty()) {
            text_.bytes = std::move(failed_);
            text_.warning = "the call in line " + std::to_string(failed_line_) + " has failed";
        }
        return std::move(text_);
    }

private:
    void read(const Line &line)
    {
        const auto good = std::ranges::find_if_not(line.text, is_text) - line.text.begin();
        const auto bad = static_cast<size_t>(good);
        if (bad < line.text.size()) {
            return refuse(text_, line, bad, no_hex_digit(line.text, bad));
        }
        if (is_remark(line.text)) {
            return;
        }
        const size_t quote = line.text.find('"');
        if (quote == std::string_view::npos) {
            if (line.text.find_first_of("()+-") == std::string_view::npos) {
                refuse(text_, line, 0, "this is no line of strace");
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
        const std::string_view end = result(line.text.substr(std::min(behind, line.text.size())));
        if (!text_.warning.empty()) {
            return;
        }
        if (has_failed(end)) {
            const auto begin = text_.bytes.begin() + static_cast<ptrdiff_t>(before);
            failed_.assign(begin, text_.bytes.end());
            failed_line_ = line.number;
            text_.bytes.resize(before);
        } else if (!name.ends_with("mmsg")) {  // their result counts messages
            text_.bytes.resize(std::min(text_.bytes.size(), before + size_of(end)));
        }
    }

    // What strace says of processes that it follows or leaves, and the rest of a call that such a
    // line has interrupted.
    static bool is_remark(std::string_view line)
    {
        const std::string_view text = line.substr(0, line.find_last_not_of(blanks) + 1);
        return text.starts_with("strace: ") ||
               (text.find('"') == std::string_view::npos &&
                (text.ends_with("<unfinished ...>") || text.ends_with("<detached ...>")));
    }

    // Empty if the line is no call, but a string alone.
    static std::string_view name_of_call(std::string_view line)
    {
        constexpr std::string_view resumed = "<... ";
        const size_t quote = line.find('"');
        const size_t mark = line.find(resumed);
        if (mark < quote) {
            const std::string_view name = line.substr(mark + resumed.size());
            return name.substr(0, name.find(' '));
        }
        const size_t parenthesis = line.find('(');
        if (parenthesis > quote || parenthesis == 0) {
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

    // Behind the descriptor: strace -yy writes the paths of a socket there, in quotation marks.
    static size_t first_string(std::string_view line)
    {
        const size_t quote = line.find('"');
        const size_t parenthesis = std::min(line.find('('), line.size() - 1);
        const size_t digits = line.find_first_not_of("0123456789", parenthesis + 1);
        if (digits == std::string_view::npos || digits > quote || line[digits] != '<') {
            return quote;
        }
        return line.find('"', std::min(line.find(">, ", digits), line.size()));
    }

    // What stands behind "=" at the end of a call; empty if it has not ended. `text` begins behind
    // the strings. strace fills short lines with blanks.
    static std::string_view result(std::string_view text)
    {
        constexpr std::string_view sign = " = ";
        for (size_t at = text.rfind(sign); at != std::string_view::npos && at > 0;
             at = text.rfind(sign, at - 1)) {
            const size_t front = text.find_last_not_of(' ', at);
            if (front != std::string_view::npos && text[front] == ')') {
                return text.substr(at + sign.size());
            }
        }
        return {};
    }

    // A call that was interrupted, "= ?", is repeated.
    static bool has_failed(std::string_view result)
    {
        return result.starts_with("-1 ") || result.starts_with('?');
    }

    // How many bytes the call has carried; all of them if it has not ended.
    static size_t size_of(std::string_view result)
    {
        if (result.empty() || result.front() < '0' || result.front() > '9') {
            return SIZE_MAX / 2;
        }
        size_t number = 0;
        for (const char digit : result.substr(0, result.find_first_not_of("0123456789"))) {
            number =
                std::min<size_t>(number * 10 + static_cast<size_t>(digit - '0'), SIZE_MAX / 32);
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
            refuse(text_, line, quote, "the string has no end");
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
                refuse(text_, line, backslash, "an unknown escape");
            }
            text_.bytes.push_back(static_cast<uint8_t>(number));
            return index;
        }
        constexpr std::string_view escapes = "ntrvfabe\"\\'";
        constexpr std::string_view values = "\n\t\r\v\f\a\b\x1b\"\\'";
        const size_t which = escapes.find(letter);
        if (which == std::string_view::npos) {
            refuse(text_, line, backslash, "an unknown escape");
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
            refuse(text_, line, std::min(bad, text.size()),
                   bad < text.size() ? no_hex_digit(text, bad) : "the string has no end");
            return index;
        }
        text_.bytes.push_back(
            static_cast<uint8_t>(hex_digit(text[index]) << 4 | hex_digit(text[index + 1])));
        return index + 2;
    }

    HexText text_;
    std::vector<uint8_t> failed_;  // the bytes of a call that has failed; mostly it is repeated
    size_t failed_line_ = 0;
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
