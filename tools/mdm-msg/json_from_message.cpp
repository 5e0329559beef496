// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

#include <json-glib/json-glib.h>

#include "json_message.hpp"
#include "json_place.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

struct FreeNode {
    void operator()(JsonNode *node) const { json_node_unref(node); }
};
struct FreeGenerator {
    void operator()(JsonGenerator *generator) const { g_object_unref(generator); }
};
using Node = std::unique_ptr<JsonNode, FreeNode>;
using Generator = std::unique_ptr<JsonGenerator, FreeGenerator>;

Node new_object()
{
    JsonNode *node = json_node_new(JSON_NODE_OBJECT);
    json_node_take_object(node, json_object_new());
    return Node(node);
}

Node new_array()
{
    JsonNode *node = json_node_new(JSON_NODE_ARRAY);
    json_node_take_array(node, json_array_new());
    return Node(node);
}

Node new_number(int64_t number)
{
    return Node(json_node_init_int(json_node_alloc(), number));
}

Node new_string(const std::string &text)
{
    return Node(json_node_init_string(json_node_alloc(), text.c_str()));
}

void set(const Node &object, const char *name, Node value)
{
    json_object_set_member(json_node_get_object(object.get()), name, value.release());
}

Node new_hex(Bytes bytes)
{
    std::string digits = hex(bytes);
    std::erase(digits, ' ');
    Node node = new_object();
    set(node, "hex", new_string(digits));
    return node;
}

// A zero byte is no text for GLib.
Node new_text(Bytes bytes)
{
    const std::string_view text = as_text(bytes);
    return g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE
               ? new_string(std::string(text))
               : new_hex(bytes);
}

Node new_count(int64_t count)
{
    Node node = new_object();
    set(node, "count", new_number(count));
    return node;
}

Node new_fault(const ipc_fault_t &fault)
{
    Node node = new_object();
    set(node, "path", new_string(fault.path));
    set(node, "offset", new_number(fault.offset));
    set(node, "needed", new_number(fault.needed));
    set(node, "left", new_number(fault.left));
    set(node, "reason", new_string(sentence(fault)));
    return node;
}

// Makes the JSON of the parts of one message.
class Tree {
public:
    void add(const ipc_part_t &part);
    void add_fault(const ipc_fault_t &fault);
    std::string text(bool is_pretty);

private:
    struct List {
        JsonPlace place = {};
        std::string_view path = {};
        uint32_t count = 0;
        uint32_t end = 0;  // the offset behind the count
        size_t depth = 0;  // 1 in an element of a list
    };

    Node value_of(const ipc_part_t &part, const JsonPlace &place);
    Node new_list(const ipc_part_t &part, const JsonPlace &place);
    void add_names(const ipc_part_t *part);
    void add_count(const List &list);
    JsonNode *container_of(const JsonPlace &place);

    Node root_ = new_object();
    JsonPlaces places_;
    std::array<List, 2> lists_;  // the last one, and the last one in an element of a list
    List last_count_;            // also a negative one
    int type_ = -1;              // the message type, if there is one
    bool has_names_ = false;
};

// The value that a step leads to; null if there is none.
JsonNode *child_of(JsonNode *node, const JsonStep &step)
{
    if (step.position < 0) {
        return json_object_get_member(json_node_get_object(node), std::string(step.name).c_str());
    }
    JsonArray *array = json_node_get_array(node);
    const auto position = static_cast<guint>(step.position);
    return position < json_array_get_length(array) ? json_array_get_element(array, position)
                                                   : nullptr;
}

// Elements come in their order.
void set_child(JsonNode *node, const JsonStep &step, Node child)
{
    if (step.position < 0) {
        json_object_set_member(json_node_get_object(node), std::string(step.name).c_str(),
                               child.release());
    } else {
        json_array_add_element(json_node_get_array(node), child.release());
    }
}

// The object or array that the last step of the place starts from. What is missing is added.
JsonNode *Tree::container_of(const JsonPlace &place)
{
    JsonNode *node = root_.get();
    for (size_t step = 0; step + 1 < place.size(); ++step) {
        if (child_of(node, place[step]) == nullptr) {
            set_child(node, place[step], place[step + 1].position < 0 ? new_object() : new_array());
        }
        node = child_of(node, place[step]);
    }
    return node;
}

void Tree::add(const ipc_part_t &part)
{
    const JsonPlace place = places_.of(part);
    if (place.front().name != "header") {
        add_names(&part);
    }
    if (std::string_view(part.path) == "header.type") {
        type_ = static_cast<int>(part.number);
    }
    set_child(container_of(place), place.back(), value_of(part, place));
}

