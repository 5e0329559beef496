// SPDX-License-Identifier: Apache-2.0
//
// docs/wire-format.md agrees with the library and with the tests' description of the categories.
#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/fault.hpp"
#include "support/format.hpp"
#include "support/wire.hpp"

namespace mdm::test::wire_format_test {
namespace {

const std::vector<std::string> &document()
{
    static const std::vector<std::string> lines = [] {
        std::ifstream file(MDM_DOCS_DIR "/wire-format.md");
        std::vector<std::string> read;
        for (std::string line; std::getline(file, line);) {
            read.push_back(line);
        }
        return read;
    }();
    return lines;
}

// The hex blocks of the document by their labels, without the words behind a '#'.
std::map<std::string, Bytes> examples()
{
    const std::string opening = "```hex ";
    std::map<std::string, Bytes> found;
    Bytes *example = nullptr;
    for (const std::string &line : document()) {
        if (line.starts_with(opening)) {
            const auto [place, is_new] = found.try_emplace(line.substr(opening.size()));
            EXPECT_TRUE(is_new) << "two examples: " << line;
            example = &place->second;
        } else if (line.starts_with("```")) {
            example = nullptr;
        } else if (example != nullptr) {
            const std::string text = line.substr(0, line.find('#'));
            const size_t length = text.find_last_not_of(' ') + 1;
            *example = *example + hex(text.substr(0, length));
        }
    }
    return found;
}

// The label of a body begins with the name of its category; other examples are whole messages.
const CategoryFormat *category_of_example(const std::string &label)
{
    const std::string name = label.substr(0, label.find(' '));
    const auto formats = category_formats();
    const auto found = std::ranges::find(formats, name, &CategoryFormat::name);
    return found == formats.end() ? nullptr : &*found;
}

Bytes whole_message(const std::string &label, const Bytes &example)
{
    const CategoryFormat *category = category_of_example(label);
    if (category == nullptr) {
        EXPECT_TRUE(label.starts_with("message")) << "no category has the name of the example";
        return example;
    }
    // A header that is zero but for its length and its type.
    const auto length = static_cast<uint32_t>(40 + example.size());
    return word(length - 8) + Bytes{category->first_type()} + Bytes(35) + example;
}

// A sender's body as the examples show it, with `param` 0.
template <auto category>
mdm_body_t body_without_param(uint32_t type, int32_t data_size, void *data)
{
    mdm_body_t body = headed_body<category>(type, data_size, data);
    (body.*category).param = 0;
    return body;
}

// The sender's messages of the examples whose receivers hold less or more than was sent.
std::map<std::string, Bytes> sent_examples()
{
    const auto sent = [](uint8_t type, const mdm_body_t &body) {
        mdm_msg_t msg = message(type);
        msg.body = body;
        return serialize(msg);
    };
    const auto strings = cells({borrowed("a"), borrowed(""), borrowed("b")});
    mdm_eas_account_t settings{};
    mdm_apn_account_t profile{};
    profile.num0 = 1;
    profile.num1 = 2;
    mdm_phone_res_item_t item = {borrowed("a"), 0, nullptr};
    mdm_phone_res_detail_t detail = {5, 7, nullptr};
    mdm_phone_res_ext_t ext = {nullptr, 0, &detail};
    return {
        {"security strings",
         sent(5, body_without_param<&mdm_body_t::security>(68, 0, strings.get()))},
        {"eas settings", sent(11, body_without_param<&mdm_body_t::eas>(104, 1, &settings))},
        {"apn profile", sent(21, body_without_param<&mdm_body_t::apn>(387, 1, &profile))},
        {"phone_res item", sent(35, body_without_param<&mdm_body_t::phone_res>(400, 1, &item))},
        {"phone_res ext", sent(35, body_without_param<&mdm_body_t::phone_res>(422, 1, &ext))},
    };
}

// What the library sends again of a received message.
Bytes sent_again(const Bytes &bytes)
{
    ipc_fault_t fault{};
    mdm_msg_t *msg = ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), &fault);
    if (msg == nullptr) {
        ADD_FAILURE() << refusal_line(fault);
        return {};
    }
    Bytes again = serialize(*msg);
    ipc_close(msg);
    return again;
}

TEST(WireFormat, ExamplesAreWhatTheLibrarySends)
{
    const auto sent = sent_examples();
    for (const auto &[label, example] : examples()) {
        SCOPED_TRACE(label);
        const Bytes bytes = whole_message(label, example);
        const auto place = sent.find(label);
        EXPECT_EQ(place == sent.end() ? sent_again(bytes) : place->second, bytes);
    }
}

uint32_t number(const std::string &text)
{
    return static_cast<uint32_t>(std::stoul(text));
}

