// SPDX-License-Identifier: Apache-2.0
//
// The tables of docs/data-size.md are true: each form of each row is filled, sent and received on
// both paths.
#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/bodies.hpp"
#include "support/format.hpp"
#include "support/handlers.hpp"
#include "support/messages.hpp"
#include "support/typed.hpp"
#include "support/wire.hpp"

namespace mdm::test::data_size_test {
namespace {

// The page.

std::vector<std::string> cells_in(const std::string &line)
{
    static const std::regex cell("\\| *([^|]*[^| ])? *(?=\\|)");
    std::vector<std::string> found;
    for (std::sregex_iterator match(line.begin(), line.end(), cell), end; match != end; ++match) {
        found.push_back((*match)[1]);
    }
    return found;
}

// One row, given once for each name in its first cell. The cells are found by their columns.
struct Row {
    std::string name;
    std::map<std::string, std::string> cells;

    const std::string &operator[](const char *column) const { return cells.at(column); }
};

// The rows of the table that this column begins, below a heading.
std::vector<Row> table(const std::string &heading, const std::string &first_column)
{
    std::ifstream file(MDM_DOCS_DIR "/data-size.md");
    std::string line;
    while (std::getline(file, line) && line != heading) {}
    std::vector<std::string> columns;
    std::vector<Row> rows;
    while (std::getline(file, line) && !line.starts_with("#")) {
        const auto cells = cells_in(line);
        if (cells.empty() || cells.front() == first_column) {
            columns = cells;
        } else if (!columns.empty() && columns.front() == first_column) {
            static const std::regex name("`([a-z_.]+)`");
            for (std::sregex_iterator match(cells[0].begin(), cells[0].end(), name), end;
                 match != end; ++match) {
                Row &row = rows.emplace_back(Row{(*match)[1], {}});
                EXPECT_EQ(cells.size(), columns.size()) << row.name;
                for (size_t i = 0; i < std::min(cells.size(), columns.size()); ++i) {
                    row.cells[columns[i]] = cells[i];
                }
            }
        }
    }
    EXPECT_FALSE(rows.empty()) << heading;
    return rows;
}

// What the words of a cell stand for.
struct Words {
    int64_t given = 0;
    int64_t n = 0;
    int64_t payload = 0;
};

int64_t value_of(const std::string &word, const Words &words)
{
    EXPECT_FALSE(word == "n" && words.n == 0) << "no raw bytes and no array";
    EXPECT_FALSE(word == "payload" && words.payload == 0) << "no payload";
    return word == "given"     ? words.given
           : word == "n"       ? words.n
           : word == "payload" ? words.payload
                               : std::stoll(word);
}

// "payload + 12", "n" or "8".
int64_t sum_of(const std::string &cell, const Words &words)
{
    std::istringstream parts(cell);
    std::string part;
    parts >> part;
    int64_t sum = value_of(part, words);
    for (std::string sign; parts >> sign >> part;) {
        EXPECT_TRUE(sign == "+" || sign == "-") << cell;
        sum += (sign == "-" ? -1 : 1) * value_of(part, words);
    }
    return sum;
}

bool has(const std::string &values, const Words &words)
{
    return values == "1 or more" ? words.given >= 1
           : values == "not 0"   ? words.given != 0
           : values == "any"     ? true
                                 : words.given == sum_of(values, words);
}

// What the library does.

size_t data_size_offset(Fields fields)
{
    const auto found = std::ranges::find_if(fields, is_data_size);
    return found == fields.end() ? no_offset : found->offset;
}

// A form with an example of its payload, or the head alone.
struct Subject {
    const CategoryFormat &category;
    const Form &form;
    const TypedForm *typed;  // null for the head alone
    const void *payload;

    uint32_t discriminator() const { return discriminators_of(category, form).front(); }
    mdm_msg_t filled() const
    {
        mdm_msg_t msg{};
        const uint32_t type = discriminator();
        const auto heads = typed_heads();
        const auto head = std::ranges::find(heads, category.first_type(), &TypedHead::first_type);
        EXPECT_TRUE(typed != nullptr ? typed->fill(msg, type, payload) : head->fill(msg, type));
        return msg;
    }
    mdm_msg_t filled(int64_t data_size) const
    {
        mdm_msg_t msg = filled();
        member_at<int32_t>(&msg.body, data_size_offset(category.members)) =
            static_cast<int32_t>(data_size);
        return msg;
    }

