// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "align.hpp"
#include "command.hpp"
#include "compare.hpp"
#include "printed.hpp"
#include "support/messages.hpp"

namespace mdm::msg::diff_test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;
using testing::StartsWith;

using Body = std::vector<uint8_t>;
using Texts = std::vector<std::string>;
using Lines = std::vector<std::string>;

Body word(uint32_t number)
{
    Body bytes(4);
    test::put_word(bytes, 0, number);
    return bytes;
}

Body str(std::string_view text)
{
    Body bytes = word(static_cast<uint32_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
}

Body operator+(Body a, const Body &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Body body_head(uint32_t type, uint32_t data_size = 1)
{
    return word(type) + word(0) + word(data_size);
}

Body strs(const Texts &texts)
{
    Body bytes = word(static_cast<uint32_t>(texts.size()));
    for (const std::string &text : texts) {
        bytes = std::move(bytes) + str(text);
    }
    return bytes;
}

Body ssids(const Texts &texts)
{
    return test::framed(7, body_head(290) + strs(texts));
}

Body key_pairs(const std::vector<std::pair<uint32_t, uint32_t>> &pairs)
{
    Body list = word(static_cast<uint32_t>(pairs.size()));
    for (const auto &[key, value] : pairs) {
        list = std::move(list) + word(key) + word(value);
    }
    return test::framed(45, body_head(619) + list);
}

struct Control {
    uint32_t client_id;
    Texts packages;
};

Body controls(const std::vector<Control> &list)
{
    Body body = word(172) + word(0) + str("") + word(1) + word(static_cast<uint32_t>(list.size()));
    for (const Control &one : list) {
        body = std::move(body) + word(one.client_id) + strs(one.packages);
    }
    return test::framed(14, body);
}

Body raw_bytes(std::string_view bytes)
{
    return test::framed(31, body_head(1, static_cast<uint32_t>(bytes.size())) +
                                Body(bytes.begin(), bytes.end()));
}

Lines diff(const Body &a, const Body &b, bool all = false)
{
    Lines lines;
    compare(a, b, all, [&](Mark mark, const std::string &text) {
        lines.push_back(std::string(1, static_cast<char>(mark)) + ' ' + text);
    });
    return lines;
}

TEST(Diff, OfAMessageAndItselfIsEmpty)
{
    for (const test::GoodMessage &message : test::good_messages()) {
        EXPECT_THAT(diff(message.bytes, message.bytes), IsEmpty()) << message.name;
        EXPECT_THAT(diff(message.bytes, message.bytes, true), Each(StartsWith("  ")))
            << message.name;
    }
}

// Whatever the difference is, a line shows it.
TEST(Diff, OfDifferentMessagesIsNotEmpty)
{
    const auto messages = test::good_messages();
    for (size_t i = 0; i < messages.size(); ++i) {
        const auto &one = messages[i].bytes;
        const auto &other = messages[(i + 1) % messages.size()].bytes;
        EXPECT_EQ(diff(one, other).empty(), one == other) << messages[i].name;
    }
}

TEST(Diff, ShowsEachChangedByte)
{
    const Body message = controls({{1, {"a", "b"}}, {2, {}}});
    for (size_t i = 0; i < message.size(); ++i) {
        Body changed = message;
        changed[i] ^= 1;
        EXPECT_THAT(diff(message, changed), testing::Not(IsEmpty())) << i;
    }
}

TEST(Diff, ShowsAChangedField)
{
    const Body a = test::framed(7, body_head(305) + str("a") + str("\x1b[2J") + word(0));
    const Body b = test::framed(7, body_head(305) + str("b") + str("\x1b[2J") + word(0));
    EXPECT_THAT(diff(a, b), ElementsAre(R"(~ wifi.pair.ssid: "a" -> "b")"));
}

TEST(Diff, TakesTheSignOfANumberIntoAccount)
{
    const Body a = test::framed(49, body_head(1, 1));
    const Body b = test::framed(49, body_head(1, UINT32_MAX));
    EXPECT_THAT(diff(a, b), ElementsAre("~ location.data_size: 1 -> -1"));
}

TEST(Diff, OfTheHeaderLeavesOutTheLength)
{
    const Body a = test::framed(49, body_head(1));
    const Body b = test::framed(49, body_head(1), "hi");
    EXPECT_THAT(diff(a, b), ElementsAre(R"(~ header.hdr_text: "" -> "hi")"));
    EXPECT_EQ(diff(a, b, true).front(), "~ header.length: 44 -> 46");
}

TEST(Diff, ShowsAnInsertedTextInOneLine)
{
    EXPECT_THAT(diff(ssids({"a", "b", "c"}), ssids({"new", "a", "b", "c"})),
                ElementsAre(R"(+ wifi.ssids[0]: "new")"));
    EXPECT_THAT(diff(ssids({"a", "b", "c"}), ssids({"a", "c"})),
                ElementsAre(R"(- wifi.ssids[1]: "b")"));
    EXPECT_THAT(diff(ssids({}), ssids({"a"})), ElementsAre(R"(+ wifi.ssids[0]: "a")"));
}

TEST(Diff, PairsElementsAtTheSamePlace)
{
    EXPECT_THAT(diff(ssids({"a", "b", "c"}), ssids({"a", "B", "c"})),
                ElementsAre(R"(~ wifi.ssids[1]: "b" -> "B")"));
    EXPECT_THAT(diff(ssids({"a", "b", "c"}), ssids({"new", "a", "B", "more", "c"})),
                ElementsAre(R"(+ wifi.ssids[0]: "new")", R"(~ wifi.ssids[1 -> 2]: "b" -> "B")",
                            R"(+ wifi.ssids[3]: "more")"));
}

TEST(Diff, ShowsTheChangedFieldsOfARecord)
{
    EXPECT_THAT(diff(key_pairs({{1, 2}, {3, 4}, {5, 6}}), key_pairs({{1, 2}, {3, 9}, {5, 6}})),
                ElementsAre("~ kiosk.key_pair[1].value: 4 -> 9"));
}

TEST(Diff, PairsTheRecordsThatAreMostAlike)
{
    EXPECT_THAT(diff(key_pairs({{1, 2}}), key_pairs({{7, 8}, {9, 9}, {1, 3}, {5, 5}})),
                ElementsAre("+ kiosk.key_pair[0]: {key 7, value 8}",
                            "+ kiosk.key_pair[1]: {key 9, value 9}",
                            "~ kiosk.key_pair[0 -> 2].value: 2 -> 3",
                            "+ kiosk.key_pair[3]: {key 5, value 5}"));
    EXPECT_THAT(diff(key_pairs({{7, 8}, {1, 3}, {6, 4}}), key_pairs({{1, 2}, {5, 4}})),
                ElementsAre("- kiosk.key_pair[0]: {key 7, value 8}",
                            "~ kiosk.key_pair[1 -> 0].value: 3 -> 2",
                            "~ kiosk.key_pair[2 -> 1].key: 6 -> 5"));
}

// Too many elements for that.
TEST(Diff, PairsManyElementsByTheirPlaces)
{
    std::vector<std::pair<uint32_t, uint32_t>> a(70, {1, 1});
    std::vector<std::pair<uint32_t, uint32_t>> b(71, {1, 2});
    const Lines lines = diff(key_pairs(a), key_pairs(b));
    ASSERT_THAT(lines, SizeIs(71));
    EXPECT_EQ(lines.front(), "~ kiosk.key_pair[0].value: 1 -> 2");
    EXPECT_EQ(lines.back(), "+ kiosk.key_pair[70]: {key 1, value 2}");
}

TEST(Diff, ShowsAnInsertedRecordInOneLine)
{
    EXPECT_THAT(diff(key_pairs({{1, 2}, {5, 6}}), key_pairs({{1, 2}, {3, 4}, {5, 6}})),
                ElementsAre("+ kiosk.key_pair[1]: {key 3, value 4}"));
    EXPECT_THAT(diff(controls({}), controls({{1, {"a", "b"}}, {2, {}}})),
                ElementsAre(R"(+ app_res.control[0]: {client_id 1, pkg_list ["a", "b"]})",
                            "+ app_res.control[1]: {client_id 2, pkg_list []}"));
}

TEST(Diff, AlignsTheListOfARecord)
{
    EXPECT_THAT(diff(controls({{1, {"a", "b"}}}), controls({{1, {"x", "a", "b"}}})),
                ElementsAre(R"(+ app_res.control[0].pkg_list[0]: "x")"));
    EXPECT_THAT(diff(controls({{1, {"a"}}, {2, {"b"}}}), controls({{3, {}}, {2, {"c"}}})),
                ElementsAre("~ app_res.control[0].client_id: 1 -> 3",
                            R"(- app_res.control[0].pkg_list[0]: "a")",
                            R"(~ app_res.control[1].pkg_list[0]: "b" -> "c")"));
}

TEST(Diff, AlignsTextsWithoutACount)
{
    const Body a = test::framed(17, body_head(122, 1) + str("a"));
    const Body b = test::framed(17, body_head(122, 2) + str("x") + str("a"));
    EXPECT_THAT(diff(a, b), ElementsAre("~ misc.data_size: 1 -> 2", R"(+ misc.array[0]: "x")"));
}

// The elements do not show a count below 0.
TEST(Diff, ShowsACountThatTheElementsDoNotExplain)
{
    const Body negative = test::framed(7, body_head(290) + word(static_cast<uint32_t>(-5)));
    EXPECT_THAT(diff(ssids({}), negative), ElementsAre("~ wifi.ssids: count 0 -> count -5"));
    EXPECT_THAT(diff(negative, ssids({"a"})),
                ElementsAre("~ wifi.ssids: count -5 -> count 1", R"(+ wifi.ssids[0]: "a")"));
}

TEST(Diff, OfFormsBeginsWithThem)
{
    const Body pair = test::framed(7, body_head(305) + str("a") + str("b"));
    EXPECT_THAT(diff(ssids({"a"}), pair),
                ElementsAre("! different forms: wifi.ssids and wifi.pair",
                            "~ wifi.type: 290 -> 305", R"(- wifi.ssids[0]: "a")",
                            R"(+ wifi.pair.ssid: "a")", R"(+ wifi.pair.value: "b")"));
    EXPECT_EQ(diff(ssids({"a"}), controls({})).front(),
              "! different message types: 7 (wifi.ssids) and 14 (app_res.controls)");
    EXPECT_EQ(diff(test::framed(7, {}), pair).front(), "! different forms: wifi and wifi.pair");
}

TEST(Diff, ShowsFieldsOfOneNameAndTwoKinds)
{
    const Body text = test::framed(51, word(638) + str("a"));
    const Body byte = test::framed(51, word(638 - 1) + Body{7});
    EXPECT_THAT(diff(text, byte),
                ElementsAre("! different forms: log_manager.text and log_manager.byte",
                            "~ log_manager.type: 638 -> 637", R"(~ log_manager.value: "a" -> 7)"));
}

TEST(Diff, ShowsBytes)
{
    EXPECT_THAT(diff(raw_bytes("abc"), raw_bytes("abd")),
                ElementsAre(R"(~ firewall.data: "abc" -> "abd")"));
    EXPECT_THAT(diff(raw_bytes("abc"), raw_bytes("ab\x01")),
                ElementsAre("~ firewall.data: 61 62 63 -> 61 62 01"));
    EXPECT_THAT(diff(raw_bytes("a"), raw_bytes("a") + Body(0)), IsEmpty());
}

TEST(Diff, ShowsManyBytesWhereTheyDiffer)
{
    const std::string many(40, 'x');
    EXPECT_THAT(diff(raw_bytes(many + "a" + many), raw_bytes(many + "b" + many)),
                ElementsAre(R"(~ firewall.data: at byte 40: "a" -> "b")"));
    EXPECT_THAT(diff(raw_bytes(many), raw_bytes(many + "b")),
                ElementsAre("~ firewall.data_size: 40 -> 41",
                            R"(~ firewall.data: at byte 40: no bytes -> "b")"));
}

TEST(Diff, ShowsReservedBytesAndPadding)
{
    const Body a = test::framed(49, body_head(1));
    Body b = test::framed(49, body_head(1) + Body{0, 0});
    b[6] = static_cast<uint8_t>(a[6] + 1);
    const Lines lines = diff(a, b);
    EXPECT_THAT(lines, ElementsAre(StartsWith("~ header.reserved: "), "+ padding: 00 00"));
}

TEST(Diff, ComparesMalformedMessagesUpToTheFault)
{
    const Body good = ssids({"a", "b"});
    const Body bad = test::cut(good, good.size() - 2);
    EXPECT_THAT(diff(good, bad), ElementsAre(R"(- wifi.ssids[1]: "b")", "+ rest: 01 00 00",
                                             StartsWith("~ fault: none -> wifi.ssids at offset ")));
    EXPECT_THAT(diff(bad, bad), IsEmpty());
    EXPECT_THAT(diff(bad, bad, true).back(), StartsWith("  fault: wifi.ssids at offset "));
    EXPECT_THAT(diff({}, {}), IsEmpty());
}

TEST(Diff, ReportsFaults)
{
    const Body good = ssids({"a", "b"});
    const auto ignore = [](Mark /*mark*/, const std::string & /*text*/) {};
    const Faults faults = compare(good, test::cut(good, good.size() - 1), false, ignore);
    EXPECT_FALSE(faults.a);
    ASSERT_TRUE(faults.b);
    EXPECT_STREQ(faults.b->path, "wifi.ssids");
}

TEST(Diff, NeitherCrashesNorIsSilentAboutCutMessages)
{
    for (const test::GoodMessage &message : test::good_messages()) {
        for (size_t size = 0; size < message.bytes.size(); ++size) {
            const Body part = test::cut(message.bytes, size);
            EXPECT_FALSE(diff(message.bytes, part).empty()) << message.name << ' ' << size;
        }
    }
}

// Large lists.

Texts numbered_texts(size_t count, const std::string &prefix)
{
    Texts texts;
    for (size_t i = 0; i < count; ++i) {
        texts.push_back(prefix + std::to_string(i));
    }
    return texts;
}

// A quadratic comparison would take minutes.
TEST(Diff, OfLargeListsEnds)
{
    constexpr size_t many = 30'000;
    const Body list = ssids(numbered_texts(many, "n"));
    Texts reversed = numbered_texts(many, "n");
    std::ranges::reverse(reversed);
    EXPECT_THAT(diff(list, ssids(numbered_texts(many, "m"))), SizeIs(many));
    EXPECT_THAT(diff(list, ssids(reversed)), SizeIs(AllOf(Ge(many), Le(2 * many))));
    EXPECT_THAT(diff(list, ssids({})), SizeIs(many));
}

TEST(Diff, OfLargeListsFindsWhatHasMoved)
{
    constexpr size_t many = 10'000;
    Texts moved = numbered_texts(many, "n");
    std::rotate(moved.begin(), moved.begin() + many / 4, moved.end());
    const Lines lines = diff(ssids(numbered_texts(many, "n")), ssids(moved));
    EXPECT_THAT(lines, SizeIs(many / 2));
}

// What the command does.

Printed run(const std::vector<std::string> &words)
{
    return printed_by(run_diff, words);
}

class DiffCommand : public testing::Test {
protected:
    DiffCommand() : directory_(g_dir_make_tmp(nullptr, nullptr))
    {
        write("a", ssids({"a"}));
        write("b", ssids({"b"}));
        write("c", controls({}));
        write("cut", test::cut(ssids({"a"}), ssids({"a"}).size() - 1));
    }
    ~DiffCommand() override
    {
        std::filesystem::remove_all(directory_);
        g_free(directory_);
    }

    std::string file(const std::string &name) const { return directory_ + ('/' + name); }

private:
    void write(const std::string &name, const Body &bytes) const
    {
        g_file_set_contents(file(name).c_str(), reinterpret_cast<const char *>(bytes.data()),
                            static_cast<gssize>(bytes.size()), nullptr);
    }

    gchar *directory_;
};

TEST_F(DiffCommand, ReturnsWhetherMessagesDiffer)
{
    const Printed same = run({file("a"), file("a")});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out, "");
    const Printed different = run({file("a"), file("b")});
    EXPECT_EQ(different.status, 1);
    EXPECT_EQ(different.out, "~ wifi.ssids[0]: \"a\" -> \"b\"\n");
    EXPECT_EQ(different.err, "");
}

TEST_F(DiffCommand, GivesItsVerdictOnAMalformedMessage)
{
    const Printed printed = run({file("a"), file("cut")});
    EXPECT_EQ(printed.status, 1);
    EXPECT_THAT(printed.out,
                StartsWith("~ wifi.ssids[0]: \"a\" -> count 1\n~ fault: none -> wifi.ssids at "));
    EXPECT_THAT(printed.err, StartsWith("mdm-msg: " + file("cut") + ": wifi.ssids at offset "));
    EXPECT_EQ(run({file("cut"), file("cut")}).status, 1);
}

TEST_F(DiffCommand, RefusesWrongUsage)
{
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({file("a")}).status, 2);
    EXPECT_EQ(run({file("a"), file("a"), file("a")}).status, 2);
    EXPECT_EQ(run({"-", "-"}).status, 2);
    EXPECT_EQ(run({"--color=green", file("a"), file("b")}).status, 2);
}

