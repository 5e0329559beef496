// SPDX-License-Identifier: Apache-2.0
#include "show.hpp"

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/log.h"
#include "support/messages.hpp"

namespace mdm::msg::show_test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;
using Content = std::vector<uint8_t>;

std::string shown(const Content &message, const ShowOptions &options, ShowFaults *faults = nullptr)
{
    char *text = nullptr;
    size_t size = 0;
    std::FILE *out = open_memstream(&text, &size);
    const ShowFaults found = show_message(out, message, options);
    std::fclose(out);
    std::string copy(text, size);
    std::free(text);
    if (faults != nullptr) {
        *faults = found;
    }
    return copy;
}

std::vector<std::string> lines_of(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The line that shows the field.
std::string line_of(const std::string &text, const std::string &field)
{
    for (const std::string &line : lines_of(text)) {
        if (line.find(" " + field + " ") != std::string::npos) {
            return line;
        }
    }
    return "no line of " + field;
}

// The bytes in the column of bytes. Each row has to begin where the one in front of it ends.
Content bytes_in(const std::string &text)
{
    Content bytes;
    for (const std::string &line : lines_of(text)) {
        if (!line.starts_with("0x")) {
            EXPECT_THAT(line, AnyOf(StartsWith("offset  "), HasSubstr(" malformed: ")));
            continue;
        }
        size_t at = line.find(' ');
        EXPECT_EQ(std::stoul(line.substr(2, at), nullptr, 16), bytes.size()) << line;
        const size_t end = line.find("  ", at + 2);
        for (at += 2; at + 2 <= std::min(end, line.size()); at += 3) {
            bytes.push_back(static_cast<uint8_t>(std::stoul(line.substr(at, 2), nullptr, 16)));
        }
    }
    return bytes;
}

class Show : public testing::Test {
protected:
    Show() { mdm_log_set_enabled(0); }  // as the program does
};

void expect_all_bytes(const Content &message, const std::string &what)
{
    SCOPED_TRACE(what);
    EXPECT_EQ(bytes_in(shown(message, {.full = true})), message);
    EXPECT_EQ(bytes_in(shown(message, {.full = true, .any_length = true})), message);
}

TEST_F(Show, HasEachByteInOneRow)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        SCOPED_TRACE(good.name);
        const Content &message = good.bytes;
        expect_all_bytes(message, "whole");
        for (size_t size = 0; size < message.size(); size += 7) {
            expect_all_bytes(test::first_bytes(message, size), "cut");
            expect_all_bytes(test::cut(message, size), "cut, with a true length");
        }
        for (size_t offset = 0; offset < message.size(); offset += 5) {
            Content corrupted = message;
            corrupted[offset] ^= 0x81;
            expect_all_bytes(corrupted, "corrupted");
        }
    }
}

TEST_F(Show, HasALineForEachPart)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        SCOPED_TRACE(good.name);
        size_t parts = 0;
        inspect(good.bytes, [&parts](const ipc_part_t &) { ++parts; });
        ShowFaults faults;
        const auto lines = lines_of(shown(good.bytes, {}, &faults));
        EXPECT_FALSE(faults.fault);
        EXPECT_EQ(lines.size(), parts + 1);
        for (const std::string &line : lines) {
            const bool has_text = line.ends_with('"');
            EXPECT_LE(line.size(), has_text ? 120U : 100U) << line;
            EXPECT_FALSE(line.ends_with(' ')) << line;
        }
    }
}

// A message with secrets in place of all texts and raw bytes. A secret is "*", 2a in hex, because
// no number of the messages has this byte.
class Secrets {
public:
    explicit Secrets(const Content &message)
    {
        inspect(message, [this](const ipc_part_t &part) { parts_.push_back(part); });
        uint32_t length = 0;
        uint8_t *bytes = ipc_compose(answer, this, &length, nullptr);
        EXPECT_NE(bytes, nullptr);
        if (bytes != nullptr) {
            message_.assign(bytes, bytes + length);
        }
        g_free(bytes);
    }