    int32_t data_size_in(const mdm_body_t &body) const
    {
        return value_at<int32_t>(&body, data_size_offset(category.members));
    }
    int32_t data_size_on_wire(const Bytes &body) const
    {
        const auto place =
            std::ranges::find_if(category.head, is_data_size) - category.head.begin();
        return static_cast<int32_t>(
            word_at(body, smallest_size(category.head.first(static_cast<size_t>(place)))));
    }
    std::string data_in(const mdm_body_t &body) const
    {
        if (category.data == no_offset) {
            return "in the body";
        }
        const auto *data = value_at<const void *>(&body, category.data);
        return data == sentinel() ? "untouched" : data == nullptr ? "null" : "payload";
    }

    Bytes payload_bytes() const;
    size_t head_size() const { return smallest_size(category.head); }
    int64_t n() const
    {
        const size_t raw = form.payload == Payload::raw ? raw_size : 0;
        return static_cast<int64_t>(form.payload == Payload::array ? array_size : raw);
    }
};

// What became of a message.
struct Outcome {
    mdm_body_t record;     // the sender's, after sending
    int32_t stored = 0;    // its `data_size`
    Bytes body = {};       // on the wire
    int32_t received = 0;  // the receiver's `data_size`
    std::string data;      // and its `data`
};

// Null for a message that is refused.
std::optional<Outcome> sealed(const Subject &subject, mdm_msg_t msg)
{
    uint32_t length = 0;
    uint8_t *buffer = ipc_seal(&msg, &length, nullptr);
    if (buffer == nullptr) {
        return std::nullopt;
    }
    const Bytes bytes(buffer, buffer + length);
    g_free(buffer);
    const Opened received = opened(bytes);
    if (received == nullptr) {
        ADD_FAILURE() << "sealed, but not opened";
        return std::nullopt;
    }
    return Outcome{msg.body,
                   subject.data_size_in(msg.body),
                   {bytes.begin() + header_size, bytes.end()},
                   subject.data_size_in(received->body),
                   subject.data_in(received->body)};
}

Outcome serialized(const Subject &subject, const mdm_msg_t &msg)
{
    Outcome outcome{};
    mdm_body_t before{};
    if (subject.category.data != no_offset) {
        member_at<void *>(&before, subject.category.data) = sentinel();
    }
    const auto look = [&](mdm_body_t &body) {
        outcome.received = subject.data_size_in(body);
        outcome.data = subject.data_in(body);
        if (outcome.data == "untouched") {
            member_at<void *>(&body, subject.category.data) = nullptr;
        }
    };
    const Journey journey = travel(msg.type, msg.body, look, before);
    release_blocks(journey.kept);
    outcome.record = journey.sent;
    outcome.stored = subject.data_size_in(journey.sent);
    outcome.body = journey.bytes;
    return outcome;
}

// The bytes that a receiver reads behind the head, of a message that the typed function has filled.
Bytes Subject::payload_bytes() const
{
    const auto sent = sealed(*this, filled());
    if (!sent) {
        ADD_FAILURE() << "refused";
        return {};
    }
    size_t size = sent->body.size();
    if (!category.is_payload_read) {
        size = std::min(size, head_size() + raw_size);
    } else {
        const Bytes bytes = framed(category.first_type(), sent->body);
        const size_t header = bytes.size() - size;
        while (size > head_size() && opened(cut(bytes, header + size - 1)) != nullptr) {
            --size;
        }
    }
    return {sent->body.begin() + static_cast<ptrdiff_t>(head_size()),
            sent->body.begin() + static_cast<ptrdiff_t>(size)};
}

// A row, one of its forms, and a message with a `data_size`.
struct Case {
    const Subject &subject;
    const Row &row;
    mdm_msg_t msg;
    Words words;

