// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json-glib/json-glib.h>

#include "command.hpp"
#include "describe.hpp"
#include "languages.hpp"
#include "printed.hpp"
#include "support/format.hpp"

namespace mdm::msg::forms_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::SizeIs;

// The descriptions against the wire format as the tests know it.

const CategoryDescription &description_of(const test::CategoryFormat &category)
{
    static const std::vector<CategoryDescription> all = [] {
        auto categories = describe_categories();
        std::ranges::for_each(categories, [](auto &one) { add_fields(one); });
        return categories;
    }();
    return *std::ranges::find(all, category.name, &CategoryDescription::name);
}

const FormDescription &form_with(const CategoryDescription &category, uint32_t discriminator)
{
    const auto listed = std::ranges::find_if(category.forms, [&](const FormDescription &form) {
        return std::ranges::count(form.discriminators.numbers, discriminator) != 0;
    });
    return listed != category.forms.end()
               ? *listed
               : *std::ranges::find_if(category.forms, [](const FormDescription &form) {
                     return form.discriminators.others;
                 });
}

// The library writes "-" as "_", and has one form for what the tests tell apart by "data-between".
std::string name_of(const test::CategoryFormat &category, const test::Form &form)
{
    std::string name = form.name;
    name = name == "data-between" ? "data" : name;
    std::ranges::replace(name, '-', '_');
    return std::string(category.name) + '.' + name;
}

// A field's path and kind; signs do not matter.
std::string line_of(const FieldDescription &field)
{
    constexpr const char *kinds[] = {"byte", "word", "word", "count", "text", "bytes"};
    return std::string(static_cast<size_t>(field.depth), ' ') + field.path + ' ' +
           kinds[field.kind];
}

std::vector<std::string> lines_of(const FieldDescriptions &fields)
{
    std::vector<std::string> lines;
    std::ranges::transform(fields, std::back_inserter(lines), line_of);
    return lines;
}

FieldDescription expected(const char *path, ipc_part_kind_t kind, int depth = 0)
{
    return {path, kind, depth};
}

// A record that a field selects is left out.
void append(FieldDescriptions &all, test::Fields fields, int depth)
{
    for (const test::Field &field : fields) {
        switch (field.type) {
        case test::Type::byte:
        case test::Type::low_byte:
            all.push_back(expected(field.path, IPC_PART_U8, depth));
            break;
        case test::Type::word:
            all.push_back(expected(field.path, IPC_PART_U32, depth));
            break;
        case test::Type::text:
            all.push_back(expected(field.path, IPC_PART_STR, depth));
            break;
        case test::Type::strings:
            all.push_back(expected(field.path, IPC_PART_COUNT, depth));
            all.push_back(expected(field.path, IPC_PART_STR, depth + 1));
            break;
        case test::Type::record:
            if (field.nested->selector == test::no_offset) {
                append(all, field.nested->alternatives.front().fields, depth);
            }
            break;
        }
    }
}

FieldDescriptions expected_fields(const test::CategoryFormat &category, const test::Form &form)
{
    FieldDescriptions all;
    append(all, category.head, 0);
    if (!category.is_payload_read) {
        return all;
    }
    switch (form.payload) {
    case test::Payload::nothing:
        break;
    case test::Payload::body:
    case test::Payload::record:
        append(all, form.fields, 0);
        break;
    case test::Payload::records:
        all.push_back(expected(form.path, IPC_PART_COUNT));
        append(all, form.fields, 1);
        break;
    case test::Payload::strings:
        all.push_back(expected(form.path, IPC_PART_COUNT));
        all.push_back(expected(form.path, IPC_PART_STR, 1));
        break;
    case test::Payload::text:
        all.push_back(expected(form.path, IPC_PART_STR));
        break;
    case test::Payload::array:
        all.push_back(expected(form.path, IPC_PART_STR, 1));
        break;
    case test::Payload::raw:
        all.push_back(expected(form.path, IPC_PART_BYTES));
        break;
    }
    return all;
}

