// SPDX-License-Identifier: Apache-2.0
#include "html.hpp"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command.hpp"
#include "parts.hpp"
#include "printed.hpp"
#include "support/messages.hpp"

namespace mdm::msg::html_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Buffer = std::vector<uint8_t>;

Page page_of(const Buffer &bytes, bool hides_texts = false, const std::string &name = "FILE")
{
    return page_of(Input{name, bytes, ""}, hides_texts);
}

// What stands between two texts.
std::string between(const std::string &html, const std::string &left, const std::string &right)
{
    const size_t begin = html.find(left);
    if (begin == std::string::npos) {
        return "";
    }
    const size_t behind = begin + left.size();
    return html.substr(behind, html.find(right, behind) - behind);
}

// The page without its style and its script.
std::string shown(const Page &page)
{
    return between(page.html, "<body>", "<script>");
}

std::string bytes_section(const std::string &html)
{
    return between(html, "Bytes</h2>", "</section>");
}

std::string fields_section(const std::string &html)
{
    return between(html, "Fields</h2>", "</section>");
}

std::string without_tags(const std::string &html)
{
    std::string text;
    bool is_tag = false;
    for (const char letter : html) {
        is_tag = is_tag || letter == '<';
        if (!is_tag) {
            text += letter;
        }
        is_tag = is_tag && letter != '>';
    }
    return text;
}

// All that stands between two texts.
std::vector<std::string> found(const std::string &html, const std::string &left,
                               const std::string &right)
{
    std::vector<std::string> matches;
    for (size_t at = html.find(left); at != std::string::npos; at = html.find(left, at + 1)) {
        const size_t begin = at + left.size();
        matches.push_back(html.substr(begin, html.find(right, begin) - begin));
    }
    return matches;
}

size_t times(const std::string &html, const std::string &text)
{
    return found(html, text, "").size();
}

void append_row(Buffer &bytes, const std::string &row)
{
    const size_t digits = row.find(' ');
    EXPECT_EQ(std::stoul(row.substr(0, digits), nullptr, 16), bytes.size());
    std::istringstream columns(row.substr(digits, 1 + 16 * 3));
    for (std::string byte; columns >> byte;) {
        if (byte != "??") {
            bytes.push_back(static_cast<uint8_t>(std::stoul(byte, nullptr, 16)));
        }
    }
}

// The bytes that the rows show. Each row has to begin with the number of bytes in front of it.
Buffer bytes_in_rows(const std::string &html)
{
    const std::string section = bytes_section(html);
    Buffer bytes;
    size_t begin = section.find("</pre>");  // behind the ruler
    for (begin = section.find("<pre", begin); begin != std::string::npos;
         begin = section.find("<pre", begin + 1)) {
        const std::string block =
            without_tags(section.substr(begin, section.find("</pre>", begin) - begin));
        std::istringstream lines(block);
        for (std::string row; std::getline(lines, row);) {
            append_row(bytes, row);
        }
    }
    return bytes;
}

size_t parts_of(const Buffer &bytes)
{
    size_t number = 0;
    inspect(bytes, [&](const ipc_part_t &) { ++number; });
    return number;
}

// A list of names of networks: its count, and the bytes behind it.
Buffer with_list(uint32_t count, std::string_view elements)
{
    Buffer body(16);
    test::put_word(body, 0, MDM_WIFI_SSIDS_344);
    test::put_word(body, 8, 1);
    test::put_word(body, 12, count);
    body.insert(body.end(), elements.begin(), elements.end());
    return test::framed(MDM_TYPE_WIFI, body);
}

std::string element(std::string_view text)
{
    std::string bytes(4, '\0');
    bytes[0] = static_cast<char>(text.size() & 0xFF);
    bytes[1] = static_cast<char>(text.size() >> 8);
    return bytes.append(text);
}

Buffer with_text(std::string_view text)
{
    return with_list(1, element(text));
}

Buffer with_raw_bytes(uint32_t size)
{
    Buffer body(12);
    test::put_word(body, 0, 100);
    test::put_word(body, 8, size);
    body.resize(body.size() + size, 'x');
    return test::framed(MDM_TYPE_RES, body);
}