TEST_F(DiffCommand, NeedsBothFiles)
{
    const Printed printed = run({file("missing"), file("gone")});
    EXPECT_EQ(printed.status, 3);
    EXPECT_EQ(printed.out, "");
    EXPECT_THAT(printed.err, testing::ContainsRegex("missing: .*\n.*gone: "));
    EXPECT_EQ(run({file("a"), file("missing")}).status, 3);
    EXPECT_EQ(run({file("missing"), file("a")}).status, 3);
}

// Standard output of the tests is no terminal.
TEST_F(DiffCommand, UsesColoursIfItIsAskedTo)
{
    const std::string plain = R"(~ wifi.ssids[0]: "a" -> "b")";
    EXPECT_EQ(run({"--color=never", file("a"), file("b")}).out, plain + '\n');
    EXPECT_EQ(run({"--color=auto", file("a"), file("b")}).out, plain + '\n');
    EXPECT_EQ(run({"--color=always", file("a"), file("b")}).out, "\x1b[33m" + plain + "\x1b[0m\n");
    EXPECT_THAT(run({"--color=always", file("a"), file("c")}).out,
                AllOf(StartsWith("\x1b[1m! "), testing::HasSubstr("\n\x1b[31m- "),
                      testing::HasSubstr("\n\x1b[32m+ ")));
    EXPECT_THAT(run({"--color=always", "--all", file("a"), file("b")}).out,
                testing::HasSubstr("\n  header.type: 7\n"));
}

