// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <map>
#include <numeric>

#include "kaitai_nodes.hpp"
#include "languages.hpp"
#include "text.hpp"

namespace mdm::msg {
namespace {

constexpr std::string_view beginning =
    R"(# SPDX-License-Identifier: Apache-2.0
#
# `mdm-msg forms --kaitai` prints this file, and makes it of what the library answers.
meta:
  id: mdm
  title: Message of the device-management service
  license: Apache-2.0
  ks-version: '0.10'
  endian: le
doc: |
  One message. The stream has nothing else.

  A message that receivers refuse raises an error. Each length and each count is compared with the
  bytes that are left, before any byte is read that it counts.

  Some senders count more bytes than they write, and some receivers read fewer bytes than were sent.
  These bytes are the `padding` at the end of the body.

  A count below 0 announces no elements.
seq:
  - id: header
    type: header
  - id: body
    size-eos: true
    type:
      switch-on: header.type
      cases:
)";

constexpr std::string_view first_types =
    R"(        _: no_category
types:
  counted_text:
    seq:
      - id: length
        type: u4
        valid:
          expr: _ <= _io.size - _io.pos
      - id: bytes
        size: length
    instances:
      text:
        doc: Receivers see the bytes up to the first zero byte. They need not be UTF-8.
        value: bytes.to_s("UTF-8")
  no_category:
    doc: The body of a message type without a category. Receivers do not read it.
    seq:
      - id: padding
        size-eos: true
    instances:
      form:
        value: form::none
)";

constexpr std::string_view padding =
    R"(      - id: padding
        doc: Receivers do not read these bytes.
        size-eos: true
)";

constexpr size_t line_width = 100;

// Expressions

std::string in_brackets(const std::string &text)
{
    return '(' + text + ')';
}

std::string is_in(const std::string &number, const Selectors &selectors)
{
    const std::vector<Run> runs = selectors.runs();
    return joined(runs, " or ", [&](const Run &run) {
        const std::string first = std::to_string(run.first);
        const std::string last = std::to_string(run.last);
        if (run.first == run.last) {
            return number + " == " + first;
        }
        if (run.last == run.first + 1) {
            return number + " == " + first + " or " + number + " == " + last;
        }
        std::string both = number;
        both.append(" >= ").append(first).append(" and ").append(number).append(" <= ").append(
            last);
        return runs.size() == 1 ? both : in_brackets(both);
    });
}

std::string enumerator(const FormDescription &form)
{
    return "form::" + identifier(form.name);
}

std::string is_one_of(const Forms &forms)
{
    return joined(forms, " or ",
                  [](const FormDescription *form) { return "form == " + enumerator(*form); });
}

// When an attribute is there that some forms of a category have; empty if always.
std::string condition(const Forms &forms, const CategoryDescription &category)
{
    const PayloadFollows payload = forms.front()->payload;
    const char *is_announced =
        payload == PayloadFollows::if_positive ? "data_size > 0" : "data_size != 0";
    if (forms.size() == category.forms.size()) {
        return payload == PayloadFollows::always ? "" : is_announced;
    }
    std::string is_form = is_one_of(forms);
    if (payload == PayloadFollows::always) {
        return is_form;
    }
    return (forms.size() == 1 ? is_form : in_brackets(is_form)) + " and " + is_announced;
}

// When an attribute is there that some variants have. The field that selects the variant stands
// `levels` above.
std::string condition(const Variants &variants, const std::string &selector, size_t levels)
{
    Selectors selectors;
    for (const Variant *variant : variants) {
        selectors.numbers.insert(selectors.numbers.end(), variant->values.numbers.begin(),
                                 variant->values.numbers.end());
    }
    std::ranges::sort(selectors.numbers);
    std::string number;
    for (; levels > 0; --levels) {
        number += "_parent.";
    }
    return is_in(number + selector, selectors);
}

// "8" for two words
uint32_t smallest_size(const Nodes &nodes)
{
    return std::accumulate(nodes.begin(), nodes.end(), 0U, [](uint32_t size, const Node &node) {
        if (node.kind == Node::Kind::record) {
            return size + smallest_size(node.nodes);
        }
        return size + (node.is_byte ? 1 : 4);
    });
}

std::string fits(uint32_t element_size)
{
    return element_size == 1 ? "_ <= _io.size - _io.pos"
                             : "_ <= (_io.size - _io.pos) / " + std::to_string(element_size);
}

// Types

constexpr std::string_view number_type(const Node &node)
{
    return node.is_byte ? "u1" : node.has_sign ? "s4" : "u4";
}