    int64_t number(const char *column) const { return sum_of(row[column], words); }
    bool is_padded() const { return row["Bytes"] == "payload + given"; }
    bool is_as_sent() const { return row["Received"] == "as sent"; }
    bool grows() const { return row["Sent again"] == "grows"; }
};

Bytes behind_head(const Case &one, const Outcome &sent)
{
    return {sent.body.begin() + static_cast<ptrdiff_t>(one.subject.head_size()), sent.body.end()};
}

// Sends on both paths, which agree about everything but an untouched `data`. Sealing refuses too
// many zeros behind a payload.
Outcome sent_on_both_paths(const Case &one, const mdm_msg_t &msg)
{
    Outcome sent = serialized(one.subject, msg);
    const auto guarded = sealed(one.subject, msg);
    const bool is_refused = one.is_padded() && one.subject.data_size_in(msg.body) > MDM_MAX_PADDING;
    EXPECT_NE(guarded.has_value(), is_refused);
    if (guarded) {
        EXPECT_EQ(guarded->body, sent.body);
        EXPECT_EQ(guarded->stored, sent.stored);
        EXPECT_EQ(guarded->received, sent.received);
        EXPECT_EQ(guarded->data, sent.data == "untouched" ? "null" : sent.data);
    }
    return sent;
}

Outcome expect_sent(const Case &one)
{
    Outcome sent = sent_on_both_paths(one, one.msg);
    EXPECT_EQ(sent.stored, one.number("Travels"));
    EXPECT_EQ(one.subject.data_size_on_wire(sent.body), sent.stored);
    EXPECT_EQ(behind_head(one, sent).size(), static_cast<size_t>(one.number("Bytes")));
    return sent;
}

// A message that the typed function has filled.
void expect_filled(const Subject &subject, const Row &row)
{
    const auto payload = static_cast<int64_t>(subject.payload_bytes().size());
    Case one = {subject, row, subject.filled(), {0, subject.n(), payload}};
    one.words.given = subject.data_size_in(one.msg.body);
    EXPECT_EQ(one.words.given, one.number("Set"));
    EXPECT_EQ(expect_sent(one).data, row["Data"]);
}

void expect_payload(const Case &one, const Bytes &payload)
{
    const Outcome first = expect_sent(one);
    EXPECT_EQ(first_bytes(behind_head(one, first), payload.size()), payload);
    EXPECT_EQ(first.received, one.is_as_sent() ? first.stored : one.number("Received"));

    mdm_msg_t msg = one.msg;
    msg.body = first.record;
    const Outcome second = sent_on_both_paths(one, msg);
    const int64_t growth = one.grows() ? one.words.payload : 0;
    EXPECT_EQ(second.stored, first.stored + growth);
    EXPECT_EQ(second.body.size(), first.body.size() + static_cast<size_t>(growth));
    if (growth == 0) {
        EXPECT_EQ(one.row["Sent again"], "same bytes");
        EXPECT_EQ(second.body, first.body);
    }
}

// Only a smaller number of raw bytes or strings can be sealed, and is another payload.
void expect_no_payload(const Case &one, const Bytes &payload)
{
    const auto guarded = sealed(one.subject, one.msg);
    if (guarded) {
        EXPECT_GT(one.words.given, 0);
        EXPECT_LT(behind_head(one, *guarded).size(), payload.size());
    }
    if (one.words.given == 0) {
        EXPECT_TRUE(behind_head(one, serialized(one.subject, one.msg)).empty());
    }
}

void expect_below_0(const Case &one, const Bytes &payload)
{
    const std::string &cell = one.row["Below 0"];
    EXPECT_TRUE(cell == "head alone" || cell == "never" || !payload.empty());
    if (cell == "payload") {
        EXPECT_TRUE(has(one.row["Values"], one.words));
    } else if (cell == "never") {
        mdm_body_t body = one.msg.body;
        const auto counted = static_cast<int32_t>(Handlers(one.msg.type).size(&body));
        const int64_t written = one.grows() ? one.words.payload : 0;  // behind the head
        EXPECT_LT(counted, static_cast<int64_t>(one.subject.head_size()) + written);
    } else {
        EXPECT_TRUE(cell == "zeros" || cell == "head alone");
        const Bytes zeros(cell == "zeros" ? payload.size() : 0);
        EXPECT_EQ(behind_head(one, serialized(one.subject, one.msg)), zeros);
    }
}

// Nothing fills this form, and sealing refuses it. Its receiver finds raw bytes.
void expect_raw_item(const Subject &subject, const Row &row)
{
    for (const char *column : {"Set", "Values", "Below 0", "Travels", "Bytes", "Sent again"}) {
        EXPECT_EQ(row[column], "none");
    }
    const auto size = static_cast<int32_t>(subject.n());
    for (const int32_t given : {1, size, 8}) {
        mdm_msg_t msg = message(MDM_TYPE_PHONE_RES);
        msg.body.res = {subject.discriminator(), 0, 0, given, mdm_unconst(subject.payload)};
        EXPECT_FALSE(sealed(subject, msg));
    }
    const Bytes head = zeroed_head(subject.category, subject.discriminator(), size);
    const Opened received = opened(framed(MDM_TYPE_PHONE_RES, head + Bytes(raw_size, 'x')));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->body.phone_res.data_size, sum_of(row["Received"], {0, size, 0}));
    EXPECT_EQ(subject.data_in(received->body), row["Data"]);
}

void expect_form(const Subject &subject, const Row &row)
{
    if (subject.typed != nullptr && subject.typed->fill == nullptr) {
        expect_raw_item(subject, row);
        return;
    }
    expect_filled(subject, row);
    const Bytes payload = subject.payload_bytes();
    const Words words = {0, subject.n(), static_cast<int64_t>(payload.size())};
    for (const int64_t given :
         std::initializer_list<int64_t>{INT32_MIN, -1, 0, 1, 2, words.n, 8, 65536, 65537}) {
        SCOPED_TRACE(given);
        const Case one = {subject, row, subject.filled(given), {given, words.n, words.payload}};
        const bool reads_beyond = row["Values"] == "n" && given > words.n;
        if (has(row["Values"], one.words)) {
            expect_payload(one, payload);
        } else if (!reads_beyond) {
            expect_no_payload(one, payload);
        }
        if (given < 0) {
            expect_below_0(one, payload);
        }
    }
}

const TypedForm *typed_form(mdm_form_t form)
{
    const auto forms = typed_forms();
    const auto found = std::ranges::find(forms, form, &TypedForm::form);
    return found == forms.end() ? nullptr : &*found;
}

using Subjects = std::multimap<std::string, Subject>;

// The forms of the description that have a `data_size`, by their public names. Two may share one.
Subjects subjects()
{
    Subjects all;
    for (const CategoryFormat &category : category_formats()) {
        if (data_size_offset(category.members) == no_offset) {
            continue;
        }
        for (const Form &form : category.forms) {
            const mdm_form_t number = public_form_of(category, form);
            const TypedForm *typed = typed_form(number);
            all.insert({mdm_form_name(number),
                        {category, form, typed, typed != nullptr ? typed->payload : nullptr}});
        }
    }
    return all;
}

// Each subject has one row, which is true of it.
void expect_table(const std::string &heading, const std::string &first_column,
                  const Subjects &subjects, void (*expect)(const Subject &subject, const Row &row))
{
    std::set<std::string> missing;
    for (const auto &[name, subject] : subjects) {
        missing.insert(name);
    }
    for (const Row &row : table(heading, first_column)) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(missing.erase(row.name), 1U) << "no such name, or a second row";
        const auto [first, last] = subjects.equal_range(row.name);
        std::for_each(first, last, [&](const auto &found) { expect(found.second, row); });
    }
    EXPECT_EQ(missing, std::set<std::string>());
}