// common_subsequence()

using Numbers = std::vector<uint32_t>;

size_t longest(const Numbers &a, const Numbers &b)
{
    std::vector<std::vector<size_t>> best(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 1; i <= a.size(); ++i) {
        for (size_t j = 1; j <= b.size(); ++j) {
            best[i][j] = a[i - 1] == b[j - 1] ? best[i - 1][j - 1] + 1
                                              : std::max(best[i - 1][j], best[i][j - 1]);
        }
    }
    return best[a.size()][b.size()];
}

// Fails unless the matches are a common subsequence.
void expect_common(const std::vector<Match> &matches, const Numbers &a, const Numbers &b)
{
    Match least{0, 0};
    for (const Match match : matches) {
        ASSERT_GE(match.a, least.a);
        ASSERT_GE(match.b, least.b);
        ASSERT_LT(match.a, a.size());
        ASSERT_LT(match.b, b.size());
        ASSERT_EQ(a[match.a], b[match.b]);
        least = {match.a + 1, match.b + 1};
    }
}

// All pairs of lists of up to four elements, each of which is one of three.
TEST(CommonSubsequence, IsALongestOne)
{
    std::vector<Numbers> lists = {{}};
    for (size_t i = 0; lists[i].size() < 4; ++i) {
        for (uint32_t number = 0; number < 3; ++number) {
            Numbers longer = lists[i];
            longer.push_back(number);
            lists.push_back(longer);
        }
    }
    for (const Numbers &a : lists) {
        for (const Numbers &b : lists) {
            if (std::max({0U, a.empty() ? 0 : *std::ranges::max_element(a),
                          b.empty() ? 0 : *std::ranges::max_element(b)}) >= a.size() + b.size()) {
                continue;  // no numbers of such lists
            }
            const auto matches = common_subsequence(a, b);
            expect_common(matches, a, b);
            ASSERT_EQ(matches.size(), longest(a, b))
                << testing::PrintToString(a) << testing::PrintToString(b);
        }
    }
}

// Too many elements have moved for the exact algorithm.
TEST(CommonSubsequence, OfPermutationsIsALongestOne)
{
    Numbers a(2500);
    std::iota(a.begin(), a.end(), 0);
    Numbers b = a;
    for (size_t i = 0; i < b.size(); ++i) {
        std::swap(b[i], b[(i * 7919 + 13) % b.size()]);
    }
    const auto matches = common_subsequence(a, b);
    expect_common(matches, a, b);
    EXPECT_EQ(matches.size(), longest(a, b));
}

TEST(CommonSubsequence, OfRepeatedElementsIsACommonOne)
{
    Numbers a(20'000);
    Numbers b(20'000);
    uint32_t state = 1;
    for (size_t i = 0; i < a.size(); ++i) {
        state = state * 1664525 + 1013904223;
        a[i] = state >> 30;
        b[i] = (state >> 20) & 3;
    }
    const auto matches = common_subsequence(a, b);
    expect_common(matches, a, b);
    EXPECT_GT(matches.size(), a.size() / 4);
}

}  // namespace
}  // namespace mdm::msg::diff_test