std::string attribute(const std::string &name, const std::string &lines,
                      const std::string &condition)
{
    return "      - id: " + name + '\n' + lines +
           (condition.empty() ? "" : "        if: " + condition + '\n');
}

std::string type_line(std::string_view type)
{
    return "        type: " + std::string(type) + '\n';
}

// Where a long expression may begin a new line: at the next " or ", " and " or " ? ".
size_t next_break(const std::string &text, size_t begin)
{
    size_t next = std::string::npos;
    for (const char *word : {" or ", " and ", " ? "}) {
        next = std::min(next, text.find(word, begin));
    }
    return next;
}

// The lines of an expression, each with the indentation and a line end.
std::string wrapped(std::string text, const std::string &indent)
{
    std::string lines;
    size_t last = 0;
    for (size_t i = next_break(text, 0); indent.size() + text.size() > line_width;
         i = next_break(text, i + 1)) {
        if (last != 0 && indent.size() + std::min(i, text.size()) > line_width) {
            lines += indent + text.substr(0, last) + '\n';
            text.erase(0, last + 1);
            i = 0;
        } else if (i == std::string::npos) {
            break;
        }
        last = i;
    }
    return lines + indent + text + '\n';
}

std::string valid_lines(const std::string &expression)
{
    const std::string line = "          expr: " + expression + '\n';
    return "        valid:\n" +
           (line.size() <= line_width
                ? line
                : "          expr: >-\n" + wrapped(expression, "            "));
}

std::string repeat_lines(const std::string &times)
{
    return "        repeat: expr\n        repeat-expr: " + times + '\n';
}

// Where a sequence stands: the values of the body have the level 1.
struct Place {
    size_t level = 1;
    Variants variants = {};          // that have the sequence
    std::string_view selector = {};  // the path of the field that selects the variant
};

class Types {
public:
    std::string attributes_of(const Node &node, const std::string &condition, const Place &place);
    // Adds a type in front of those that were added since `begin`: the types that it uses.
    void add(size_t begin, const std::string &name, const std::string &text)
    {
        text_.insert(begin, "  " + name + ":\n" + text);
    }
    size_t end() const { return text_.size(); }
    const std::string &text() const { return text_; }

private:
    std::string sequence_of(const Nodes &nodes, const Place &place);
    std::string record_type(const Node &node, const Place &place);

    std::map<std::string, std::string> records_;
    std::string text_;
};

// When a value is there whose sequence is there.
std::string condition_in(const Node &node, const Place &place)
{
    if (node.variants == place.variants) {
        return "";
    }
    const auto selector_level = static_cast<size_t>(std::ranges::count(place.selector, '.'));
    return condition(node.variants, name_at(place.selector, selector_level),
                     place.level - selector_level);
}

std::string Types::sequence_of(const Nodes &nodes, const Place &place)
{
    std::string text = "    seq:\n";
    for (const Node &node : nodes) {
        text += attributes_of(node, condition_in(node, place), place);
    }
    return text;
}

// The name of the type of a record or of elements. Records with the same fields share a type; a
// type whose name is taken is one of elements, and is named like their list.
std::string Types::record_type(const Node &node, const Place &place)
{
    if (node.type == kaitai_text) {
        return node.type;
    }
    const size_t begin = end();
    const size_t level = node.kind == Node::Kind::record ? place.level + 1 : 2;
    const std::string text = sequence_of(node.nodes, {level, node.variants, place.selector});
    std::string name = node.type;
    const auto [known, is_new] = records_.try_emplace(name, text);
    if (!is_new && known->second != text) {
        name += "_of_" + node.name;
    }
    if (is_new || known->second != text) {
        add(begin, name, text);
    }
    return name;
}

// A list is two attributes.
std::string Types::attributes_of(const Node &node, const std::string &condition, const Place &place)
{
    const std::string count = "num_" + node.name;
    switch (node.kind) {
    case Node::Kind::number:
        return attribute(node.name, type_line(number_type(node)), condition);
    case Node::Kind::text:
        return attribute(node.name, type_line(kaitai_text), condition);
    case Node::Kind::bytes:
        return attribute(node.name, "        size: data_size\n", condition);
    case Node::Kind::reserved:
        return attribute(node.name, "        size: 2\n", condition);
    case Node::Kind::array:
        return attribute(node.name, type_line(record_type(node, place)) + repeat_lines("data_size"),
                         condition);
    case Node::Kind::list:
        return attribute(count,
                         type_line(number_type(node)) +
                             valid_lines(fits(smallest_size(node.nodes))),
                         condition) +
               attribute(node.name,
                         type_line(record_type(node, place)) +
                             repeat_lines(node.has_sign ? "'" + count + " < 0 ? 0 : " + count + '\''
                                                        : count),
                         condition);
    case Node::Kind::record:
        break;
    }
    return attribute(node.name, type_line(record_type(node, place)), condition);
}