    const Content &message() const { return message_; }

private:
    static bool answer(ipc_part_t *part, void *user_data)
    {
        return static_cast<Secrets *>(user_data)->answer(*part);
    }
    bool answer(ipc_part_t &part)
    {
        static const std::string secret(4096, '*');
        const bool is_end = next_ == parts_.size();
        if (part.kind <= IPC_PART_COUNT) {
            part.number = parts_[next_++].number;
            return true;
        }
        part.bytes = reinterpret_cast<const uint8_t *>(secret.data());
        if (part.kind == IPC_PART_STR) {
            part.length = 3;
        } else if (part.kind == IPC_PART_PADDING) {
            part.length = 9;
        }
        next_ += is_end ? 0 : 1;
        return part.length <= secret.size();
    }

    std::vector<ipc_part_t> parts_;
    size_t next_ = 0;
    Content message_;
};

void expect_no_secret(const Content &message, const std::string &what)
{
    SCOPED_TRACE(what);
    for (const bool full : {false, true}) {
        for (const bool any_length : {false, true}) {
            const std::string text =
                shown(message, {.full = full, .hide_texts = true, .any_length = any_length});
            for (const char *secret : {"*", " 2a", "2a2a"}) {
                EXPECT_EQ(text.find(secret), std::string::npos) << text;
            }
        }
    }
}

TEST_F(Show, HidesTextsAndRawBytes)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        SCOPED_TRACE(good.name);
        const Content message = Secrets(good.bytes).message();
        ASSERT_GE(std::ranges::count(message, '*'), 9 + 2 + 3);
        ASSERT_THAT(shown(message, {}), HasSubstr("2a 2a"));
        const bool is_length_alike = (message.size() - 8) % 256 == 0x2a;  // and no secret
        if (!is_length_alike) {
            expect_no_secret(message, "whole");
        }
        for (size_t size = 0; size < message.size(); size += 5) {
            if (!is_length_alike) {
                expect_no_secret(test::first_bytes(message, size), "cut");
            }
            if ((size - 8) % 256 != 0x2a) {
                expect_no_secret(test::cut(message, size), "cut, with a true length");
            }
        }
    }
}

// A wifi pair: `ssid`, `value`, then padding.
Content pair(const std::string &ssid, const Content &padding = {})
{
    Content body = {0x31, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0};
    for (const std::string &text : {ssid, std::string()}) {
        Content count(4);
        test::put_word(count, 0, static_cast<uint32_t>(text.size()));
        body.insert(body.end(), count.begin(), count.end());
        body.insert(body.end(), text.begin(), text.end());
    }
    body.insert(body.end(), padding.begin(), padding.end());
    return test::framed(7, body);
}

TEST_F(Show, NamesTheCategoryAndTheForm)
{
    const std::string text = shown(pair("home", {0}), {});
    EXPECT_THAT(line_of(text, "header.type"), testing::EndsWith("  7 (wifi)"));
    EXPECT_THAT(line_of(text, "wifi.type"), testing::EndsWith("  305 (wifi.pair)"));
    EXPECT_THAT(line_of(text, "header.hdr_word1"), testing::EndsWith("  286331153 (0x11111111)"));
    EXPECT_THAT(line_of(text, "wifi.pair.ssid"), testing::EndsWith("  4 \"home\""));
    EXPECT_THAT(line_of(text, "padding"), testing::EndsWith("  1 byte, all zero"));
    EXPECT_THAT(shown(pair("", {1, 'a'}), {}), HasSubstr("  2 bytes \"\\x01a\""));
}