void expect_consistent(const Buffer &bytes)
{
    const std::string html = page_of(bytes).html;
    EXPECT_EQ(bytes_in_rows(html), bytes);
    const auto runs = found(bytes_section(html), "id=\"b", "\"");
    const auto fields = found(fields_section(html), "id=\"p", "\"");
    EXPECT_EQ(runs.size(), parts_of(bytes));
    EXPECT_EQ(fields, runs);
    EXPECT_EQ(found(fields_section(html), "href=\"#b", "\""), runs);
    EXPECT_EQ(std::set<std::string>(runs.begin(), runs.end()).size(), runs.size());
}

TEST(HtmlPage, ShowsEachByteOnceAndAFieldForEachPart)
{
    for (const auto &message : test::good_messages()) {
        SCOPED_TRACE(message.name);
        expect_consistent(message.bytes);
        EXPECT_FALSE(page_of(message.bytes).fault);
    }
}

TEST(HtmlPage, ShowsEachByteOfABrokenMessageAndMarksTheFault)
{
    for (const auto &message : test::good_messages()) {
        if (message.content != test::Content::full) {
            continue;
        }
        SCOPED_TRACE(message.name);
        for (size_t size = 0; size < message.bytes.size(); size += 3) {
            const Buffer bytes = test::cut(message.bytes, size);
            const Page page = page_of(bytes);
            if (!page.fault) {
                continue;
            }
            expect_consistent(bytes);
            EXPECT_EQ(times(page.html, "id=\"fault\""), 1U);
            const std::string byte =
                between(page.html, R"(<mark id="fault" title="the fault">)", "</mark>");
            const size_t at = page.fault->offset;
            EXPECT_EQ(byte, at < size ? hex(Bytes(bytes).subspan(at, 1)) : "??");
            EXPECT_THAT(fields_section(page.html), HasSubstr(sentence(*page.fault)));
        }
    }
}

TEST(HtmlPage, SaysWhatTheMessageIs)
{
    const auto titled = [](const Buffer &bytes) {
        const std::string html = page_of(bytes).html;
        std::string heading = between(html, "<h1>", "</h1>");
        EXPECT_EQ(between(html, "<title>", "</title>"), heading + ": FILE");
        return heading;
    };
    const Buffer bytes = with_text("office");
    EXPECT_EQ(titled(bytes), "wifi.ssids");
    EXPECT_EQ(titled(test::cut(bytes, 42)), "wifi");
    EXPECT_EQ(titled({1, 2, 3}), "no message type");
    EXPECT_EQ(titled(test::framed(80, {})), "no category");
    EXPECT_THAT(shown(page_of(bytes)), HasSubstr("message type 7, discriminator 344, 66 bytes"));
}

TEST(HtmlPage, NestsRecordsAndLists)
{
    const auto messages = test::good_messages();
    const auto controls = std::find_if(messages.begin(), messages.end(), [](const auto &message) {
        return message.name == "app-res-controls";
    });
    ASSERT_NE(controls, messages.end());
    const std::string tree = fields_section(page_of(controls->bytes).html);
    std::vector<std::string> groups;
    for (const std::string &summary : found(tree, "<summary", "</summary>")) {
        groups.push_back(between(summary, "<b>", "</b>"));
    }
    EXPECT_THAT(groups, testing::ElementsAre("header", "app_res", "controls", "control[0]",
                                             "pkg_list", "control[1]", "pkg_list"));
    EXPECT_THAT(found(tree, "<i>list</i> <em>", "</em>"),
                testing::ElementsAre("2 elements", "3 elements", "3 elements"));
    EXPECT_EQ(times(tree, "<details"), times(tree, "</details>"));
    EXPECT_EQ(times(tree, "<ul"), times(tree, "</ul>"));
}

TEST(HtmlPage, CountsTheElementsInFrontOfAFault)
{
    const Buffer bytes = with_list(3, element("") + element("office").substr(0, 9));
    EXPECT_THAT(shown(page_of(bytes)), HasSubstr("<em>2 of 3 elements</em>"));
}

TEST(HtmlPage, EscapesTexts)
{
    // The second of the direction marks ends what the first begins.
    const std::string html = shown(page_of(with_text("</code>\"'&<b>\x1b\u202e\u202c")));
    EXPECT_THAT(html, HasSubstr("<code>&quot;&lt;/code&gt;\\&quot;&#39;&amp;&lt;b&gt;"
                                "\\x1b\\u{202e}\\u{202c}&quot;</code>"));
    EXPECT_THAT(bytes_section(html), HasSubstr("&quot;"));
    EXPECT_THAT(html, Not(HasSubstr("\x1b")));
    EXPECT_THAT(html, Not(HasSubstr("\xe2\x80")));
}