// Bodies

// The path of the field whose number selects a variant; empty if there are no variants.
std::string_view selector_of(const Node &node)
{
    return node.variants.empty() ? std::string_view() : node.forms.front()->fields.back().path;
}

// The number of bytes or elements that `data_size` counts has to fit; empty if it counts none.
std::string data_size_check(const Nodes &nodes, const CategoryDescription &category)
{
    std::vector<std::string> checks;
    for (const Node &node : nodes) {
        if (node.kind != Node::Kind::bytes && node.kind != Node::Kind::array) {
            continue;
        }
        std::string check = fits(node.kind == Node::Kind::bytes ? 1 : smallest_size(node.nodes));
        if (node.forms.front()->payload == PayloadFollows::if_not_zero) {
            check = in_brackets(check.insert(0, "_ >= 0 and "));
        }
        if (node.forms.size() < category.forms.size()) {
            check.insert(0, "not " + in_brackets(is_one_of(node.forms)) + " or ");
        }
        checks.push_back(check);
    }
    return joined(checks, " and ", [&checks](const std::string &check) {
        return checks.size() == 1 ? check : in_brackets(check);
    });
}

std::string head_of(const CategoryDescription &category, const Nodes &payload, Types &types)
{
    std::string text;
    for (const Node &node : head_nodes_of(category)) {
        text += types.attributes_of(node, "", {});
        const std::string check = data_size_check(payload, category);
        if (node.name == "data_size" && !check.empty()) {
            text += valid_lines(check);
        }
    }
    return text;
}

// The form that the discriminator selects.
std::string form_instance(const CategoryDescription &category)
{
    std::string text = "    instances:\n      form:\n        value: >-\n";
    for (const FormDescription &form : category.forms) {
        const std::string line = form.discriminators.others ? enumerator(form)
                                                            : is_in("type", form.discriminators) +
                                                                  " ? " + enumerator(form) + " :";
        text += wrapped(line, "          ");
    }
    return text;
}

std::string doc_of(const CategoryDescription &category)
{
    return "    doc: Message type" + std::string(category.types.size() == 1 ? "" : "s") + ' ' +
           Selectors{category.types}.text() + ".\n";
}

void add_body(const CategoryDescription &category, Types &types)
{
    const Nodes payload = payload_nodes_of(category);
    const size_t begin = types.end();
    std::string text = doc_of(category) + "    seq:\n" + head_of(category, payload, types);
    for (const Node &node : payload) {
        const Place place = {1, node.variants, selector_of(node)};
        text += types.attributes_of(node, condition(node.forms, category), place);
    }
    types.add(begin, category.name, text + std::string(padding) + form_instance(category));
}

// The header. Two of its numbers are checked.
std::string header_of(Types &types)
{
    std::string text = "    seq:\n";
    for (const Node &node : header_nodes()) {
        text += types.attributes_of(node, "", {});
        if (node.name == "length") {
            text += "        doc: The size of the message without 8 bytes.\n";
            text += valid_lines("_ >= 32 and _ == _io.size - 8");
        } else if (node.name == "type") {
            const Run run = message_types();
            text += valid_lines("_ >= " + std::to_string(run.first) +
                                " and _ <= " + std::to_string(run.last));
        }
    }
    return text;
}

std::string cases_of(Categories categories)
{
    std::string text;
    for (const CategoryDescription &category : categories) {
        for (const uint32_t type : category.types) {
            text += "        " + std::to_string(type) + ": " + category.name + '\n';
        }
    }
    return text;
}

std::string enums_of(Categories categories)
{
    std::string text = "enums:\n  form:\n    " + std::to_string(MDM_FORM_NONE) + ": none\n";
    for (const CategoryDescription &category : categories) {
        for (const FormDescription &form : category.forms) {
            text += "    " + std::to_string(form.id) + ": " + identifier(form.name) + '\n';
        }
    }
    return text;
}

}  // namespace

std::string kaitai_description(Categories categories)
{
    Types types;
    types.add(types.end(), "header", header_of(types));
    for (const CategoryDescription &category : categories) {
        add_body(category, types);
    }
    return std::string(beginning) + cases_of(categories) + std::string(first_types) + types.text() +
           enums_of(categories);
}

}  // namespace mdm::msg
