// SPDX-License-Identifier: Apache-2.0
//
// Reads JSON, as RFC 8259 defines it, and refuses everything else. json-glib's parser would not do:
// it cuts texts at "\u0000", wraps large numbers, takes the last of two members with one name, and
// overflows the stack on deep nesting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mdm::msg {

struct JsonValue {
    enum class Kind : uint8_t { literal, number, text, array, object };

    Kind kind = Kind::literal;
    bool is_used = false;           // for the user of the value
    std::string_view name;          // of a member of an object
    std::string_view text;          // of a text: without escapes. Others: as it was written.
    std::vector<JsonValue> values;  // of arrays and objects, in the order of the text

    // The member of an object; null if there is none.
    JsonValue *member(std::string_view wanted);

private:
    uint32_t last_ = 0;  // the position of the member that was wanted last
};

// Reads the values of a text, one after the other. They refer to the text and to the reader.
class JsonReader {
public:
    // The text may begin with a byte order mark.
    explicit JsonReader(std::string_view text);

    // Whether something stands behind the last value.
    bool has_more();

    // Reads the next value; the one before it is gone. Null if there is an error.
    JsonValue *next();

    // "line 1, column 5: expected a value, found ','"
    const std::string &error() const { return error_; }

    // The line, from 1, that is read next.
    size_t line();

private:
    bool read_value(JsonValue &value, int depth);
    bool read_values(JsonValue &value, char end, int depth);
    bool read_name(JsonValue &member);
    bool read_text(std::string_view &text);
    bool read_plain(std::string_view &text);
    bool read_escape(std::string &text);
    bool read_character(std::string &text);
    bool read_utf16(uint32_t &unit);
    bool read_number(JsonValue &value);
    bool read_literal(JsonValue &value);
    bool read_digits();

    void skip_space();
    bool is_at(char letter) const { return position_ < text_.size() && text_[position_] == letter; }
    bool skip(char letter);
    std::string found() const;
    bool refuse(const std::string &reason);

    std::string_view text_;
    size_t position_ = 0;
    size_t line_ = 1;     // at `counted_`
    size_t counted_ = 0;  // up to here the lines are counted
    std::optional<JsonValue> value_;
    std::deque<std::string> unescaped_;  // the texts of `value_` that have escapes
    std::string error_;
};

}  // namespace mdm::msg
