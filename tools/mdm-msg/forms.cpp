// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <json-glib/json-glib.h>

#include "command.hpp"
#include "complain.hpp"
#include "describe.hpp"
#include "languages.hpp"
#include "options.hpp"
#include "parts.hpp"
#include "text.hpp"

namespace mdm::msg {
namespace {

using Fields = std::span<const FieldDescription>;

constexpr const char *summary =
    "Shows which messages there are: the categories with their message types, and the forms\n"
    "with their discriminators, the field \"type\" of a body. With a category it also shows the\n"
    "fields, in the order of the bytes.\n"
    "\n"
    "Exit status: 0, or 2 for wrong usage.";

constexpr int indentation = 2;
constexpr int name_width = 36;

// As text

void print_line(int indent, const std::string &name, const std::string &text)
{
    const int width = std::max(0, name_width - indent);
    std::printf("%*s%-*s %s\n", indent, "", width, name.c_str(), text.c_str());
}

std::string kind_text(const FieldDescription &field, PayloadFollows payload)
{
    std::string text = kind_name(field.kind);
    if (!is_data_size(field) || payload == PayloadFollows::always) {
        return text;
    }
    return text + (payload == PayloadFollows::if_positive ? ", the payload follows if it is above 0"
                                                          : ", the payload follows unless it is 0");
}

void print_fields(Fields fields, int depth, int indent, PayloadFollows payload);

void print_list(const std::string &path, Fields elements, int depth, int indent,
                const std::string &end)
{
    if (elements.size() == 1 && elements.front().path == path) {
        print_line(indent, path, "list of " + (kind_name(elements.front().kind) + end));
        return;
    }
    print_line(indent, path, "list of {");
    print_fields(elements, depth + 1, indent + indentation, PayloadFollows::always);
    std::printf("%*s}%s\n", indent, "", end.c_str());
}

void print_fields(Fields fields, int depth, int indent, PayloadFollows payload)
{
    while (!fields.empty()) {
        const FieldDescription &field = fields.front();
        if (field.depth > depth) {
            const size_t size = elements_size(fields, depth);
            print_list(field.path, fields.first(size), depth, indent, ", without a count");
            fields = fields.subspan(size);
            continue;
        }
        fields = fields.subspan(1);
        if (field.kind == IPC_PART_COUNT) {
            const size_t size = elements_size(fields, depth);
            print_list(field.path, fields.first(size), depth, indent, "");
            fields = fields.subspan(size);
        } else {
            print_line(indent, field.path, kind_text(field, payload));
        }
    }
}

// "type 281, 283", "any other type"
std::string discriminators_text(const CategoryDescription &category, const FormDescription &form)
{
    if (form.discriminators.others) {
        return category.forms.size() == 1 ? "any type" : "any other type";
    }
    return "type " + form.discriminators.text();
}

void print_form(const FormDescription &form, const std::string &discriminators)
{
    std::printf("\n%s: %s\n", form.name.c_str(), discriminators.c_str());
    print_fields(form.fields, 0, indentation, form.payload);
    for (const Variant &variant : form.variants) {
        std::printf("%*sif %s is %s:%s\n", indentation, "", form.fields.back().path.c_str(),
                    variant.values.text().c_str(), variant.fields.empty() ? " nothing" : "");
        print_fields(variant.fields, 0, 2 * indentation, PayloadFollows::always);
    }
}

void print_category(const CategoryDescription &category)
{
    std::printf("%s: message type%s %s\n", category.name.c_str(),
                category.types.size() == 1 ? "" : "s", Selectors{category.types}.text().c_str());
}

void print_forms(const CategoryDescription &category)
{
    print_category(category);
    for (const FormDescription &form : category.forms) {
        print_form(form, discriminators_text(category, form));
    }
}

void print_overview(const std::vector<CategoryDescription> &categories)
{
    for (const CategoryDescription &category : categories) {
        print_category(category);
        for (const FormDescription &form : category.forms) {
            std::printf("  %-22s %s\n", form.name.c_str(),
                        discriminators_text(category, form).c_str());
        }
    }
    std::printf("\nNo category: message types %s\n",
                Selectors{types_without_category()}.text().c_str());
    std::fputs("\nEvery message begins with the header:\n", stdout);
    print_fields(describe_header(), 0, indentation, PayloadFollows::always);
}

// As JSON

void add_text(JsonBuilder *out, const char *name, const std::string &value)
{
    json_builder_set_member_name(out, name);
    json_builder_add_string_value(out, value.c_str());
}

void add_numbers(JsonBuilder *out, const char *name, const std::vector<uint32_t> &numbers)
{
    json_builder_set_member_name(out, name);
    json_builder_begin_array(out);
    for (const uint32_t number : numbers) {
        json_builder_add_int_value(out, number);
    }
    json_builder_end_array(out);
}

// The numbers, or "any_other": true.
void add_selectors(JsonBuilder *out, const char *name, const Selectors &selectors)
{
    if (!selectors.others) {
        add_numbers(out, name, selectors.numbers);
        return;
    }
    json_builder_set_member_name(out, "any_other");
    json_builder_add_boolean_value(out, TRUE);
}

template <class Elements, class Add>
void add_array(JsonBuilder *out, const char *name, const Elements &elements, Add add)
{
    json_builder_set_member_name(out, name);
    json_builder_begin_array(out);
    for (const auto &element : elements) {
        json_builder_begin_object(out);
        add(element);
        json_builder_end_object(out);
    }
    json_builder_end_array(out);
}

// A list has "elements", and a "kind" only if it has a count.
void add_fields(JsonBuilder *out, const char *name, Fields fields, int depth)
{
    json_builder_set_member_name(out, name);
    json_builder_begin_array(out);
    while (!fields.empty()) {
        const FieldDescription &field = fields.front();
        json_builder_begin_object(out);
        add_text(out, "path", field.path);
        if (field.depth == depth) {
            add_text(out, "kind", kind_name(field.kind));
            fields = fields.subspan(1);
        }
        const size_t size = elements_size(fields, depth);
        if (size != 0) {
            add_fields(out, "elements", fields.first(size), depth + 1);
            fields = fields.subspan(size);
        }
        json_builder_end_object(out);
    }
    json_builder_end_array(out);
}

const char *payload_name(PayloadFollows payload)
{
    switch (payload) {
    case PayloadFollows::if_positive:
        return "above 0";
    case PayloadFollows::if_not_zero:
        return "not 0";
    case PayloadFollows::always:
        break;
    }
    return "any";
}

void add_form(JsonBuilder *out, const FormDescription &form)
{
    add_text(out, "name", form.name);
    add_selectors(out, "discriminators", form.discriminators);
    if (std::ranges::any_of(form.fields, is_data_size)) {
        add_text(out, "payload_if_data_size", payload_name(form.payload));
    }
    add_fields(out, "fields", form.fields, 0);
    if (!form.variants.empty()) {
        add_text(out, "selector", form.fields.back().path);
        add_array(out, "variants", form.variants, [out](const Variant &variant) {
            add_selectors(out, "values", variant.values);
            add_fields(out, "fields", variant.fields, 0);
        });
    }
}

void add_all(JsonBuilder *out, const std::vector<CategoryDescription> &categories)
{
    json_builder_begin_object(out);
    add_fields(out, "header", describe_header(), 0);
    add_array(out, "categories", categories, [out](const CategoryDescription &category) {
        add_text(out, "name", category.name);
        add_numbers(out, "types", category.types);
        add_array(out, "forms", category.forms,
                  [out](const FormDescription &form) { add_form(out, form); });
    });
    json_builder_end_object(out);
}

void print_json(const std::vector<CategoryDescription> &categories)
{
    g_autoptr(JsonBuilder) out = json_builder_new();
    add_all(out, categories);
    g_autoptr(JsonNode) root = json_builder_get_root(out);
    g_autofree gchar *text = json_to_string(root, TRUE);
    std::puts(text);
}

std::string names_of(const std::vector<CategoryDescription> &categories)
{
    return joined(categories, ", ",
                  [](const CategoryDescription &category) { return category.name; });
}

// False, with a line that says so, if no category has the name.
bool keep_category(std::vector<CategoryDescription> &categories, const std::string &name)
{
    const auto found = std::ranges::find(categories, name, &CategoryDescription::name);
    if (found == categories.end()) {
        wrong_usage_of("forms", "there is no category '%s', but %s", name.c_str(),
                       names_of(categories).c_str());
        return false;
    }
    categories = {CategoryDescription(*found)};
    return true;
}

void print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void add_all_fields(std::vector<CategoryDescription> &categories)
{
    for (CategoryDescription &category : categories) {
        add_fields(category);
    }
}

}  // namespace

int run_forms(int argc, char **argv)
{
    gboolean as_json = FALSE;
    gboolean as_kaitai = FALSE;
    gboolean as_wireshark = FALSE;
    const GOptionEntry entries[] = {
        {"json", 0, 0, G_OPTION_ARG_NONE, &as_json, "Show JSON, with the fields", nullptr},
        {"kaitai", 0, 0, G_OPTION_ARG_NONE, &as_kaitai,
         "Print a Kaitai Struct description of all forms", nullptr},
        {"wireshark", 0, 0, G_OPTION_ARG_NONE, &as_wireshark,
         "Print a Wireshark dissector of all forms", nullptr},
        {},
    };
    Options options("forms", "[CATEGORY]", summary);
    options.add(entries);
    const auto words = options.parse(argc, argv);
    if (!words) {
        return wrong_usage;
    }
    if (words->size() > 1) {
        return wrong_usage_of("forms", "name one category");
    }
    if (as_json + as_kaitai + as_wireshark > 1) {
        return wrong_usage_of("forms", "say --json, --kaitai or --wireshark, not several");
    }
    auto categories = describe_categories();
    if (as_kaitai != FALSE || as_wireshark != FALSE) {
        if (!words->empty()) {
            return wrong_usage_of("forms", "name no category with --kaitai and --wireshark");
        }
        add_all_fields(categories);
        print(as_kaitai != FALSE ? kaitai_description(categories)
                                 : wireshark_dissector(categories));
        return whole;
    }
    if (!words->empty() && !keep_category(categories, words->front())) {
        return wrong_usage;
    }
    if (as_json == FALSE && words->empty()) {
        print_overview(categories);
        return whole;
    }
    add_all_fields(categories);
    if (as_json != FALSE) {
        print_json(categories);
    } else {
        print_forms(categories.front());
    }
    return whole;
}

}  // namespace mdm::msg
