// SPDX-License-Identifier: Apache-2.0
#include "text.hpp"

#include <array>
#include <cstdio>

#include <glib.h>

namespace mdm::msg {
namespace {

// Neither control characters, nor characters that change how others are shown, nor line ends, nor
// blanks other than U+0020.
bool is_shown_as_it_is(gunichar character)
{
    switch (g_unichar_type(character)) {
    case G_UNICODE_SPACE_SEPARATOR:
        return character == ' ';
    case G_UNICODE_FORMAT:
    case G_UNICODE_LINE_SEPARATOR:
    case G_UNICODE_PARAGRAPH_SEPARATOR:
        return false;
    default:
        return g_unichar_isprint(character) != FALSE;
    }
}

void append_escape(std::string &out, const char *format, unsigned number)
{
    std::array<char, 16> escape{};
    std::snprintf(escape.data(), escape.size(), format, number);
    out += escape.data();
}

void append_character(std::string &out, gunichar character, std::string_view bytes)
{
    if (is_shown_as_it_is(character)) {
        out += bytes;
    } else if (character == '\n') {
        out += "\\n";
    } else if (character == '\t') {
        out += "\\t";
    } else if (character == '\r') {
        out += "\\r";
    } else if (character < 0x80) {
        append_escape(out, "\\x%02x", character);
    } else {
        append_escape(out, "\\u{%x}", character);
    }
}

void append_printable(std::string &out, std::string_view text, std::string_view also_escaped)
{
    while (!text.empty()) {
        const gunichar character =
            g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        size_t size = 1;
        if (text.front() == '\0') {  // GLib takes it for the end
            out += "\\x00";
        } else if (character >= static_cast<gunichar>(-2)) {
            append_escape(out, "\\x%02x", static_cast<uint8_t>(text.front()));
        } else if (also_escaped.find(text.front()) != std::string_view::npos) {
            out += '\\';
            out += text.front();
        } else {
            size = static_cast<size_t>(g_utf8_next_char(text.data()) - text.data());
            append_character(out, character, text.substr(0, size));
        }
        text.remove_prefix(size);
    }
}

}  // namespace

std::string_view as_text(Bytes bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

uint32_t first_word(Bytes bytes)
{
    uint32_t word = 0;
    for (const size_t index : {3U, 2U, 1U, 0U}) {
        word = word << 8 | bytes[index];
    }
    return word;
}

std::string quoted(std::string_view text)
{
    std::string out = "\"";
    append_printable(out, text, "\"\\");
    out += '"';
    return out;
}

std::string printable(std::string_view text)
{
    std::string out;
    append_printable(out, text, "");
    return out;
}

Bytes beginning_of(Bytes text, size_t most)
{
    if (text.size() <= most) {
        return text;
    }
    constexpr size_t longest = 4;  // of a character
    size_t size = most;
    while (size > most - (longest - 1) && (text[size] & 0xC0) == 0x80) {
        --size;
    }
    return text.first(size);
}

std::string counted(uint64_t number, const char *noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string hex(Bytes bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 3);
    for (const uint8_t byte : bytes) {
        if (!out.empty()) {
            out += ' ';
        }
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
    return out;
}

}  // namespace mdm::msg