TEST(DataSizePage, SaysWhatBecomesOfEachForm)
{
    const Subjects all = subjects();
    for (unsigned form = 0; form < 256; ++form) {
        const std::string name = mdm_form_name(static_cast<mdm_form_t>(form));
        const std::string category = name.substr(0, name.find('.'));
        const bool has_none = name == "none" || category == "admin" || category == "log_manager" ||
                              category == "platform";
        EXPECT_EQ(all.contains(name), !has_none) << name;
    }
    expect_table("## Each form", "Form", all, expect_form);
}

TEST(DataSizePage, SaysWhatBecomesOfTheHeadAlone)
{
    Subjects heads;
    for (const auto &[name, subject] : subjects()) {
        const auto &[category, form, typed, payload] = subject;
        const bool is_only_head =
            category.data == no_offset || category.forms[0].payload == Payload::nothing;
        if (!is_only_head && !form.is_always_there && form.empty_list_padding == 0) {
            heads.insert({category.name, {category, form, nullptr, nullptr}});
        }
    }
    expect_table("## The head alone", "Category", heads, expect_filled);
}

TEST(DataSizePage, SaysWhatBecomesOfTheEmptyList)
{
    Subjects lists;
    for (const auto &[name, subject] : subjects()) {
        const auto &[category, form, typed, payload] = subject;
        if (form.payload == Payload::strings || form.payload == Payload::records) {
            lists.insert({name, {category, form, typed, nullptr}});
        }
    }
    expect_table("## The empty list", "Form", lists, expect_filled);
}

}  // namespace
}  // namespace mdm::test::data_size_test
