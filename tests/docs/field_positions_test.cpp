// SPDX-License-Identifier: Apache-2.0
//
// The texts of the fields in the headers name the positions that the fields have on the wire.
#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/format.hpp"
#include "support/wire.hpp"

namespace mdm::test::field_positions_test {
namespace {

// The first line of the text of each field of a record, by the name of the field.
using Texts = std::map<std::string, std::string>;

// The records of a header by their names.
std::map<std::string, Texts> records_in(const std::string &header)
{
    static const std::regex end(R"(\} (\w+);)");
    static const std::regex field(R"( .*\b(\w+); +/\*\*< (.*))");
    std::map<std::string, Texts> records;
    Texts texts;
    std::ifstream file(MDM_DOCS_DIR "/../include/mdm/" + header);
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (line.starts_with("typedef ")) {
            texts.clear();
        } else if (line.starts_with('}') && std::regex_match(line, match, end)) {
            records[match.str(1)] = std::exchange(texts, {});
        } else if (line.starts_with(' ') && std::regex_match(line, match, field)) {
            texts[match.str(1)] = match.str(2);
        }
    }
    return records;
}

std::string name_of(const Field &field)
{
    const std::string path = field.path;
    return path.substr(path.rfind('.') + 1);
}

// The positions of a field, by the forms that send it. A field that never travels has none.
using Positions = std::map<std::string, size_t>;

// The positions of a record's fields.
struct Record {
    std::set<std::string> forms;
    std::map<std::string, Positions> fields;