// The record that a field selects; null if there is none.
const test::NestedRecord *selected_record(const test::Form &form)
{
    for (const test::Field &field : form.fields) {
        if (field.nested != nullptr && field.nested->selector != test::no_offset) {
            return field.nested;
        }
    }
    return nullptr;
}

class FormsOf : public testing::TestWithParam<test::CategoryFormat> {};

TEST_P(FormsOf, HaveTheirMessageTypes)
{
    EXPECT_THAT(description_of(GetParam()).types,
                ElementsAreArray(GetParam().types.begin(), GetParam().types.end()));
}

TEST_P(FormsOf, HaveTheirDiscriminators)
{
    const CategoryDescription &category = description_of(GetParam());
    for (uint32_t discriminator = 0; discriminator < 1000; ++discriminator) {
        ASSERT_EQ(form_with(category, discriminator).name,
                  name_of(GetParam(), test::form_of(GetParam(), discriminator)))
            << discriminator;
    }
    for (const test::Form &form : GetParam().forms) {
        for (const uint32_t discriminator : test::discriminators_of(GetParam(), form)) {
            EXPECT_EQ(form_with(category, discriminator).name, name_of(GetParam(), form));
        }
    }
}

TEST_P(FormsOf, HaveTheirFields)
{
    for (const test::Form &form : GetParam().forms) {
        const uint32_t discriminator = test::discriminators_of(GetParam(), form).front();
        EXPECT_EQ(lines_of(form_with(description_of(GetParam()), discriminator).fields),
                  lines_of(expected_fields(GetParam(), form)));
    }
}

TEST_P(FormsOf, HaveTheirVariants)
{
    for (const test::Form &form : GetParam().forms) {
        const uint32_t discriminator = test::discriminators_of(GetParam(), form).front();
        const auto &variants = form_with(description_of(GetParam()), discriminator).variants;
        const test::NestedRecord *record = selected_record(form);
        if (record == nullptr) {
            EXPECT_THAT(variants, SizeIs(0)) << form.name;
            continue;
        }
        ASSERT_THAT(variants, SizeIs(record->alternatives.size() + 1));
        for (size_t i = 0; i < record->alternatives.size(); ++i) {
            const test::Alternative &alternative = record->alternatives[i];
            FieldDescriptions fields;
            append(fields, alternative.fields, 0);
            EXPECT_THAT(variants[i].values.numbers, ElementsAreArray(alternative.selectors.begin(),
                                                                     alternative.selectors.end()));
            EXPECT_EQ(lines_of(variants[i].fields), lines_of(fields));
        }
        EXPECT_TRUE(variants.back().values.others);
        EXPECT_THAT(variants.back().fields, SizeIs(0));
    }
}

TEST_P(FormsOf, SayWhichSizeAnnouncesAPayload)
{
    for (const test::Form &form : GetParam().forms) {
        if (form.payload == test::Payload::nothing || !GetParam().is_payload_read ||
            GetParam().data_size == test::no_offset) {
            continue;
        }
        const auto is_announced = [&form](int32_t data_size) {
            return test::is_announced(GetParam(), form, data_size);
        };
        const PayloadFollows follows = is_announced(0)    ? PayloadFollows::always
                                       : is_announced(-1) ? PayloadFollows::if_not_zero
                                                          : PayloadFollows::if_positive;
        const uint32_t discriminator = test::discriminators_of(GetParam(), form).front();
        EXPECT_EQ(form_with(description_of(GetParam()), discriminator).payload, follows)
            << form.name;
    }
}

INSTANTIATE_TEST_SUITE_P(, FormsOf,
                         testing::ValuesIn(test::category_formats().begin(),
                                           test::category_formats().end()),
                         [](const auto &category) { return category.param.name; });