// The entries of a list such as "1, 2" or "roaming, roaming_res".
std::vector<std::string> parts_of(const std::string &list)
{
    static const std::regex part("[^, ]+");
    return {std::sregex_token_iterator(list.begin(), list.end(), part), {}};
}

// The category that the document gives to a message type, and the section about it.
struct Described {
    std::string category;
    std::string section;
};

// A cell with message types and the one that names their categories, as in
// "| 15, 16 | [roaming, roaming_res](#roaming) |".
std::map<uint8_t, Described> described_categories()
{
    static const std::regex pair(R"(\| ([0-9, ]+) \| \[([a-z_, ]+)\]\(#([a-z_-]+)\))");
    std::map<uint8_t, Described> described;
    for (const std::string &line : document()) {
        for (std::sregex_iterator match(line.begin(), line.end(), pair), end; match != end;
             ++match) {
            const auto types = parts_of((*match)[1]);
            const auto names = parts_of((*match)[2]);
            std::string section = (*match)[3];
            std::ranges::replace(section, '-', ' ');
            for (size_t i = 0; i < types.size(); ++i) {
                described[static_cast<uint8_t>(number(types[i]))] = {
                    names[std::min(i, names.size() - 1)], section};
            }
        }
    }
    return described;
}

TEST(WireFormat, TableNamesTheCategoryOfEachMessageType)
{
    auto described = described_categories();
    for (const CategoryFormat &category : category_formats()) {
        for (const uint32_t type : category.types) {
            EXPECT_EQ(described[static_cast<uint8_t>(type)].category, category.name) << type;
        }
    }
    for (const uint8_t type : types_without_category()) {
        EXPECT_FALSE(described.contains(type)) << int{type};
    }
}

TEST(WireFormat, SectionsHaveAnExampleEach)
{
    std::set<std::string> categories;
    for (const auto &[label, example] : examples()) {
        categories.insert(label.substr(0, label.find(' ')));
    }
    std::map<std::string, bool> has_example;
    for (const auto &[type, described] : described_categories()) {
        has_example[described.section] |= categories.contains(described.category);
    }
    for (const auto &[section, has_one] : has_example) {
        EXPECT_TRUE(has_one) << section;
        EXPECT_EQ(std::ranges::count(document(), "### " + section), 1) << section;
    }
}

// The discriminators of each row of a section's first table, but of the last row: "any other".
std::vector<std::vector<uint32_t>> rows_of(const std::string &section)
{
    static const std::regex row("\\| ([0-9, to]+) \\|.*");
    static const std::regex range("([0-9]+)( to ([0-9]+))?");
    std::vector<std::vector<uint32_t>> rows;
    bool is_inside = false;
    for (const std::string &line : document()) {
        std::smatch match;
        if (line.starts_with("#")) {
            is_inside = line == "### " + section;
        } else if (line.starts_with("| any other |")) {
            is_inside = false;
        } else if (is_inside && std::regex_match(line, match, row)) {
            auto &numbers = rows.emplace_back();
            const std::string cell = match[1];
            for (std::sregex_iterator part(cell.begin(), cell.end(), range), end; part != end;
                 ++part) {
                const auto first = number((*part)[1]);
                const auto last = (*part)[3].matched ? number((*part)[3]) : first;
                for (auto next = first; next <= last; ++next) {
                    numbers.push_back(next);
                }
            }
        }
    }
    return rows;
}

TEST(WireFormat, TablesListTheDiscriminatorsOfTheForms)
{
    auto described = described_categories();
    for (const CategoryFormat &category : category_formats()) {
        SCOPED_TRACE(category.name);
        const auto rows = rows_of(described[category.first_type()].section);
        const auto row_of = [&rows](uint32_t discriminator) {
            return std::ranges::find_if(rows,
                                        [&](const auto &numbers) {
                                            return std::ranges::find(numbers, discriminator) !=
                                                   numbers.end();
                                        }) -
                   rows.begin();
        };
        std::map<const Form *, ptrdiff_t> row_of_form;
        std::map<ptrdiff_t, const Form *> form_of_row;
        for (uint32_t discriminator = 0; discriminator < 1000; ++discriminator) {
            const auto row = row_of(discriminator);
            const Form &form = form_of(category, discriminator);
            EXPECT_EQ(row_of_form.try_emplace(&form, row).first->second, row)
                << form.name << ", " << discriminator;
            const Form &first = *form_of_row.try_emplace(row, &form).first->second;
            const bool both_raw = form.payload == Payload::raw && first.payload == Payload::raw;
            EXPECT_TRUE(&first == &form || both_raw)
                << form.name << " has no row of its own, " << discriminator;
        }
        EXPECT_EQ(rows.empty(), category.forms.size() == 1);
        EXPECT_GE(row_of_form.size(), rows.size());
    }
}

}  // namespace
}  // namespace mdm::test::wire_format_test
