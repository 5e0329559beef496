// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <set>

#include <glib.h>

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

  A count below 0 announces no elements. A `data_size` below 0 that counts elements is refused.
seq:
  - id: header
    type: header
  - id: body
    size-eos: true
    type:
      switch-on: header.type
      cases:
)";

constexpr std::string_view default_case_and_types =
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

using Terms = std::vector<std::string>;

std::string in_brackets(const std::string &text)
{
    return '(' + text + ')';
}

std::string comparison(const std::string &number, const char *sign, uint32_t with)
{
    return number + sign + std::to_string(with);
}

// Of the terms, one is true.
Terms is_in(const std::string &number, const Selectors &selectors)
{
    Terms terms;
    for (const Run &run : selectors.runs()) {
        if (run.last - run.first > 1) {
            terms.push_back(in_brackets(comparison(number, " >= ", run.first) + " and " +
                                        comparison(number, " <= ", run.last)));
            continue;
        }
        terms.push_back(comparison(number, " == ", run.first));
        if (run.last != run.first) {
            terms.push_back(comparison(number, " == ", run.last));
        }
    }
    return terms;
}

// The pieces in lines that are as long as they may be. A piece is not broken.
std::string lines_of(const Terms &pieces, const std::string &indent)
{
    std::string lines;
    std::string line = indent;
    for (const std::string &piece : pieces) {
        if (line != indent && line.size() + 1 + piece.size() > line_width) {
            lines += line + '\n';
            line = indent;
        }
        line.append(line == indent ? "" : " ").append(piece);
    }
    return lines + line + '\n';
}

// The terms with a word in front of each but the first one.
Terms pieces_of(Terms terms, const std::string &word)
{
    for (std::string &term : std::span(terms).subspan(1)) {
        term.insert(0, word + ' ');
    }
    return terms;
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

// When an attribute is there that some forms of a category have; empty if always. A payload follows
// all these forms by the same rule.
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
    return joined(is_in(number + selector, selectors), " or ");
}

// Whether so many bytes or elements are left.
std::string fits(const Node &counted)
{
    const std::string left = "_io.size - _io.pos";
    return counted.element_size == 1
               ? "_ <= " + left
               : "_ <= " + in_brackets(left) + " / " + std::to_string(counted.element_size);
}

// The same for a number with a sign. A number below 0 counts nothing, or is refused. It is compared
// first, because sizes have no sign in some languages.
std::string fits_or_is_negative(const Node &counted)
{
    return "_ < 0 or " + fits(counted);
}

