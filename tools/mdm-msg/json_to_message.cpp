// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

#include <glib.h>

#include "json_message.hpp"
#include "json_place.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

using Kind = JsonValue::Kind;

constexpr std::string_view an_object = "an object";
constexpr std::string_view an_array = "an array";

// A value for a person, on one line.
std::string described(const JsonValue *value)
{
    constexpr size_t longest = 40;
    if (value == nullptr) {
        return "nothing";
    }
    size_t size = std::min(value->text.size(), longest);
    while (size < value->text.size() && (static_cast<uint8_t>(value->text[size]) & 0xc0) == 0x80) {
        --size;  // not in the middle of a character
    }
    const std::string_view text = value->text.substr(0, size);
    const std::string end = size < value->text.size() ? "..." : "";
    switch (value->kind) {
    case Kind::array:
        return "an array";
    case Kind::object:
        return "an object";
    case Kind::text:
        return quoted(text) + end;
    case Kind::literal:
    case Kind::number:
        break;
    }
    return std::string(text) + end;
}

// The name that several members of an object have; empty if there is none.
std::optional<std::string_view> duplicate_name(const JsonValue &object)
{
    std::vector<std::string_view> names;
    names.reserve(object.values.size());
    for (const JsonValue &member : object.values) {
        names.push_back(member.name);
    }
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    return twice == names.end() ? std::nullopt : std::optional(*twice);
}

JsonStep step_to(const JsonValue &parent, size_t child)
{
    if (parent.kind == Kind::object) {
        return {parent.values[child].name};
    }
    return {{}, static_cast<int32_t>(child)};
}

// The value that a step leads to; null if there is none.
JsonValue *child_at(JsonValue &parent, const JsonStep &step)
{
    if (step.position < 0) {
        return parent.member(step.name);
    }
    const auto position = static_cast<size_t>(step.position);
    return position < parent.values.size() ? &parent.values[position] : nullptr;
}

// If a name stands in an object twice, the place leads there.
bool find_duplicate(const JsonValue &value, JsonPlace &place)
{
    if (value.kind == Kind::object) {
        if (const auto name = duplicate_name(value)) {
            place.push_back({*name});
            return true;
        }
    }
    for (size_t child = 0; child < value.values.size(); ++child) {
        place.push_back(step_to(value, child));
        if (find_duplicate(value.values[child], place)) {
            return true;
        }
        place.pop_back();
    }
    return false;
}

// Answers the library's questions for the parts of one message.
class Answers {
public:
    explicit Answers(JsonValue &root) : root_(root) {}

    bool make(std::vector<uint8_t> &message);
    const std::string &error() const { return error_; }

private:
    bool may_be_message();
    bool refuse_fault(const ipc_fault_t &fault);

    static bool answer(ipc_part_t *part, void *user_data);
    bool give(ipc_part_t &part);
    bool find(JsonValue *&found);
    bool give_number(ipc_part_t &part, const JsonValue *value);
    bool give_count(ipc_part_t &part, JsonValue *value);
    bool give_bytes(ipc_part_t &part, JsonValue *value);
    bool read_number(const JsonValue *value, int64_t smallest, int64_t largest, uint32_t &number);
    bool read_bytes(JsonValue *value);
    bool read_hex(std::string_view digits);
    bool is_consistent(const ipc_part_t &part);
    bool is_named(std::string_view name, std::string_view expected);

    bool is_used_up(const JsonValue &value);

    bool refuse(const std::string &reason);
    bool refuse_value(std::string_view expected, const JsonValue *found);

    JsonValue &root_;
    JsonPlaces places_;
    JsonPlace place_;           // of the value that is looked at
    std::vector<uint8_t> own_;  // bytes that are not in the JSON as they are
    Bytes bytes_;               // the last ones that were read
    uint8_t type_ = 0;
    std::string form_ = "none";
    std::string error_;
};

bool Answers::refuse(const std::string &reason)
{
    error_ = json_path(place_) + ": " + reason;
    return false;
}

bool Answers::refuse_value(std::string_view expected, const JsonValue *found)
{
    return refuse("expected " + std::string(expected) + ", found " + described(found));
}

bool Answers::make(std::vector<uint8_t> &message)
{
    if (!may_be_message()) {
        return false;
    }
    uint32_t size = 0;
    ipc_fault_t fault;
    uint8_t *made = ipc_compose(answer, this, &size, &fault);
    if (made == nullptr) {
        return error_.empty() ? refuse_fault(fault) : false;
    }
    message.assign(made, made + size);
    g_free(made);
    place_.clear();
    return is_used_up(root_);
}