TEST(HtmlPage, EscapesTheNameAndTheWarning)
{
    const Buffer bytes = with_text("");
    const Page page = page_of(Input{"<i>\n&", bytes, "<u>\x1b"}, false);
    EXPECT_EQ(between(page.html, "<title>", "</title>"), "wifi.ssids: &lt;i&gt;\\n&amp;");
    EXPECT_EQ(between(page.html, "<bdi>", "</bdi>"), "&lt;i&gt;\\n&amp;");
    EXPECT_EQ(between(page.html, "<p class=\"note\">", "</p>"), "&lt;u&gt;\\x1b");
}

// Changes the bytes that the page may not depend on.
Buffer with_other_texts(const Buffer &bytes)
{
    Buffer other = bytes;
    inspect(bytes, [&](const ipc_part_t &part) {
        for (uint32_t index = 0; index < part.length; ++index) {
            other[part.offset + part.size - part.length + index] ^= 0x15;
        }
    });
    return other;
}

TEST(HtmlPage, HidesTextsAndRawBytes)
{
    for (const auto &message : test::good_messages()) {
        SCOPED_TRACE(message.name);
        const Buffer other = with_other_texts(message.bytes);
        EXPECT_EQ(page_of(other, true).html, page_of(message.bytes, true).html);
    }
    for (const Buffer &bytes : {with_raw_bytes(3000), with_text(std::string(3000, 'x'))}) {
        EXPECT_EQ(page_of(with_other_texts(bytes), true).html, page_of(bytes, true).html);
        EXPECT_NE(page_of(with_other_texts(bytes)).html, page_of(bytes).html);
    }
}

TEST(HtmlPage, HidesWhatStandsBehindAFault)
{
    for (const auto &message : test::good_messages()) {
        if (message.content != test::Content::full) {
            continue;
        }
        SCOPED_TRACE(message.name);
        for (size_t size = 40; size < message.bytes.size(); size += 3) {
            const Buffer bytes = test::cut(message.bytes, size);
            if (page_of(bytes, true).fault) {
                EXPECT_EQ(page_of(with_other_texts(bytes), true).html, page_of(bytes, true).html);
            }
        }
    }
}

TEST(HtmlPage, ShowsTheLengthsOfHiddenTexts)
{
    const std::string html = shown(page_of(with_text("office"), true));
    EXPECT_THAT(html, HasSubstr("<em>6 bytes, hidden</em>"));
    EXPECT_THAT(html, HasSubstr(">06 00 00 00 ·· ·· ·· ··"));
    EXPECT_THAT(html, HasSubstr("Texts and raw bytes are hidden"));
    EXPECT_THAT(html, Not(HasSubstr("office")));
    EXPECT_THAT(html, Not(HasSubstr("6f 66 66")));
}

TEST(HtmlPage, HidesAWarning)
{
    const Buffer bytes = with_text("");
    EXPECT_THAT(shown(page_of(Input{"FILE", bytes, "office"}, true)), Not(HasSubstr("office")));
}

TEST(HtmlPage, FoldsALongValue)
{
    // 12 bytes of its first row, and 40 rows
    const Buffer bytes = with_raw_bytes(12 + 640);
    const std::string section = bytes_section(page_of(bytes).html);
    EXPECT_EQ(bytes_in_rows(page_of(bytes).html), bytes);
    EXPECT_THAT(section, HasSubstr("384 bytes more, from 0140 to 02bf</summary>"));
    EXPECT_EQ(times(section, "<summary"), 1U);
    EXPECT_THAT(shown(page_of(with_raw_bytes(12 + 32 * 16))), Not(HasSubstr("bytes more")));
    EXPECT_THAT(shown(page_of(with_raw_bytes(12 + 33 * 16))), HasSubstr(">272 bytes more"));
}