TEST(Forms, AreThoseOfAllCategories)
{
    EXPECT_THAT(describe_categories(), SizeIs(test::category_formats().size()));
    const auto without = test::types_without_category();
    EXPECT_THAT(types_without_category(), ElementsAreArray(without.begin(), without.end()));
}

TEST(Forms, FoldNumbers)
{
    EXPECT_EQ((Selectors{{1}}.text()), "1");
    EXPECT_EQ((Selectors{{1, 2, 4, 5, 6, 9}}.text()), "1, 2, 4 to 6, 9");
    EXPECT_EQ((Selectors{{}, true}.text()), "any other");
}

// What the command prints.

Printed run(const std::vector<std::string> &words)
{
    return printed_by(run_forms, words);
}

TEST(FormsCommand, ShowsEveryField)
{
    const std::string json = run({"--json"}).out;
    for (const test::CategoryFormat &category : test::category_formats()) {
        const std::string text = run({category.name}).out;
        for (const test::Form &form : category.forms) {
            EXPECT_THAT(text, HasSubstr('\n' + name_of(category, form) + ": "));
            for (const FieldDescription &field : expected_fields(category, form)) {
                EXPECT_THAT(text, HasSubstr("  " + field.path + ' '));
                EXPECT_THAT(json, HasSubstr("\"path\" : \"" + field.path + '"'));
            }
        }
    }
}

TEST(FormsCommand, ShowsListsAndVariants)
{
    EXPECT_THAT(run({"app_res"}).out, HasSubstr("  app_res.controls                   list of {\n"
                                                "    app_res.control.client_id        i32\n"
                                                "    app_res.control.pkg_list         list of str\n"
                                                "  }\n"));
    EXPECT_THAT(run({"misc"}).out,
                HasSubstr("  misc.array                         list of str, without a count\n"));
    const std::string wifi = run({"wifi"}).out;
    EXPECT_THAT(wifi, HasSubstr("  wifi.network.detail_kind           i32\n"
                                "  if wifi.network.detail_kind is 1, 8, 9:\n"
                                "    wifi.network.detail.w0           u32\n"
                                "  if wifi.network.detail_kind is 2 to 4:\n"
                                "    wifi.network.detail.w0           str\n"));
    EXPECT_THAT(wifi, HasSubstr("  if wifi.network.detail_kind is any other: nothing\n"));
    EXPECT_THAT(wifi,
                HasSubstr("\n  wifi.data_size                     i32, the payload follows if "
                          "it is above 0\n"));
}

TEST(FormsCommand, ShowsAnOverview)
{
    const Printed printed = run({});
    EXPECT_EQ(printed.status, whole);
    EXPECT_THAT(printed.out,
                HasSubstr("\nphone_res: message types 35, 36\n"
                          "  phone_res.item         type 394 to 421, 423 to 438, 441 to 449, 452 "
                          "to 455\n"
                          "  phone_res.ext          type 422\n"
                          "  phone_res.raw_item     type 439, 440\n"
                          "  phone_res.data         any other type\n"));
    EXPECT_THAT(printed.out, HasSubstr("\nroaming: message type 15\n"
                                       "  roaming.record         any type\n"));
    EXPECT_THAT(printed.out, HasSubstr("\n  header.hdr_word6                   u32\n"));
}

// The strings of a member of each object in an array.
std::vector<std::string> members(JsonObject *object, const char *array, const char *member)
{
    std::vector<std::string> all;
    JsonArray *elements = json_object_get_array_member(object, array);
    for (guint i = 0; i < json_array_get_length(elements); ++i) {
        all.emplace_back(
            json_object_get_string_member(json_array_get_object_element(elements, i), member));
    }
    return all;
}