bool Answers::may_be_message()
{
    if (root_.kind != Kind::object) {
        return refuse_value(an_object, &root_);
    }
    if (root_.member("fault") != nullptr) {
        place_ = {{"fault"}};
        return refuse("the message is malformed, so it cannot be made");
    }
    if (find_duplicate(root_, place_)) {
        return refuse("this name stands there twice");
    }
    // A message may have no part in the body.
    JsonValue *body = root_.member("body");
    place_ = {{"body"}};
    return body == nullptr || body->kind == Kind::object || refuse_value(an_object, body);
}

// The library refuses a value that is there.
bool Answers::refuse_fault(const ipc_fault_t &fault)
{
    place_.clear();
    if (std::strchr(fault.path, '.') != nullptr) {
        ipc_part_t part = {};
        part.path = fault.path;
        part.element = -1;
        part.inner = -1;
        place_ = JsonPlaces().of(part);
    }
    return refuse(sentence(fault));
}

bool Answers::answer(ipc_part_t *part, void *user_data)
{
    return static_cast<Answers *>(user_data)->give(*part);
}

bool Answers::give(ipc_part_t &part)
{
    place_ = places_.of(part);
    JsonValue *value = nullptr;
    if (!find(value)) {
        return false;
    }
    switch (part.kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_I32:
        return give_number(part, value) && is_consistent(part);
    case IPC_PART_COUNT:
        return give_count(part, value);
    case IPC_PART_STR:
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    return give_bytes(part, value);
}

// Finds the value at the place; null if there is none. False if something else is on the way.
bool Answers::find(JsonValue *&found)
{
    found = &root_;
    for (size_t step = 0; step < place_.size(); ++step) {
        JsonValue &parent = *found;
        if (parent.kind != (place_[step].position < 0 ? Kind::object : Kind::array)) {
            const std::string_view expected = place_[step].position < 0 ? an_object : an_array;
            place_.resize(step);
            return refuse_value(expected, &parent);
        }
        found = child_at(parent, place_[step]);
        if (found == nullptr) {
            return true;
        }
        found->is_used = true;
    }
    return true;
}

// The header of a message that a person writes needs no more than the type.
bool may_be_missing(const ipc_part_t &part)
{
    const std::string_view path = part.path;
    return (path.starts_with("header.") && path != "header.type") || path == "padding";
}

bool Answers::give_number(ipc_part_t &part, const JsonValue *value)
{
    if (value == nullptr && may_be_missing(part)) {
        part.number = 0;
        return true;
    }
    switch (part.kind) {
    case IPC_PART_U8:
        return read_number(value, 0, UINT8_MAX, part.number);
    case IPC_PART_I32:
        return read_number(value, INT32_MIN, INT32_MAX, part.number);
    default:
        return read_number(value, 0, UINT32_MAX, part.number);
    }
}

bool Answers::read_number(const JsonValue *value, int64_t smallest, int64_t largest,
                          uint32_t &number)
{
    int64_t read = 0;
    if (value != nullptr && value->kind == Kind::number) {
        const char *end = value->text.data() + value->text.size();
        const auto [behind, error] = std::from_chars(value->text.data(), end, read);
        if (behind == end && error == std::errc() && read >= smallest && read <= largest) {
            number = static_cast<uint32_t>(read);
            return true;
        }
    }
    return refuse_value("a whole number from " + std::to_string(smallest) + " to " +
                            std::to_string(largest),
                        value);
}

// Whether a count may be negative.
bool has_sign(ipc_part_t count)
{
    count.number = UINT32_MAX;
    return number_of(count) < 0;
}

bool Answers::give_count(ipc_part_t &part, JsonValue *value)
{
    if (value != nullptr && value->kind == Kind::array) {
        if (value->values.size() > INT32_MAX) {
            return refuse("the list is too long");
        }
        part.number = static_cast<uint32_t>(value->values.size());
        return true;
    }
    JsonValue *count = value != nullptr ? value->member("count") : nullptr;
    if (!has_sign(part)) {
        return refuse_value(an_array, value);
    }
    if (count == nullptr) {
        return refuse_value(R"(an array or {"count": -1})", value);
    }
    count->is_used = true;
    place_.push_back({"count"});
    return read_number(count, INT32_MIN, -1, part.number);
}

bool Answers::give_bytes(ipc_part_t &part, JsonValue *value)
{
    if (value == nullptr && may_be_missing(part)) {
        own_.assign(part.kind == IPC_PART_RESERVED ? part.length : 0, 0);
        part.bytes = own_.data();
        part.length = static_cast<uint32_t>(own_.size());
        return true;
    }
    if (!read_bytes(value)) {
        return false;
    }
    const bool has_length = part.kind == IPC_PART_BYTES || part.kind == IPC_PART_RESERVED;
    if (has_length && part.length != bytes_.size()) {
        const char *why = part.kind == IPC_PART_BYTES ? " as data_size says," : "";
        return refuse("expected " + counted(part.length, "byte") + "," + why + " found " +
                      counted(bytes_.size(), "byte"));
    }
    if (bytes_.size() > UINT32_MAX) {
        return refuse("this is too long");
    }
    part.bytes = bytes_.data();
    part.length = static_cast<uint32_t>(bytes_.size());
    return true;
}

bool Answers::read_bytes(JsonValue *value)
{
    if (value != nullptr && value->kind == Kind::text) {
        bytes_ = {reinterpret_cast<const uint8_t *>(value->text.data()), value->text.size()};
        return true;
    }
    JsonValue *digits = value != nullptr ? value->member("hex") : nullptr;
    if (digits == nullptr) {
        return refuse_value(R"(a text or {"hex": "..."})", value);
    }
    digits->is_used = true;
    place_.push_back({"hex"});
    if (digits->kind != Kind::text || !read_hex(digits->text)) {
        return refuse_value("pairs of hex digits", digits);
    }
    bytes_ = own_;
    place_.pop_back();
    return true;
}

// Spaces may stand between the pairs.
bool Answers::read_hex(std::string_view digits)
{
    own_.clear();
    for (size_t at = 0; at < digits.size();) {
        if (digits[at] == ' ') {
            ++at;
            continue;
        }
        const int high = g_ascii_xdigit_value(digits[at]);
        const int low = at + 1 < digits.size() ? g_ascii_xdigit_value(digits[at + 1]) : -1;
        if (high < 0 || low < 0) {
            return false;
        }
        own_.push_back(static_cast<uint8_t>(high * 16 + low));
        at += 2;
    }
    return true;
}

// Whether the category and the form, if the JSON names them, are those that the part selects.
bool Answers::is_consistent(const ipc_part_t &part)
{
    if (std::string_view(part.path) == "header.type") {
        type_ = static_cast<uint8_t>(part.number);
        const std::string_view category = ipc_category_name(type_);
        return is_named("category", category) && (category != "none" || is_named("form", "none"));
    }
    if (is_discriminator(part)) {
        form_ = ipc_form_name(type_, part.number);
        return is_named("form", form_);
    }
    return true;
}

bool Answers::is_named(std::string_view name, std::string_view expected)
{
    JsonValue *value = root_.member(name);
    if (value == nullptr) {
        return true;
    }
    value->is_used = true;
    place_ = {{name}};
    return (value->kind == Kind::text && value->text == expected) ||
           refuse_value(quoted(expected), value);
}

// Whether each value has been asked for. A body without parts is not, but does no harm.
bool Answers::is_used_up(const JsonValue &value)
{
    for (size_t child = 0; child < value.values.size(); ++child) {
        place_.push_back(step_to(value, child));
        const JsonValue &looked_at = value.values[child];
        const bool is_body = place_.size() == 1 && looked_at.name == "body";
        if (!looked_at.is_used && !is_body) {
            return refuse(place_.front().name != "body" ? "there is no such field"
                          : form_ == "none"             ? "a message of this type has no body"
                                                        : "there is no such field in " + form_);
        }
        if (!is_used_up(looked_at)) {
            return false;
        }
        place_.pop_back();
    }
    return true;
}

}  // namespace

bool from_json(JsonValue &value, std::vector<uint8_t> &message, std::string &error)
{
    Answers answers(value);
    const bool is_made = answers.make(message);
    error = answers.error();
    return is_made;
}

MadeMessages from_json(std::string_view text)
{
    MadeMessages made;
    JsonReader reader(text);
    do {
        reader.has_more();
        const std::string message = "message " + std::to_string(made.messages.size() + 1) +
                                    " at line " + std::to_string(reader.line()) + ": ";
        JsonValue *value = reader.next();
        if (value == nullptr) {
            return {{}, reader.error()};
        }
        std::string error;
        if (!from_json(*value, made.messages.emplace_back(), error)) {
            const bool is_one_of_several = made.messages.size() > 1 || reader.has_more();
            return {{}, (is_one_of_several ? message : "") + error};
        }
    } while (reader.has_more());
    return made;
}

}  // namespace mdm::msg
