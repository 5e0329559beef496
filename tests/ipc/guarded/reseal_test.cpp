// SPDX-License-Identifier: Apache-2.0
//
// What can be opened and not be sealed again is what docs/security.md and mdm/guarded.h list: every
// form of every category is opened with every kind of content and sealed as it is.
#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test {
namespace {

// The documents.

struct Row {
    std::string category;
    std::string form;
    std::string opened_with;
    std::string path;

    friend bool operator==(const Row &, const Row &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Row &row)
    {
        return out << row.category << " | " << row.form << " | " << row.opened_with << " | "
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
            for (std::string *cell : {&row.category, &row.form, &row.opened_with, &row.path}) {
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

// What a message is opened with.

struct Content {
    enum class Texts { whole, no_list, empty_list, no_text, some_empty, empty };

    int32_t data_size;
    Texts texts;
};
using Texts = Content::Texts;

using Holds = bool (*)(const Content &content);

const std::map<std::string, Holds> &conditions()
{
    static const std::map<std::string, Holds> all = {
        {"a `data_size` below 0", [](const Content &it) { return it.data_size < 0; }},
        {"a `data_size` above 0", [](const Content &it) { return it.data_size > 0; }},
        {"a `data_size` above 65536", [](const Content &it) { return it.data_size > 65536; }},
        {"a `data_size` above 0 that is not 8",
         [](const Content &it) { return it.data_size > 0 && it.data_size != 8; }},
        {"an empty list", [](const Content &it) { return it.texts == Texts::empty_list; }},
        {"a list without a text",
         [](const Content &it) {
             return it.texts == Texts::empty_list || it.texts == Texts::no_text;
         }},
        {"an empty text in the list",
         [](const Content &it) {
             return it.texts == Texts::no_text || it.texts == Texts::some_empty;
         }},
        {"an empty text", [](const Content &it) { return it.texts == Texts::empty; }},
        {"anything", [](const Content & /*it*/) { return true; }},
    };
    return all;
}

// The path of the fault that the documents announce; none for what is sealed.
std::string expected_path(const std::string &category, const std::string &form,
                          const Content &content)
{
    std::set<std::string> paths;
    for (const Row &row : rows()) {
        if (row.category == category && (row.form == form || row.form == "any") &&
            conditions().at(row.opened_with)(content)) {
            paths.insert(row.path);
        }
    }
    EXPECT_LE(paths.size(), 1U) << category << ", " << form;
    return paths.empty() ? "" : *paths.begin();
}

// The forms, as bytes that were made without the library.

struct Payload {
    Texts texts;
    Bytes bytes;
};

using MakePayloads = std::function<std::vector<Payload>(int32_t data_size)>;
using Announces = bool (*)(int32_t data_size);

struct Form {
    std::string category;
    std::vector<uint8_t> message_types;
    std::string name;  // as the documents have it, or any other
    std::vector<uint32_t> types;
    Announces announces;
    MakePayloads payloads;
};

bool by_sign(int32_t data_size)
{
    return data_size >= 1;
}

bool by_zero(int32_t data_size)
{
    return data_size != 0;
}

bool always(int32_t /*data_size*/)
{
    return true;
}

bool never(int32_t /*data_size*/)
{
    return false;
}

Bytes words(size_t count)
{
    Bytes bytes(count * 4, 7);
    return bytes;
}

Bytes texts(std::initializer_list<const char *> all)
{
    Bytes bytes;
    for (const char *text : all) {
        bytes = bytes + str(text);
    }
    return bytes;
}

Bytes empty_texts(size_t count)
{
    return Bytes(count * 4);
}

// A record with texts, and the same with none.
MakePayloads record(size_t numbers, size_t text_count)
{
    return [=](int32_t /*data_size*/) {
        Bytes whole = words(numbers);
        for (size_t i = 0; i < text_count; ++i) {
            whole = whole + str("text");
        }
        return std::vector<Payload>{{Texts::whole, whole},
                                    {Texts::whole, words(numbers) + empty_texts(text_count)}};
    };
}

std::vector<Payload> raw(int32_t data_size)
{
    // One that is negative, or too long to be tried, is announced and not there.
    const bool is_there = data_size >= 0 && data_size <= 65537;
    return {{Texts::whole, Bytes(is_there ? static_cast<size_t>(data_size) : 0, 'r')}};
}

std::vector<Payload> nothing(int32_t /*data_size*/)
{
    return {{Texts::whole, {}}};
}

std::vector<Payload> text_list(int32_t /*data_size*/)
{
    return {{Texts::whole, word(2) + texts({"a", "bc"})},
            {Texts::empty_list, word(0)},
            {Texts::no_text, word(2) + texts({"", ""})},
            {Texts::some_empty, word(3) + texts({"", "a", "bc"})},
            {Texts::some_empty, word(3) + texts({"a", "", "bc"})},
            {Texts::some_empty, word(3) + texts({"a", "bc", ""})}};
}

MakePayloads list_of_records(size_t numbers, size_t text_count)
{
    return [=](int32_t /*data_size*/) {
        const Bytes element = words(numbers) + empty_texts(text_count);
        return std::vector<Payload>{{Texts::whole, word(1) + element},
                                    {Texts::whole, word(2) + element + element},
                                    {Texts::empty_list, word(0)},
                                    {Texts::empty_list, word(0xFFFFFFFF)}};
    };
}

std::vector<Payload> items(int32_t /*data_size*/)
{
    return {{Texts::whole, word(2) + str("a") + word(1) + str("b") + word(2)},
            {Texts::empty_list, word(0)},
            {Texts::no_text, word(1) + str("") + word(1)},
            {Texts::some_empty, word(2) + str("a") + word(1) + str("") + word(2)}};
}

std::vector<Payload> controls(int32_t /*data_size*/)
{
    return {{Texts::whole, word(2) + word(7) + word(0) + word(8) + word(1) + str("a")},
            {Texts::empty_list, word(0)},
            {Texts::some_empty, word(1) + word(7) + word(2) + texts({"a", ""})}};
}

std::vector<Payload> networks(int32_t /*data_size*/)
{
    std::vector<Payload> all;
    for (const uint32_t kind : {0U, 10U}) {
        all.push_back({Texts::whole, str("a") + word(kind)});
    }
    for (const uint32_t kind : {1U, 8U, 9U}) {
        all.push_back({Texts::whole, str("a") + word(kind) + word(7)});
    }
    for (const uint32_t kind : {2U, 3U, 4U}) {
        all.push_back({Texts::whole, str("") + word(kind) + str("")});
    }
    for (const uint32_t kind : {5U, 7U}) {
        all.push_back(
            {Texts::whole, str("") + word(kind) + empty_texts(3) + word(7) + texts({"a", ""})});
    }
    all.push_back({Texts::whole, str("") + word(6) + empty_texts(7)});
    return all;
}

// As many texts as `data_size` says.
std::vector<Payload> array(int32_t data_size)
{
    const bool is_there = data_size >= 0 && data_size <= 65537;
    return {{Texts::whole, empty_texts(is_there ? static_cast<size_t>(data_size) : 0)}};
}

std::vector<Payload> one_text(int32_t /*data_size*/)
{
    return {{Texts::whole, str("text")}, {Texts::empty, str("")}};
}

std::vector<Form> single_lists()
{
    std::vector<Form> forms;
    const std::vector<std::pair<const char *, uint8_t>> categories = {
        {"browser", 23},  {"date_time", 25}, {"remote", 27},    {"vpn", 29},
        {"firewall", 31}, {"res", 33},       {"enterprise", 37}};
    for (const auto &[name, type] : categories) {
        const std::vector<uint8_t> message_types = {type, static_cast<uint8_t>(type + 1)};
        forms.push_back({name, message_types, "raw bytes", {0, 1, 100}, by_sign, raw});
    }
    return forms;
}

std::vector<Form> headed_forms()
{
    std::vector<Form> forms = {
        {"pwd", {3, 4}, "policy", {40}, by_sign, record(9, 2)},
        {"pwd", {3, 4}, "raw bytes", {0, 39, 41}, by_sign, raw},
        {"security", {5, 6}, "item", {56, 76}, by_sign, record(1, 3)},
        {"security", {5, 6}, "68, 69", {68, 69}, by_sign, text_list},
        {"security", {5, 6}, "70, 71", {70, 71}, by_sign, list_of_records(4, 22)},
        {"security", {5, 6}, "raw bytes", {0, 55, 57, 67, 72, 75, 77}, by_sign, raw},
        {"wifi",
         {7, 8},
         "pairs, 88, 319",
         {305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339},
         by_sign,
         record(0, 2)},
        {"wifi", {7, 8}, "pairs, 88, 319", {88}, by_sign, record(0, 5)},
        {"wifi", {7, 8}, "pairs, 88, 319", {319}, by_sign, record(0, 3)},
        {"wifi", {7, 8}, "lists", {290, 344, 346, 348, 349, 350, 352}, by_sign, text_list},
        {"wifi", {7, 8}, "network", {345}, by_sign, networks},
        {"wifi", {7, 8}, "raw bytes", {0, 87, 89, 306, 318, 320, 347, 351}, by_sign, raw},
        {"bluetooth",
         {9, 10},
         "lists",
         {91, 220, 221, 222, 223, 224, 225, 227, 230, 231, 233, 234, 235, 237},
         by_sign,
         text_list},
        {"bluetooth", {9, 10}, "raw bytes", {0, 90, 92, 226, 232, 238}, by_sign, raw},
        {"eas", {11, 12}, "account", {98}, by_zero, record(6, 9)},
        {"eas", {11, 12}, "104", {104}, by_zero, record(0, 3)},
        {"eas", {11, 12}, "106", {106}, by_zero, list_of_records(6, 9)},
        {"eas", {11, 12}, "value", {0, 97, 99, 105, 107}, by_zero, record(1, 1)},
        {"roaming", {15}, "record", {0, 1, 100}, always, one_text},
        {"roaming_res", {16}, "head", {0, 1, 100}, never, nothing},
        {"misc", {17, 18}, "array", {122}, by_zero, array},
        {"misc", {17, 18}, "nothing", {123}, never, nothing},
        {"misc", {17, 18}, "text", {124, 125, 126}, by_zero, record(0, 1)},
        {"misc", {17, 18}, "127, 128", {127, 128}, always, text_list},
        {"misc", {17, 18}, "records", {281, 283, 288, 289}, by_zero, record(0, 2)},
        {"misc", {17, 18}, "raw bytes", {0, 121, 129, 282, 290}, by_zero, raw},
        {"apn", {21, 22}, "387, 393", {387, 393}, by_zero, record(2, 13)},
        {"apn", {21, 22}, "389, 390, 391", {389, 390, 391}, by_zero, list_of_records(2, 13)},
        {"apn", {21, 22}, "raw bytes", {0, 386, 388, 392, 394}, by_zero, raw},
        {"phone_res", {35, 36}, "item", {394, 421, 423, 438, 441, 452, 455}, by_sign, record(0, 2)},
        {"phone_res",
         {35, 36},
         "ext",
         {422},
         by_sign,
         [](int32_t /*data_size*/) {
             return std::vector<Payload>{{Texts::whole, str("a") + words(2) + str("b")},
                                         {Texts::whole, str("") + words(2) + str("")}};
         }},
        {"phone_res", {35, 36}, "439, 440", {439, 440}, by_sign, raw},
        {"phone_res", {35, 36}, "raw bytes", {0, 393, 450, 451, 456}, by_sign, raw},
        {"email", {39, 40}, "account", {359}, by_zero, record(7, 9)},
        {"email", {39, 40}, "settings", {362}, by_zero, record(0, 3)},
        {"email", {39, 40}, "363", {363}, by_zero, list_of_records(9, 13)},
        {"email", {39, 40}, "value", {0, 358, 360, 361, 364}, by_zero, record(1, 1)},
        {"kiosk", {45, 46}, "612, 614", {612, 614}, by_zero, one_text},
        {"kiosk", {45, 46}, "618, 619, 621", {618, 621}, by_zero, list_of_records(1, 0)},
        {"kiosk", {45, 46}, "618, 619, 621", {619}, by_zero, list_of_records(2, 0)},
        {"kiosk", {45, 46}, "raw bytes", {0, 611, 613, 620, 622}, by_zero, raw},
        {"container", {47, 48}, "item", {628}, by_zero, record(1, 2)},
        {"container", {47, 48}, "short item", {629}, by_zero, record(1, 1)},
        {"container", {47, 48}, "raw bytes", {630, 631, 632}, by_zero, raw},
        {"container", {47, 48}, "nothing", {0, 627, 633}, never, nothing},
        {"location", {49, 50}, "head", {0, 1}, never, nothing},
    };
    std::ranges::copy(single_lists(), std::back_inserter(forms));
    return forms;
}

std::vector<Form> app_forms()
{
    return {
        {"app", {13}, "4, 15", {4, 15}, by_sign, text_list},
        {"app", {13}, "140, 141", {140, 141}, by_sign, record(2, 0)},
        {"app", {13}, "pair", {184, 185}, by_sign, record(0, 2)},
        {"app", {13}, "raw bytes", {0, 3, 5, 139, 142, 183, 186}, by_sign, raw},
        {"app_res",
         {14},
         "package names",
         {3, 155, 159, 162, 168, 169, 170, 171, 176, 177},
         by_sign,
         text_list},
        {"app_res", {14}, "140, 141, 142", {140, 141, 142}, by_sign, items},
        {"app_res", {14}, "172, 173, 174, 175", {172, 173, 174, 175}, by_sign, controls},
        {"app_res", {14}, "raw bytes", {0, 2, 4, 139, 143, 178}, by_sign, raw},
    };
}

// Types without a category, and bodies without a `data_size` that counts.
bool is_plain(const std::string &name)
{
    constexpr std::array prefixes = {"admin", "log-manager", "platform", "app-cb", "misc-cb"};
    return std::ranges::any_of(prefixes,
                               [&name](const char *prefix) { return name.starts_with(prefix); });
}

constexpr std::array<int32_t, 14> sizes = {
    std::numeric_limits<int32_t>::min(), -65537, -15, -12, -1, 0, 1, 7, 8, 9, 12, 65536, 65537,
    std::numeric_limits<int32_t>::max()};

// The path of the fault with which an opened message is not sealed; empty if it is.
std::string path_of_sealing(mdm_msg_t &msg)
{
    uint32_t length = 0;
    ipc_fault_t fault{};
    uint8_t *bytes = ipc_seal(&msg, &length, &fault);
    if (bytes == nullptr) {
        return fault.path;
    }
    MDM_AUTO_CLOSE mdm_msg_t *again = ipc_open(bytes, length, nullptr);
    EXPECT_NE(again, nullptr);
    g_free(bytes);
    return "";
}

// Whether it was opened at all.
bool expect_documented(const Form &form, uint8_t message_type, const Content &content,
                       const Bytes &body)
{
    const Bytes bytes = framed(message_type, body);
    MDM_AUTO_CLOSE mdm_msg_t *msg =
        ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    if (msg == nullptr) {
        return false;
    }
    EXPECT_EQ(path_of_sealing(*msg), expected_path(form.category, form.name, content))
        << form.category << ", " << form.name << ", data_size " << content.data_size << ", content "
        << static_cast<int>(content.texts);
    return true;
}

using MakeHead = Bytes (*)(uint32_t type, int32_t data_size);

void expect_documented(const Form &form, MakeHead head)
{
    const LogRecorder log(MDM_LOG_NONE);
    size_t opened = 0;
    for (const int32_t data_size : sizes) {
        const std::vector<Payload> payloads =
            form.announces(data_size) ? form.payloads(data_size) : nothing(data_size);
        for (const Payload &payload : payloads) {
            for (const uint8_t message_type : form.message_types) {
                for (const uint32_t type : form.types) {
                    opened += static_cast<size_t>(
                        expect_documented(form, message_type, {data_size, payload.texts},
                                          head(type, data_size) + payload.bytes));
                }
            }
        }
    }
    EXPECT_GE(opened, 9 * form.types.size()) << form.category << ", " << form.name;
}

Bytes app_head_bytes(uint32_t type, int32_t data_size)
{
    return word(type) + word(7) + str("pkg") + word(static_cast<uint32_t>(data_size));
}

TEST(Reseal, OfEveryFormSucceedsUnlessTheDocumentSaysOtherwise)
{
    for (const Form &form : headed_forms()) {
        expect_documented(form, head_bytes);
    }
    for (const Form &form : app_forms()) {
        expect_documented(form, app_head_bytes);
    }
}

TEST(Reseal, OfABodyWithoutASizeAlwaysSucceeds)
{
    size_t count = 0;
    for (const GoodMessage &good : good_messages()) {
        if (is_plain(good.name)) {
            MDM_AUTO_CLOSE mdm_msg_t *msg =
                ipc_open(good.bytes.data(), static_cast<uint32_t>(good.bytes.size()), nullptr);
            ASSERT_NE(msg, nullptr);
            EXPECT_EQ(path_of_sealing(*msg), "") << good.name;
            ++count;
        }
    }
    EXPECT_EQ(count, 24U);
}

TEST(Reseal, OfATypeWithoutACategoryNeverSucceeds)
{
    for (const uint8_t type : hex("13 14 29 2C 37 3C 3E 40 4B 50")) {
        const Bytes bytes = framed(type, {});
        MDM_AUTO_CLOSE mdm_msg_t *msg =
            ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
        ASSERT_NE(msg, nullptr);
        EXPECT_EQ(path_of_sealing(*msg), expected_path("none", "any", {0, Texts::whole}));
    }
}

// A row that nothing reaches would be untrue.
TEST(Reseal, EveryRowOfTheDocumentIsAboutAForm)
{
    std::set<std::string> forms = {"none, any"};
    for (const std::vector<Form> &all : {headed_forms(), app_forms()}) {
        for (const Form &form : all) {
            forms.insert(form.category + ", " + form.name);
            forms.insert(form.category + ", any");
        }
    }
    EXPECT_EQ(rows().size(), 32U);
    for (const Row &row : rows()) {
        EXPECT_TRUE(forms.contains(row.category + ", " + row.form)) << row;
        EXPECT_TRUE(conditions().contains(row.opened_with)) << row;
    }
}

TEST(Reseal, TheHeaderListsWhatTheDocumentLists)
{
    EXPECT_EQ(documented(MDM_DOCS_DIR "/../include/mdm/guarded.h"), rows());
}

}  // namespace
}  // namespace mdm::test