TEST_F(Show, ShortensLongTextsBetweenCharacters)
{
    std::string text;
    for (int i = 0; i < 30; ++i) {
        text += "\u00e9";
    }
    EXPECT_THAT(line_of(shown(pair(text), {}), "wifi.pair.ssid"),
                testing::EndsWith("60 \"" + text.substr(0, 40) + "\"…"));
    EXPECT_THAT(line_of(shown(pair("a" + text), {}), "wifi.pair.ssid"),
                testing::EndsWith("61 \"a" + text.substr(0, 38) + "\"…"));
    EXPECT_THAT(line_of(shown(pair(text), {.full = true}), "wifi.pair.ssid"),
                testing::EndsWith("60 \"" + text + "\""));
    const std::string no_utf8(60, '\x80');
    EXPECT_THAT(line_of(shown(pair(no_utf8), {}), "wifi.pair.ssid"), testing::EndsWith("\"…"));
    EXPECT_THAT(line_of(shown(pair(text), {}), "wifi.pair.ssid"), HasSubstr(" … 56 more  "));
}

TEST_F(Show, CannotBeUsedAgainstATerminal)
{
    const std::string text = shown(pair("\x1b[2J\x07\u202e\u202c\xff"), {.full = true});
    EXPECT_THAT(text, HasSubstr(R"(12 "\x1b[2J\x07\u{202e}\u{202c}\xff")"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(Show, HasColoursIfItShould)
{
    const std::string colored = shown(pair("home"), {.color = true});
    EXPECT_THAT(colored, HasSubstr("\x1b[32m4 \"home\"\x1b[0m"));
    const std::regex escape("\x1b\\[[0-9;]*m");
    EXPECT_EQ(std::regex_replace(colored, escape, ""), shown(pair("home"), {}));
}

TEST_F(Show, MarksTheFaultInFrontOfTheRest)
{
    Content message = pair("home");
    test::put_word(message, 52, 400);  // the count of the text
    ShowFaults faults;
    const auto lines = lines_of(shown(message, {}, &faults));
    ASSERT_TRUE(faults.fault);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_THAT(lines[lines.size() - 3], HasSubstr("  count     wifi.pair.ssid    400"));
    EXPECT_EQ(lines[lines.size() - 2], "        ^ malformed: wifi.pair.ssid at offset 56 needs "
                                       "400 bytes, 8 are left");
    EXPECT_THAT(lines.back(), StartsWith("0x0038  68 6f 6d 65 00 00 00 00  rest "));
    EXPECT_THAT(lines.back(), HasSubstr("8 bytes, not decoded"));
}

TEST_F(Show, ShowsTheTrueLengthFieldIfAnyLengthIsRight)
{
    const Content message = pair("home");
    const Content cut = test::first_bytes(message, message.size() - 2);
    ShowFaults faults;
    const std::string text = shown(cut, {.any_length = true}, &faults);
    ASSERT_TRUE(faults.fault && faults.other);
    EXPECT_STREQ(faults.fault->path, "header.length");
    EXPECT_STREQ(faults.other->path, "wifi.pair.value");
    const auto lines = lines_of(text);
    EXPECT_THAT(lines[1], StartsWith("0x0000  38 00 00 00  "));
    EXPECT_THAT(lines[1], testing::EndsWith("  56 (+ 8 = 64 bytes)"));
    EXPECT_EQ(lines[2], "        ^ malformed: header.length announces a message of 64 bytes, 62 "
                        "are there");
    EXPECT_THAT(line_of(text, "wifi.pair.ssid"), testing::EndsWith("4 \"home\""));
    EXPECT_THAT(lines[lines.size() - 2], HasSubstr("^ malformed: wifi.pair.value at offset 60"));
    EXPECT_TRUE(is_length_alone(test::first_bytes(message, 5), *faults.fault));
    EXPECT_FALSE(is_length_alone(test::first_bytes(message, 4), *faults.fault));
    EXPECT_EQ(shown(message, {.any_length = true}), shown(message, {}));
}

TEST_F(Show, ShowsAMessageOfNoBytes)
{
    ShowFaults faults;
    EXPECT_THAT(shown({}, {}, &faults),
                HasSubstr("v malformed: header.length at offset 0 needs 4"));
    EXPECT_TRUE(faults.fault);
}

}  // namespace
}  // namespace mdm::msg::show_test
