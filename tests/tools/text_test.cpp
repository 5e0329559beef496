// SPDX-License-Identifier: Apache-2.0
#include "text.hpp"

#include <gtest/gtest.h>

namespace mdm::msg::text_test {
namespace {

using namespace std::string_view_literals;

TEST(QuotedText, CannotActOnATerminal)
{
    EXPECT_EQ(quoted("home\x1b[2J"), R"("home\x1b[2J")");
    EXPECT_EQ(quoted("a\nb\tc\rd\x7f"), R"("a\nb\tc\rd\x7f")");
    EXPECT_EQ(quoted("a\0b"sv), R"("a\x00b")");
    EXPECT_EQ(quoted("\xc2\x85\xc2\x9b"), R"("\u{85}\u{9b}")");
    EXPECT_EQ(quoted("\u202e\u202c\u2066\u2069\u200b"),
              R"("\u{202e}\u{202c}\u{2066}\u{2069}\u{200b}")");
    EXPECT_EQ(quoted("\xe2\x80\xa8\xe2\x80\xa9"), R"("\u{2028}\u{2029}")");
    EXPECT_EQ(quoted(" \u00a0\u2003\u3000"), R"(" \u{a0}\u{2003}\u{3000}")");
}

TEST(QuotedText, EscapesBytesThatAreNoUtf8)
{
    EXPECT_EQ(quoted("\xff\xc3(\xe2\x82"), R"("\xff\xc3(\xe2\x82")");
    EXPECT_EQ(quoted("\xed\xa0\x80"), R"("\xed\xa0\x80")");
}

TEST(QuotedText, KeepsLetters)
{
    EXPECT_EQ(quoted("Büro 東京 😀"), "\"Büro 東京 😀\"");
    EXPECT_EQ(quoted(R"(say "a\b")"), R"("say \"a\\b\"")");
    EXPECT_EQ(printable(R"(say "a\b")"), R"(say "a\b")");
}

}  // namespace
}  // namespace mdm::msg::text_test
