// SPDX-License-Identifier: Apache-2.0
//
// docs/security.md and mdm/guarded.h list all messages that can be opened and not be sealed again:
// every form of every category is opened with every kind of content and sealed as it is.
#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/format.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test::guarded_reseal_test {
namespace {

// The documents.

struct Row {
    std::string category;
    std::string types;
    std::string opened_with;
    std::string path;

    friend bool operator==(const Row &, const Row &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Row &row)
    {
        return out << row.category << " | " << row.types << " | " << row.opened_with << " | "
                   << row.path;
    }
};

std::string trimmed(const std::string &text)
{
    const size_t begin = text.find_first_not_of(" `");
    const size_t end = text.find_last_not_of(" `");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

// The rows below the table's own head, in a document or a comment.
std::vector<Row> documented(const std::string &document)
{
    std::ifstream file(document);
    EXPECT_TRUE(file.is_open()) << document;
    std::vector<Row> rows;
    bool is_inside = false;
    for (std::string line; std::getline(file, line);) {
        const size_t begin = line.find("| ");
        if (line.find("| path of the fault") != std::string::npos) {
            is_inside = true;
        } else if (is_inside && line.find("|--") == std::string::npos) {
            if (begin == std::string::npos) {
                break;
            }
            std::istringstream cells(line.substr(begin + 1));
            Row row;
            for (std::string *cell : {&row.category, &row.types, &row.opened_with, &row.path}) {
                std::getline(cells, *cell, '|');
                *cell = trimmed(*cell);
            }
            rows.push_back(row);
        }
    }
    return rows;
}

std::vector<Row> rows()
{
    static const std::vector<Row> all = documented(MDM_DOCS_DIR "/security.md");
    return all;
}

// A message that is opened.
struct Case {
    std::string category;
    const Form *form;  // null without a category
    uint32_t discriminator;
    int32_t data_size;
    Content content;

    friend std::ostream &operator<<(std::ostream &out, const Case &it)
    {
        return out << it.category << ", " << it.discriminator << ", data_size " << it.data_size
                   << ", content " << static_cast<int>(it.content);
    }
};

using Holds = bool (*)(const Case &it);

const std::map<std::string, Holds> &conditions()
{
    static const std::map<std::string, Holds> all = {
        {"a `data_size` below 0", [](const Case &it) { return it.data_size < 0; }},
        {"a `data_size` above 0", [](const Case &it) { return it.data_size > 0; }},
        {"a `data_size` above 65536", [](const Case &it) { return it.data_size > 65536; }},
        {"a `data_size` above 0 that is not 8",
         [](const Case &it) { return it.data_size > 0 && it.data_size != 8; }},
        {"an empty list", [](const Case &it) { return it.content == Content::none; }},
        {"a list without a text",
         [](const Case &it) {
             return it.content == Content::none || it.content == Content::empty;
         }},
        {"an empty text in the list",
         [](const Case &it) {
             return it.content != Content::none && it.content != Content::whole;
         }},
        {"an empty text", [](const Case &it) { return it.content == Content::empty; }},
        {"anything", [](const Case & /*it*/) { return true; }},
    };
    return all;
}

// Whether an entry of the column `type` is about the message.
bool selects(const std::string &type, const Case &it)
{
    if (type == "any") {
        return true;
    }
    if (type == "raw bytes") {
        return it.form->payload == Payload::raw && !it.form->is_raw_record;
    }
    if (type == "lists" || type == "package names") {
        return it.form->payload == Payload::strings;
    }
    return type == std::to_string(it.discriminator) || type == it.form->name + std::string("s");
}

std::vector<std::string> entries_of(const std::string &types)
{
    std::istringstream in(types);
    std::vector<std::string> all;
    for (std::string type; std::getline(in >> std::ws, type, ',');) {
        all.push_back(type);
    }
    return all;
}

// The paths of the fault that the document announces, for each entry of the column `type`.
class Document {
public:
    Document()
    {
        for (const Row &row : rows()) {
            EXPECT_TRUE(conditions().contains(row.opened_with)) << row;
            for (const std::string &type : entries_of(row.types)) {
                entries_.push_back({{row.category, type, row.opened_with, row.path}});
            }
        }
    }

    // Empty for a message that is sealed.
    std::string path_of(const Case &it)
    {
        std::set<std::string> paths;
        for (Entry &entry : entries_) {
            const Row &row = entry.row;
            if (row.category == it.category && selects(row.types, it) &&
                conditions().at(row.opened_with)(it)) {
                entry.is_reached = true;
                paths.insert(row.path);
            }
        }
        EXPECT_LE(paths.size(), 1U) << it;
        return paths.empty() ? "" : *paths.begin();
    }

    // An entry that no message reaches would be untrue.
    void expect_all_reached() const
    {
        for (const Entry &entry : entries_) {
            EXPECT_TRUE(entry.is_reached) << entry.row;
        }
    }

private:
    struct Entry {
        Row row;  // with one entry of `types`
        bool is_reached = false;
    };
    std::vector<Entry> entries_;
};

// Opened and sealed.

// The path of the fault when an opened message is sealed; empty if there is no fault.
std::string path_of_sealing(mdm_msg_t &msg)
{
    uint32_t length = 0;
    ipc_fault_t fault{};
    uint8_t *bytes = ipc_seal(&msg, &length, &fault);
    if (bytes == nullptr) {
        return fault.path;
    }
    EXPECT_NE(opened({bytes, bytes + length}), nullptr);
    g_free(bytes);
    return "";
}

constexpr std::array<int32_t, 14> sizes = {
    std::numeric_limits<int32_t>::min(), -65537, -15, -12, -1, 0, 1, 7, 8, 9, 12, 65536, 65537,
    std::numeric_limits<int32_t>::max()};
constexpr int32_t longest_payload = 65537;

// A good message with every message type of its category, every discriminator of its form and
// every `data_size`.
class Variations {
public:
    Variations(const CategoryFormat &category, const GoodMessage &good, Document &document)
        : category_(category), form_(*good.form), good_(good), document_(document)
    {
        const auto size = std::ranges::find_if(
            good.steps, [](const Step &step) { return step.path.ends_with(".data_size"); });
        if (category.data != no_offset) {
            size_offset_ = size->offset;
        }
    }

    void expect_documented() const
    {
        if (category_.data == no_offset) {
            return expect_documented(good_.bytes, 0);
        }
        const auto size = static_cast<int32_t>(word_at(good_.bytes, size_offset_));
        if (!is_announced(category_, form_, size)) {  // a head alone
            return;
        }
        for (const int32_t data_size : sizes) {
            const Bytes bytes = with_size(data_size);
            expect_documented(bytes, data_size);
            const bool is_list =
                form_.payload == Payload::strings || form_.payload == Payload::records;
            if (is_list && good_.content == Content::none && !form_.is_in_param) {
                Bytes negative = bytes;
                put_word(negative, size_offset_ + 4, 0xFFFFFFFF);
                expect_documented(negative, data_size);
            }
        }
    }

private:
    bool is_as_long_as_its_size() const
    {
        return form_.payload == Payload::raw || form_.payload == Payload::array;
    }

    // A payload that is negative, or too long to be tried, is not there.
    static bool may_be_there(int32_t data_size)
    {
        return data_size >= 0 && data_size <= longest_payload;
    }

    Bytes with_size(int32_t data_size) const
    {
        Bytes bytes = good_.bytes;
        put_word(bytes, size_offset_, static_cast<uint32_t>(data_size));
        if (is_as_long_as_its_size()) {
            const bool is_raw = form_.payload == Payload::raw;
            const auto count = static_cast<size_t>(may_be_there(data_size) ? data_size : 0);
            bytes.resize(size_offset_ + 4);
            bytes.resize(bytes.size() + count * (is_raw ? 1 : 4), is_raw ? 'r' : 0);
            correct_length(bytes);
        }
        return bytes;
    }

    void expect_documented(Bytes bytes, int32_t data_size) const
    {
        const bool is_there = is_announced(category_, form_, data_size);
        const bool is_whole = !is_there || !is_as_long_as_its_size() || may_be_there(data_size) ||
                              !category_.is_payload_read;
        for (const uint32_t message_type : category_.types) {
            bytes[type_offset] = static_cast<uint8_t>(message_type);
            for (const uint32_t discriminator : discriminators_of(category_, form_)) {
                put_word(bytes, header_size, discriminator);
                const Case it = {category_.name, &form_, discriminator, data_size,
                                 is_there ? good_.content : Content::whole};
                const Opened msg = opened(bytes);
                ASSERT_EQ(msg != nullptr, is_whole) << it;
                if (msg != nullptr) {
                    EXPECT_EQ(path_of_sealing(*msg), document_.path_of(it)) << it;
                }
            }
        }
    }

    const CategoryFormat &category_;
    const Form &form_;
    const GoodMessage &good_;
    Document &document_;
    size_t size_offset_ = 0;
};

void expect_documented_without_category(Document &document)
{
    for (const uint8_t type : types_without_category()) {
        const Opened msg = opened(framed(type, {}));
        ASSERT_NE(msg, nullptr);
        const Case it = {"none", nullptr, 0, 0, Content::none};
        EXPECT_EQ(path_of_sealing(*msg), document.path_of(it)) << int{type};
    }
}

TEST(Reseal, OfEveryFormSucceedsUnlessTheDocumentSaysOtherwise)
{
    const LogRecorder log(MDM_LOG_NONE);
    Document document;
    expect_documented_without_category(document);
    for (const GoodMessage &good : good_messages()) {
        const CategoryFormat *category = format_of(good.bytes[type_offset]);
        if (category != nullptr) {
            SCOPED_TRACE(good.name);
            Variations(*category, good, document).expect_documented();
        }
    }
    document.expect_all_reached();
}

TEST(Reseal, TheHeaderListsWhatTheDocumentLists)
{
    EXPECT_EQ(documented(MDM_DOCS_DIR "/../include/mdm/guarded.h"), rows());
}

}  // namespace
}  // namespace mdm::test::guarded_reseal_test
