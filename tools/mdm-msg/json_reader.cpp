// SPDX-License-Identifier: Apache-2.0
#include "json_reader.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include <glib.h>

#include "text.hpp"

namespace mdm::msg {
namespace {

constexpr int deepest = 32;  // the JSON of a message needs 6
constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
constexpr std::string_view space = " \t\n\r";

// The size of the character that the text begins with; 0 if it is no UTF-8.
size_t character_size(std::string_view text)
{
    const size_t size = std::min<size_t>(text.size(), 4);
    for (size_t count = 1; count <= size; ++count) {
        if (g_utf8_validate_len(text.data(), count, nullptr) != FALSE) {
            return count;
        }
    }
    return 0;
}

void append_utf8(std::string &text, gunichar character)
{
    std::array<char, 6> bytes{};
    const gint size = g_unichar_to_utf8(character, bytes.data());
    text.append(bytes.data(), static_cast<size_t>(size));
}

bool is_high_surrogate(uint32_t unit)
{
    return unit >= 0xd800 && unit < 0xdc00;
}

bool is_low_surrogate(uint32_t unit)
{
    return unit >= 0xdc00 && unit < 0xe000;
}

}  // namespace

// Members are mostly wanted in their order, or the same again. Looking first where the last one was
// keeps this fast in a large object.
JsonValue *JsonValue::member(std::string_view wanted)
{
    for (size_t count = 0; count < values.size(); ++count) {
        const size_t at = (last_ + count) % values.size();
        if (values[at].name == wanted) {
            last_ = static_cast<uint32_t>(at);
            return &values[at];
        }
    }
    return nullptr;
}

JsonReader::JsonReader(std::string_view text) : text_(text)
{
    if (text_.starts_with(byte_order_mark)) {
        text_.remove_prefix(byte_order_mark.size());
    }
}

bool JsonReader::has_more()
{
    skip_space();
    return position_ < text_.size();
}

JsonValue *JsonReader::next()
{
    unescaped_.clear();
    value_.emplace();
    return read_value(*value_, 0) ? &*value_ : nullptr;
}

size_t JsonReader::line()
{
    const std::string_view passed = text_.substr(counted_, position_ - counted_);
    line_ += static_cast<size_t>(std::count(passed.begin(), passed.end(), '\n'));
    counted_ = position_;
    return line_;
}

bool JsonReader::read_value(JsonValue &value, int depth)
{
    skip_space();
    if (depth == deepest && (is_at('{') || is_at('['))) {
        return refuse("nested deeper than " + std::to_string(deepest) + " levels");
    }
    if (skip('{')) {
        value.kind = JsonValue::Kind::object;
        return read_values(value, '}', depth + 1);
    }
    if (skip('[')) {
        value.kind = JsonValue::Kind::array;
        return read_values(value, ']', depth + 1);
    }
    if (skip('"')) {
        value.kind = JsonValue::Kind::text;
        return read_text(value.text);
    }
    if (is_at('-') || (position_ < text_.size() && g_ascii_isdigit(text_[position_]) != 0)) {
        value.kind = JsonValue::Kind::number;
        return read_number(value);
    }
    return read_literal(value);
}

bool JsonReader::read_values(JsonValue &value, char end, int depth)
{
    skip_space();
    if (skip(end)) {
        return true;
    }
    do {
        JsonValue &added = value.values.emplace_back();
        if ((end == '}' && !read_name(added)) || !read_value(added, depth)) {
            return false;
        }
        skip_space();
    } while (skip(','));
    return skip(end) || refuse(std::string("expected ',' or '") + end + "', found " + found());
}

bool JsonReader::read_name(JsonValue &member)
{
    skip_space();
    if (!skip('"')) {
        return refuse("expected the name of a member, found " + found());
    }
    if (!read_text(member.name)) {
        return false;
    }
    skip_space();
    return skip(':') || refuse("expected ':', found " + found());
}

// The quotation mark at the beginning has been read.
bool JsonReader::read_text(std::string_view &text)
{
    if (!read_plain(text)) {
        return false;
    }
    if (skip('"')) {
        return true;
    }
    std::string &unescaped = unescaped_.emplace_back(text);
    while (!skip('"')) {
        std::string_view plain;
        if (skip('\\') ? !read_escape(unescaped) : !read_plain(plain)) {
            return false;
        }
        unescaped += plain;
    }
    text = unescaped;
    return true;
}

// Reads up to a quotation mark or an escape.
bool JsonReader::read_plain(std::string_view &text)
{
    const size_t begin = position_;
    while (!is_at('"') && !is_at('\\')) {
        if (position_ == text_.size()) {
            return refuse("the text has no end");
        }
        if (static_cast<uint8_t>(text_[position_]) < ' ') {
            return refuse("expected an escape instead of a control character in a text");
        }
        const size_t size = character_size(text_.substr(position_));
        if (size == 0) {
            return refuse(R"(the text is no UTF-8; write {"hex": "..."} for such bytes)");
        }
        position_ += size;
    }
    text = text_.substr(begin, position_ - begin);
    return true;
}

// The backslash has been read.
bool JsonReader::read_escape(std::string &text)
{
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (skip('u')) {
        return read_character(text);
    }
    const size_t letter =
        position_ < text_.size() ? letters.find(text_[position_]) : std::string_view::npos;
    if (letter == std::string_view::npos) {
        return refuse("there is no such escape");
    }
    text += meanings[letter];
    ++position_;
    return true;
}

// "\u" has been read.
bool JsonReader::read_character(std::string &text)
{
    uint32_t unit = 0;
    if (!read_utf16(unit)) {
        return false;
    }
    if (is_low_surrogate(unit)) {
        return refuse("a surrogate stands alone");
    }
    if (is_high_surrogate(unit)) {
        uint32_t low = 0;
        if (!skip('\\') || !skip('u')) {
            return refuse("a surrogate stands alone");
        }
        if (!read_utf16(low)) {
            return false;
        }
        if (!is_low_surrogate(low)) {
            return refuse("a surrogate stands alone");
        }
        unit = 0x10000 + ((unit - 0xd800) << 10) + (low - 0xdc00);
    }
    append_utf8(text, unit);
    return true;
}

bool JsonReader::read_utf16(uint32_t &unit)
{
    unit = 0;
    for (int digit = 0; digit < 4; ++digit, ++position_) {
        const int value = position_ < text_.size() ? g_ascii_xdigit_value(text_[position_]) : -1;
        if (value < 0) {
            return refuse("expected four hex digits behind \\u");
        }
        unit = unit * 16 + static_cast<uint32_t>(value);
    }
    return true;
}

bool JsonReader::read_number(JsonValue &value)
{
    const size_t begin = position_;
    skip('-');
    const bool begins_with_zero = skip('0');
    if (!begins_with_zero && !read_digits()) {
        return false;
    }
    if (begins_with_zero && position_ < text_.size() && g_ascii_isdigit(text_[position_]) != 0) {
        return refuse("a number begins with 0");
    }
    if (skip('.') && !read_digits()) {
        return false;
    }
    if (skip('e') || skip('E')) {
        if (!skip('+')) {
            skip('-');
        }
        if (!read_digits()) {
            return false;
        }
    }
    value.text = text_.substr(begin, position_ - begin);
    return true;
}

bool JsonReader::read_digits()
{
    const size_t begin = position_;
    while (position_ < text_.size() && g_ascii_isdigit(text_[position_]) != 0) {
        ++position_;
    }
    return position_ > begin || refuse("expected a digit, found " + found());
}

bool JsonReader::read_literal(JsonValue &value)
{
    for (const std::string_view literal : {"true", "false", "null"}) {
        if (text_.substr(position_).starts_with(literal)) {
            position_ += literal.size();
            value.text = literal;
            return true;
        }
    }
    return refuse("expected a value, found " + found());
}

void JsonReader::skip_space()
{
    position_ = std::min(text_.find_first_not_of(space, position_), text_.size());
}

bool JsonReader::skip(char letter)
{
    const bool is_there = is_at(letter);
    position_ += is_there ? 1 : 0;
    return is_there;
}

// What stands at the position, for a person.
std::string JsonReader::found() const
{
    if (position_ == text_.size()) {
        return "the end";
    }
    const std::string_view rest = text_.substr(position_);
    const size_t size = std::max<size_t>(1, character_size(rest));
    return "'" + printable(rest.substr(0, size)) + "'";
}

// The column counts characters from 1.
bool JsonReader::refuse(const std::string &reason)
{
    const std::string_view before = text_.substr(0, position_);
    const size_t begin = before.rfind('\n') + 1;  // 0 in the first line
    const auto column =
        1 + std::count_if(before.begin() + static_cast<ptrdiff_t>(begin), before.end(),
                          [](char byte) { return (static_cast<uint8_t>(byte) & 0xc0) != 0x80; });
    error_ =
        "line " + std::to_string(line()) + ", column " + std::to_string(column) + ": " + reason;
    return false;
}

}  // namespace mdm::msg