TEST(HtmlPage, FoldsALongText)
{
    const std::string tail(200, 'x');
    const std::string tree =
        fields_section(page_of(with_text(std::string(159, 'y') + "é" + tail)).html);
    EXPECT_THAT(tree, HasSubstr("yy&quot;</code> <em>…</em>"));
    EXPECT_THAT(tree, HasSubstr("the whole text, 361 bytes</summary><pre>&quot;yyy"));
    EXPECT_THAT(tree, HasSubstr("yé" + tail + "&quot;</pre>"));
    EXPECT_THAT(fields_section(page_of(with_text(std::string(160, 'y'))).html),
                Not(HasSubstr("the whole text")));
}

TEST(HtmlPage, ClosesALongList)
{
    const auto list = [](uint32_t count) {
        return shown(page_of(with_list(count, std::string(count * size_t{4}, '\0'))));
    };
    EXPECT_THAT(list(65), HasSubstr("<details><summary class=\"list\""));
    EXPECT_THAT(list(64), HasSubstr("<details open><summary class=\"list\""));
}

TEST(HtmlPage, GrowsWithTheMessageAlone)
{
    const size_t least = page_of(with_raw_bytes(0)).html.size();
    EXPECT_LT(page_of(with_raw_bytes(65536)).html.size() - least, 8U * 65536);
    const Buffer list = with_list(16384, std::string(65536, '\0'));
    EXPECT_LT(page_of(list).html.size() - least, 75U * 65536);
}

std::string base64_of_sha256(const std::string &text)
{
    gchar *digits = g_compute_checksum_for_string(G_CHECKSUM_SHA256, text.data(),
                                                  static_cast<gssize>(text.size()));
    Buffer digest;
    for (const gchar *digit = digits; *digit != '\0'; digit += 2) {
        digest.push_back(static_cast<uint8_t>(g_ascii_xdigit_value(digit[0]) << 4 |
                                              g_ascii_xdigit_value(digit[1])));
    }
    g_free(digits);
    gchar *base64 = g_base64_encode(digest.data(), digest.size());
    std::string copy = base64;
    g_free(base64);
    return copy;
}

TEST(HtmlPage, AllowsItsOwnStyleAndScriptAlone)
{
    const std::string html = page_of(with_text("<script>")).html;
    const std::string policy = between(html, "Content-Security-Policy\" content=\"", "\"");
    EXPECT_EQ(policy, "default-src 'none'; style-src 'sha256-" +
                          base64_of_sha256(between(html, "<style>", "</style>")) +
                          "'; script-src 'sha256-" +
                          base64_of_sha256(between(html, "<script>", "</script>")) +
                          "'; base-uri 'none'; form-action 'none'");
    EXPECT_EQ(times(html, "<script"), 1U);
    EXPECT_EQ(times(html, "<style"), 1U);
    EXPECT_THAT(html, StartsWith("<!DOCTYPE html>\n"));
    for (const char *reference : {"http:", "https:", "src=", "url(", "@import", "<link", "<base"}) {
        EXPECT_EQ(times(html, reference), 0U) << reference;
    }
}

// The sub-command, and what it has printed.
Printed run(const std::vector<std::string> &words)
{
    return printed_by(run_html, words);
}

std::string file_of(const Buffer &bytes)
{
    std::string name = testing::TempDir() + "html_test.bin";
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return name;
}

TEST(HtmlCommand, PrintsThePage)
{
    const Buffer bytes = with_text("office");
    const std::string name = file_of(bytes);
    const Printed outcome = run({name});
    EXPECT_EQ(outcome.status, whole);
    EXPECT_EQ(outcome.out, page_of(bytes, false, name).html);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(run({"--hide-texts", name}).out, page_of(bytes, true, name).html);
}

TEST(HtmlCommand, PrintsTheFaultOfABrokenMessage)
{
    const Buffer bytes = test::cut(with_text("office"), 62);
    const std::string name = file_of(bytes);
    const Printed outcome = run({name});
    EXPECT_EQ(outcome.status, malformed);
    EXPECT_EQ(outcome.out, page_of(bytes, false, name).html);
    EXPECT_EQ(outcome.err,
              "mdm-msg: " + name + ": wifi.ssids at offset 60 needs 6 bytes, 2 are left\n");
}

TEST(HtmlCommand, TakesOneFile)
{
    const Printed outcome = run({"a", "b"});
    EXPECT_EQ(outcome.status, wrong_usage);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "mdm-msg: a page shows one message; name one file; see 'mdm-msg html --help'\n");
}

}  // namespace
}  // namespace mdm::msg::html_test