    void add(const std::string &form, Fields members, Fields sent, size_t fields_before = 0)
    {
        forms.insert(form);
        for (const Field &member : members) {
            fields[name_of(member)];
        }
        for (const Field &field : sent) {
            fields[name_of(field)][form] = ++fields_before;
        }
    }
};

std::string ordinal(size_t number)
{
    const std::vector<std::string> endings = {"th", "st", "nd", "rd"};
    const size_t last = number / 10 == 1 ? 0 : number % 10;
    return std::to_string(number) + endings[last < endings.size() ? last : 0];
}

// How the text of a field begins: "2nd." or, if the forms of its record differ, "Account, list:
// 9th. Settings: 1st."
std::string beginning(const Positions &positions, size_t forms)
{
    std::vector<std::pair<size_t, std::string>> sentences;
    for (const auto &[form, position] : positions) {
        const auto same = std::ranges::find_if(
            sentences, [at = position](const auto &sentence) { return sentence.first == at; });
        if (same == sentences.end()) {
            sentences.emplace_back(position, form);
        } else {
            same->second += ", " + form;
        }
    }
    if (sentences.size() == 1 && positions.size() == forms) {
        return ordinal(sentences.front().first) + ".";
    }
    std::string text;
    for (auto &[position, names] : sentences) {
        names.front() = static_cast<char>(std::toupper(names.front()));
        text += (text.empty() ? "" : " ") + names + ": " + ordinal(position) + ".";
    }
    return text.empty() ? "Never sent" : text;
}

// The text begins like this, and then names no further position.
void expect_beginning(const std::string &text, const std::string &expected)
{
    static const std::regex position("[0-9](st|nd|rd|th)\\b");
    EXPECT_TRUE(text.starts_with(expected) &&
                !std::regex_search(text.substr(expected.size()), position))
        << '"' << text << "\" should begin with \"" << expected << '"';
}

void expect_positions(const Texts &texts, const Record &record)
{
    for (const auto &[name, positions] : record.fields) {
        const auto text = texts.find(name);
        if (text != texts.end()) {  // not a field of a head that a macro declares
            SCOPED_TRACE(name);
            expect_beginning(text->second, beginning(positions, record.forms.size()));
        }
    }
}

// The name of the record that has these fields and no others.
std::string record_with(Fields members, const std::map<std::string, Texts> &records)
{
    std::set<std::string> names;
    for (const Field &member : members) {
        names.insert(name_of(member));
    }
    for (const auto &[record, texts] : records) {
        if (std::ranges::equal(names, texts, {}, {}, &Texts::value_type::first)) {
            return record;
        }
    }
    ADD_FAILURE() << "no record has just " << *names.begin() << " and the fields beside it";
    return "";
}

// The positions in all records of a category.
std::map<std::string, Record> positions_in(const CategoryFormat &category,
                                           const std::map<std::string, Texts> &records)
{
    std::map<std::string, Record> positions;
    const auto payload = [&](const std::string &form, Fields members, Fields sent) {
        positions[record_with(members, records)].add(form, members, sent);
    };
    Record &body = positions[std::string("mdm_") + category.name + "_info_t"];
    for (const Form &form : category.forms) {
        if (form.fields.empty() || form.name == std::string_view("keys")) {
            continue;  // without a record: keys are numbers
        }
        if (form.payload == Payload::body) {
            body.add(form.name, category.members, category.head);
            body.add(form.name, {}, form.fields, category.head.size());
            continue;
        }
        payload(form.payload == Payload::records ? "list" : form.name, form.members, form.fields);
        for (const Field &field : form.fields) {
            if (field.nested == nullptr) {
                continue;
            }
            for (const Alternative &alternative : field.nested->alternatives) {
                payload("", field.nested->members, alternative.fields);
            }
        }
    }
    if (body.forms.empty()) {
        body.add("", category.members, category.head);
    }
    return positions;
}

TEST(FieldPositions, InBodiesAreThoseOfTheWireFormat)
{
    for (const CategoryFormat &category : category_formats()) {
        // There is none for a category that has raw bytes or the head alone.
        const auto records = records_in(std::string("body/") + category.name + ".h");
        if (!records.empty()) {
            for (const auto &[name, record] : positions_in(category, records)) {
                SCOPED_TRACE(name);
                expect_positions(records.at(name), record);
            }
        }
    }
}

TEST(FieldPositions, InTheHeaderAreThoseOfAMessage)
{
    using Change = void (*)(mdm_msg_t &);
    const std::map<std::string, Change> changes = {
        {"type", [](mdm_msg_t &msg) { msg.type = MDM_TYPE_LOCATION_2; }},
        {"hdr_byte", [](mdm_msg_t &msg) { ++msg.hdr_byte; }},
        {"hdr_word1", [](mdm_msg_t &msg) { ++msg.hdr_word1; }},
        {"hdr_word2", [](mdm_msg_t &msg) { ++msg.hdr_word2; }},
        {"hdr_text", [](mdm_msg_t &msg) { msg.hdr_text = borrowed("text"); }},
        {"hdr_word3", [](mdm_msg_t &msg) { ++msg.hdr_word3; }},
        {"hdr_word4", [](mdm_msg_t &msg) { ++msg.hdr_word4; }},
        {"hdr_word5", [](mdm_msg_t &msg) { ++msg.hdr_word5; }},
        {"hdr_word6", [](mdm_msg_t &msg) { ++msg.hdr_word6; }},
        {"hdr_word7", [](mdm_msg_t &msg) { ++msg.hdr_word7; }},
        {"body", [](mdm_msg_t &msg) { ++msg.body.location.type; }},
    };
    constexpr int length_size = 4;
    mdm_msg_t msg{};
    msg.type = MDM_TYPE_LOCATION;
    const Bytes bytes = serialize(msg);
    std::map<ptrdiff_t, std::string> fields;  // by the first byte that a change changes
    for (const auto &[name, change] : changes) {
        mdm_msg_t changed = msg;
        change(changed);
        const Bytes changed_bytes = serialize(changed);
        const auto [at, changed_at] = std::mismatch(bytes.begin() + length_size, bytes.end(),
                                                    changed_bytes.begin() + length_size);
        fields[at - bytes.begin()] = name;
    }
    ASSERT_EQ(fields.size(), changes.size());
    size_t position = 0;
    Record header;
    header.forms = {""};
    for (const auto &[offset, name] : fields) {
        header.fields[name][""] = ++position;
    }
    header.fields["hdr_aux"];
    const Texts texts = records_in("message.h").at("mdm_msg_t");
    EXPECT_EQ(texts.size(), header.fields.size());
    expect_positions(texts, header);
}

}  // namespace
}  // namespace mdm::test::field_positions_test