std::string fits_and_is_not_negative(const Node &counted)
{
    return "_ >= 0 and " + fits(counted);
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

// All of the terms are true.
std::string valid_lines(const Terms &terms)
{
    const std::string line = "          expr: " + joined(terms, " and ") + '\n';
    return "        valid:\n" +
           (line.size() <= line_width
                ? line
                : "          expr: >-\n" + lines_of(pieces_of(terms, "and"), "            "));
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

// Types in the order of the description: a type stands in front of those that it uses.
class Types {
public:
    // Adds a type without lines, and returns its place.
    size_t add(const std::string &name, const Nodes &nodes);
    void set_lines(size_t place, const std::string &lines) { types_[place].lines = lines; }

    std::string attributes_of(const Node &node, const std::string &condition, const Place &place);
    std::string text() const
    {
        return joined(types_, "",
                      [](const Type &type) { return "  " + type.name + ":\n" + type.lines; });
    }

private:
    struct Type {
        std::string name;
        Nodes nodes;
        std::string lines = {};
    };

    std::string sequence_of(const Nodes &nodes, const Place &place);
    std::string record_type(const Node &node, const Place &place);

    std::vector<Type> types_;
};

size_t Types::add(const std::string &name, const Nodes &nodes)
{
    if (std::ranges::find(types_, name, &Type::name) != types_.end()) {
        g_error("two types have the name %s", name.c_str());
    }
    types_.push_back({name, nodes});
    return types_.size() - 1;
}

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

// The name of the type of a record or of elements. Records with the same fields share a type. If
// only the name is the same, the name of the field is added.
std::string Types::record_type(const Node &node, const Place &place)
{
    if (node.type == kaitai_text) {
        return node.type;
    }
    std::string name = node.type;
    const auto known = std::ranges::find(types_, name, &Type::name);
    if (known != types_.end()) {
        if (std::ranges::equal(known->nodes, node.nodes, is_same)) {
            return name;
        }
        name += "_of_" + node.name;
    }
    const size_t level = node.kind == Node::Kind::record ? place.level + 1 : element_level;
    const size_t added = add(name, node.nodes);
    set_lines(added, sequence_of(node.nodes, {level, node.variants, place.selector}));
    return name;
}

std::string count_name(const Node &list)
{
    return "num_" + list.name;
}

// A list is two attributes.
std::string Types::attributes_of(const Node &node, const std::string &condition, const Place &place)
{
    const std::string count = count_name(node);
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
                             valid_lines({node.has_sign ? fits_or_is_negative(node) : fits(node)}),
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

// What has to be true of a `data_size` that counts bytes or elements.
Terms data_size_terms(const Nodes &payload, const CategoryDescription &category)
{
    Terms terms;
    for (const Node &node : payload) {
        if (node.kind != Node::Kind::bytes && node.kind != Node::Kind::array) {
            continue;
        }
        // A `data_size` below 0 that announces a payload counts more than there can be.
        const bool is_refused_below_0 = node.forms.front()->payload == PayloadFollows::if_not_zero;
        const std::string check =
            is_refused_below_0 ? fits_and_is_not_negative(node) : fits_or_is_negative(node);
        if (node.forms.size() == category.forms.size()) {
            terms.push_back(check);
            continue;
        }
        terms.push_back(
            joined(node.forms, " and ",
                   [](const FormDescription *form) { return "form != " + enumerator(*form); }) +
            " or " + (is_refused_below_0 ? in_brackets(check) : check));
    }
    if (terms.size() > 1) {
        std::ranges::transform(terms, terms.begin(), in_brackets);
    }
    return terms;
}

std::string head_of(const CategoryDescription &category, const Nodes &payload, Types &types)
{
    const Terms terms = data_size_terms(payload, category);
    std::string text;
    for (const Node &node : head_nodes_of(category)) {
        text += types.attributes_of(node, "", {});
        if (node.name == "data_size" && !terms.empty()) {
            text += valid_lines(terms);
        }
    }
    return text;
}

// The form that the discriminator selects.
std::string form_instance(const CategoryDescription &category)
{
    const std::string indent = "          ";
    std::string text = "    instances:\n      form:\n        value: ";
    if (category.forms.size() == 1) {
        return text + enumerator(category.forms.front()) + '\n';
    }
    text += ">-\n";
    for (const FormDescription &form : category.forms) {
        if (form.discriminators.others) {
            text += indent + enumerator(form) + '\n';
            continue;
        }
        Terms pieces = pieces_of(is_in("type", form.discriminators), "or");
        pieces.push_back("? " + enumerator(form) + " :");
        text += lines_of(pieces, indent);
    }
    return text;
}

std::string doc_of(const CategoryDescription &category)
{
    return "    doc: Message type" + std::string(category.types.size() == 1 ? "" : "s") + ' ' +
           Selectors{category.types}.text() + ".\n";
}

// The compiler would refuse two attributes with one name.
void check_names(const Nodes &nodes, std::set<std::string> names)
{
    for (const Node &node : nodes) {
        const bool is_new =
            names.insert(node.name).second &&
            (node.kind != Node::Kind::list || names.insert(count_name(node)).second);
        if (!is_new) {
            g_error("two attributes have the name %s", node.name.c_str());
        }
        check_names(node.nodes, {});
    }
}

void add_body(const CategoryDescription &category, Types &types)
{
    const size_t place = types.add(category.name, {});
    const Nodes payload = payload_nodes_of(category);
    std::set<std::string> names = {"padding", "form"};
    for (const Node &node : head_nodes_of(category)) {
        names.insert(node.name);
    }
    check_names(payload, names);
    std::string text = doc_of(category) + "    seq:\n" + head_of(category, payload, types);
    for (const Node &node : payload) {
        text += types.attributes_of(node, condition(node.forms, category),
                                    {1, node.variants, selector_of(node)});
    }
    types.set_lines(place, text + std::string(padding) + form_instance(category));
}

// The header. Two of its numbers are checked.
void add_header(Types &types)
{
    const size_t place = types.add("header", {});
    const auto [smallest, uncounted] = envelope_sizes();
    const Run run = message_types();
    std::string text = "    seq:\n";
    for (const Node &node : header_nodes()) {
        text += types.attributes_of(node, "", {});
        if (node.name == "length") {
            text += "        doc: The size of the message without " + std::to_string(uncounted) +
                    " bytes.\n";
            text += valid_lines({comparison("_", " >= ", smallest - uncounted),
                                 "_ == _io.size - " + std::to_string(uncounted)});
        } else if (node.name == "type") {
            text += valid_lines(
                {comparison("_", " >= ", run.first), comparison("_", " <= ", run.last)});
        }
    }
    types.set_lines(place, text);
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
    check_forms(categories);
    Types types;
    add_header(types);
    for (const CategoryDescription &category : categories) {
        add_body(category, types);
    }
    return std::string(beginning) + cases_of(categories) + std::string(default_case_and_types) +
           types.text() + enums_of(categories);
}

}  // namespace mdm::msg