Node Tree::value_of(const ipc_part_t &part, const JsonPlace &place)
{
    switch (part.kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_I32:
        return new_number(number_of(part));
    case IPC_PART_COUNT:
        return new_list(part, place);
    case IPC_PART_STR:
    case IPC_PART_BYTES:
        return new_text(bytes_of(part));
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    return new_hex(bytes_of(part));
}

// A text whose bytes are not all there is a count, too. It may be an element of a list.
Node Tree::new_list(const ipc_part_t &part, const JsonPlace &place)
{
    if (place.back().position >= 0) {
        return new_count(part.number);
    }
    last_count_ = {place, part.path, part.number, part.offset + part.size,
                   part.element < 0 ? size_t{0} : 1};
    const int64_t count = number_of(part);
    if (count < 0) {
        return new_count(count);
    }
    lists_[last_count_.depth] = last_count_;
    return new_array();
}

// The category and the form stand between the header and the body. Without a whole discriminator
// nobody knows the form.
void Tree::add_names(const ipc_part_t *part)
{
    if (has_names_ || type_ < 0) {
        return;
    }
    has_names_ = true;
    const auto type = static_cast<uint8_t>(type_);
    const std::string category = ipc_category_name(type);
    set(root_, "category", new_string(category));
    if (category == "none") {
        set(root_, "form", new_string(category));
    } else if (part != nullptr && is_discriminator(*part)) {
        set(root_, "form", new_string(ipc_form_name(type, part->number)));
    }
}

// A list whose elements are not all there shows its count.
void Tree::add_count(const List &list)
{
    if (list.place.empty()) {
        return;
    }
    JsonNode *container = container_of(list.place);
    JsonArray *elements = json_node_get_array(child_of(container, list.place.back()));
    if (json_array_get_length(elements) == list.count) {
        return;
    }
    Node node = new_count(list.count);
    if (json_array_get_length(elements) != 0) {
        json_object_set_array_member(json_node_get_object(node.get()), "elements",
                                     json_array_ref(elements));
    }
    set_child(container, list.place.back(), std::move(node));
}

void Tree::add_fault(const ipc_fault_t &fault)
{
    add_names(nullptr);
    if (fault.offset == last_count_.end && fault.path == last_count_.path) {
        // A text may be announced with so many bytes that a list's count would be negative.
        set_child(container_of(last_count_.place), last_count_.place.back(),
                  new_count(last_count_.count));
        lists_[last_count_.depth] = {};
    }
    add_count(lists_[1]);
    add_count(lists_[0]);
    set(root_, "fault", new_fault(fault));
}

void append_escape(std::string &out, unsigned unit)
{
    std::array<char, 8> escape{};
    std::snprintf(escape.data(), escape.size(), "\\u%04x", unit);
    out += escape.data();
}

// Line breaks stand between the values. In texts json-glib escapes them.
bool is_harmless(std::string_view character)
{
    return character == "\n" ||
           (printable(character) == character && character != "\u2028" && character != "\u2029");
}

}  // namespace

std::string without_terminal_actions(const char *json)
{
    std::string out;
    while (*json != '\0') {
        const auto size = static_cast<size_t>(g_utf8_next_char(json) - json);
        const gunichar code = g_utf8_get_char(json);
        if (is_harmless({json, size})) {
            out.append(json, size);
        } else if (code < 0x10000) {
            append_escape(out, code);
        } else {
            append_escape(out, 0xd800 + ((code - 0x10000) >> 10));
            append_escape(out, 0xdc00 + (code & 0x3ff));
        }
        json += size;
    }
    return out;
}

namespace {

std::string Tree::text(bool is_pretty)
{
    add_names(nullptr);
    const Generator generator(json_generator_new());
    json_generator_set_pretty(generator.get(), is_pretty ? TRUE : FALSE);
    json_generator_set_root(generator.get(), root_.get());
    g_autofree gchar *json = json_generator_to_data(generator.get(), nullptr);
    return without_terminal_actions(json);
}

}  // namespace

MessageJson to_json(Bytes message, bool is_pretty)
{
    Tree tree;
    const auto fault = inspect(message, [&tree](const ipc_part_t &part) { tree.add(part); });
    if (fault) {
        tree.add_fault(*fault);
    }
    return {tree.text(is_pretty), fault};
}

}  // namespace mdm::msg