TEST(FormsCommand, ShowsJson)
{
    g_autoptr(JsonParser) parser = json_parser_new();
    ASSERT_TRUE(
        json_parser_load_from_data(parser, run({"--json", "wifi"}).out.c_str(), -1, nullptr));
    JsonObject *root = json_node_get_object(json_parser_get_root(parser));
    EXPECT_THAT(members(root, "categories", "name"), ElementsAre("wifi"));
    JsonObject *wifi =
        json_array_get_object_element(json_object_get_array_member(root, "categories"), 0);
    EXPECT_THAT(members(wifi, "forms", "name"),
                ElementsAre("wifi.dhcp", "wifi.ssids", "wifi.pair", "wifi.triple", "wifi.network",
                            "wifi.data"));
    JsonObject *network =
        json_array_get_object_element(json_object_get_array_member(wifi, "forms"), 4);
    EXPECT_STREQ(json_object_get_string_member(network, "selector"), "wifi.network.detail_kind");
    EXPECT_STREQ(json_object_get_string_member(network, "payload_if_data_size"), "above 0");
    EXPECT_THAT(members(network, "fields", "kind"), ElementsAre("u32", "u32", "i32", "str", "i32"));
    EXPECT_EQ(json_array_get_length(json_object_get_array_member(network, "variants")), 5);
}

// The whole texts are compared with the files of format/.
TEST(FormsCommand, DescribesAllFormsToOtherPrograms)
{
    EXPECT_THAT(run({"--kaitai"}).out, HasSubstr("\n  id: mdm\n"));
    EXPECT_THAT(run({"--wireshark"}).out, HasSubstr("\nlocal header = {\n"));
    for (const char *option : {"--kaitai", "--wireshark"}) {
        EXPECT_EQ(run({option}).status, whole);
        const Printed printed = run({option, "wifi"});
        EXPECT_EQ(printed.status, wrong_usage);
        EXPECT_EQ(printed.out, "");
        EXPECT_THAT(printed.err, HasSubstr("name no category with --kaitai and --wireshark"));
    }
    for (const char *option : {"--kaitai", "--json"}) {
        EXPECT_THAT(run({option, "--wireshark"}).err,
                    HasSubstr("say --json, --kaitai or --wireshark, not several"));
    }
}

// Forms that the library does not have.

CategoryDescription category_with(const FieldDescriptions &fields,
                                  const std::vector<Variant> &variants = {})
{
    return {"badge",
            {90},
            {{"badge.item", MDM_FORM_NONE, {}, fields, PayloadFollows::always, variants}}};
}

TEST(OtherPrograms, AreToldOnlyFormsThatTheDescriptionsHaveWordsFor)
{
    const FieldDescription word = {"badge.number", IPC_PART_U32, 0};
    const FieldDescription list = {"badge.names", IPC_PART_COUNT, 0};
    const auto check = [](const CategoryDescription &category) { check_forms({&category, 1}); };
    check(category_with({word, list, {"badge.names", IPC_PART_STR, 1}}, {{{{1}}, {word}}}));
    EXPECT_DEATH(check(category_with({list, {"badge.names", IPC_PART_U32, 1}})),
                 "badge.names: it is a list of something else than texts and records");
    EXPECT_DEATH(check(category_with({list, {"badge.name.data", IPC_PART_BYTES, 1}})),
                 "badge.names: the size of an element is unknown");
    EXPECT_DEATH(check(category_with({word, {"badge.number", IPC_PART_I32, 0}})),
                 "badge.number: it has a sign in some forms");
    EXPECT_DEATH(check(category_with({word}, {{{{}, true}, {word}}})),
                 "badge.item: a number that is not listed selects fields");
}

TEST(FormsCommand, RefusesAnUnknownCategory)
{
    const Printed printed = run({"wlan"});
    EXPECT_EQ(printed.status, wrong_usage);
    EXPECT_EQ(printed.out, "");
    EXPECT_THAT(printed.err, testing::StartsWith("mdm-msg: there is no category 'wlan', but admin, "
                                                 "pwd, security, wifi, "));
    EXPECT_EQ(run({"wifi", "eas"}).status, wrong_usage);
}

}  // namespace
}  // namespace mdm::msg::forms_test
