// SPDX-License-Identifier: Apache-2.0
//
// The dissector is tables, made here, and functions that read with them, in wireshark.lua.
#include "languages.hpp"
#include "parts.hpp"
#include "text.hpp"

namespace mdm::msg {
namespace {

using Fields = std::span<const FieldDescription>;

constexpr std::string_view beginning =
    R"(-- SPDX-License-Identifier: Apache-2.0
--
-- Wireshark shows messages of the device-management service with this file:
--
--     wireshark -X lua_script:mdm.lua capture.pcap
--
-- Each packet of the capture is one message. Its link type is 147 (USER 0).
--
-- `mdm-msg forms --wireshark` prints this file, and makes the tables of what the library answers.

)";

constexpr std::string_view about_tables =
    R"(-- A field has a path and a kind. A list has the fields of an element, and the bytes that an element
-- takes at least. Variants are what follows by the number of another field, the selector. Two
-- numbers in braces stand for all from the first to the last. The last form of a category takes all
-- discriminators that no other form lists. `payload` says which `data_size` announces the fields of
-- a form; without it they are always there. `counted_by` names the field that counts bytes or
-- elements.
)";

// "{88, {290, 293}}"
std::string runs_text(const Selectors &selectors)
{
    return '{' +
           joined(selectors.runs(), ", ",
                  [](const Run &run) {
                      const std::string first = std::to_string(run.first);
                      return run.first == run.last
                                 ? first
                                 : '{' + first + ", " + std::to_string(run.last) + '}';
                  }) +
           '}';
}

std::string lua_kind(const FieldDescription &field)
{
    const bool is_unsigned = field.kind == IPC_PART_COUNT && !has_sign(field.path, field.kind);
    return (is_unsigned ? "unsigned_" : "") + std::string(kind_name(field.kind));
}

std::string category_of(const std::string &path)
{
    return path.substr(0, path.find('.'));
}

void append_fields(std::string &out, Fields fields, int depth, const std::string &indent);

void append_elements(std::string &out, const FieldDescription &list, Fields elements,
                     const std::string &indent)
{
    out += ",\n" + indent + " ";
    if (!has_texts(list, elements)) {
        out += "record = " + quoted(record_path(elements)) + ", ";
    }
    out += "element_size = " + std::to_string(element_size(elements)) + ", elements = {\n";
    append_fields(out, elements, elements.front().depth, indent + "    ");
    out += indent + '}';
}

void append_fields(std::string &out, Fields fields, int depth, const std::string &indent)
{
    while (!fields.empty()) {
        const FieldDescription &field = fields.front();
        const bool has_no_count = field.depth > depth;
        out += indent + "{path = " + quoted(field.path) + ", kind = ";
        out += quoted(has_no_count ? "array" : lua_kind(field));
        if (has_no_count || field.kind == IPC_PART_BYTES) {
            out += ", counted_by = " + quoted(category_of(field.path) + ".data_size");
        }
        fields = fields.subspan(has_no_count ? 0 : 1);
        const size_t size = elements_size(fields, depth);
        if (size != 0) {
            append_elements(out, field, fields.first(size), indent);
            fields = fields.subspan(size);
        }
        out += "},\n";
    }
}

void append_variants(std::string &out, const FormDescription &form, const std::string &indent)
{
    out += indent + "{selector = " + quoted(form.fields.back().path) + ",\n";
    for (const Variant &variant : form.variants) {
        if (!variant.values.others) {
            out += indent + "    {values = " + runs_text(variant.values) + ", fields = {\n";
            append_fields(out, variant.fields, 0, indent + "        ");
            out += indent + "    }},\n";
        }
    }
    out += indent + "},\n";
}

std::string payload_text(PayloadFollows payload)
{
    switch (payload) {
    case PayloadFollows::if_positive:
        return ", payload = \"if_positive\"";
    case PayloadFollows::if_not_zero:
        return ", payload = \"if_not_zero\"";
    case PayloadFollows::always:
        break;
    }
    return "";
}

void append_form(std::string &out, const FormDescription &form, size_t head)
{
    const std::string indent = "            ";
    out += "        {name = " + quoted(form.name) + payload_text(form.payload);
    if (!form.discriminators.others) {
        out += ",\n         discriminators = " + runs_text(form.discriminators);
    }
    out += ",\n         fields = {\n";
    append_fields(out, Fields(form.fields).subspan(head), 0, indent);
    if (!form.variants.empty()) {
        append_variants(out, form, indent);
    }
    out += "        }},\n";
}

void append_category(std::string &out, const CategoryDescription &category)
{
    out += "    {name = " + quoted(category.name) + ", types = {" +
           joined(category.types, ", ", [](uint32_t type) { return std::to_string(type); }) +
           "}, head = {\n";
    append_fields(out, Fields(category.forms.front().fields).first(category.head), 0, "        ");
    out += "    }, forms = {\n";
    for (const FormDescription &form : category.forms) {
        append_form(out, form, category.head);
    }
    out += "    }},\n";
}

}  // namespace

std::string wireshark_dissector(Categories categories)
{
    check_forms(categories);
    const auto [first, last] = message_types();
    const auto [smallest, uncounted] = envelope_sizes();
    std::string out(beginning);
    out += "local first_type, last_type = " + std::to_string(first) + ", " + std::to_string(last) +
           '\n';
    out += "local smallest_message = " + std::to_string(smallest) + '\n';
    out += "local uncounted = " + std::to_string(uncounted) +
           "  -- bytes of a message that its length field does not count\n\n";
    out += about_tables;
    out += "\nlocal header = {\n";
    append_fields(out, describe_header(), 0, "    ");
    out += "}\n\nlocal categories = {\n";
    for (const CategoryDescription &category : categories) {
        append_category(out, category);
    }
    out += "}\n\n";
    out += wireshark_functions;
    return out;
}

}  // namespace mdm::msg
