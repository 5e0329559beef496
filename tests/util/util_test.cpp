// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/util.h"
#include "support/allocation_trace.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::util_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr LoggingFunction size_function{"mdm_get_list_data_size", "mdm_util.cpp"};
constexpr LoggingFunction name_function{"mdm_is_valid_package_name", "mdm_util.cpp"};

// Everything that is logged, as "tag file: function".
std::vector<std::string> origins(const LogRecorder &log)
{
    std::vector<std::string> seen;
    for (const PlatformLine &line : log.platform_lines()) {
        seen.push_back(line.tag.value_or("") + ' ' + line.text.substr(0, line.text.find('(')));
    }
    return seen;
}

// A list of strings that are not changed; a null text is a null element.
Cells names(std::initializer_list<const char *> texts)
{
    GList *list = nullptr;
    for (const char *text : texts) {
        list = g_list_append(list, borrowed(text));
    }
    return Cells(list);
}

void expect_size(GList *list, int32_t size)
{
    LogRecorder log;
    EXPECT_EQ(mdm_get_list_data_size(list), size);
    EXPECT_THAT(log.take(), ElementsAre(info(size_function, "size : " + std::to_string(size))));
}

// Measures a list from each of its cells.
void expect_size(const Cells &list, int32_t size)
{
    for (GList *cell = list.get(); cell != nullptr; cell = cell->next) {
        SCOPED_TRACE(g_list_position(list.get(), cell));
        expect_size(cell, size);
    }
}

// Q-UTIL-1
TEST(ListDataSize, IsFourAndTheLengthOfEveryName)
{
    expect_size(names({"abc", "de"}), 9);
    expect_size(names({"a"}), 5);
    expect_size(names({"abc", "de", "alpha.beta.app", "x"}), 4 + 3 + 2 + 14 + 1);
}

TEST(ListDataSize, CountsAnEmptyStringAsNothingAndGoesOn)
{
    expect_size(names({""}), 4);
    expect_size(names({"", "", ""}), 4);
    expect_size(names({"abc", "", "de"}), 9);
}

TEST(ListDataSize, CountsBytesAndNotCharacters)
{
    expect_size(names({"\xC3\xA4", "\xFF\x80\x01"}), 4 + 2 + 3);
}

// Q-UTIL-2
TEST(ListDataSize, EndsAtANullElementWithoutReport)
{
    expect_size(names({"abc", nullptr, "xyz"}), 7);
    expect_size(names({"abc", "de", nullptr}), 9);
    expect_size(names({"", nullptr, "xyz", nullptr}), 4);
}

// Q-UTIL-3
TEST(ListDataSize, IsTheSameFromAnyCell)
{
    const Cells list = names({"abc", "de", "f", "ghij"});
    expect_size(g_list_last(list.get()), 14);
    expect_size(list.get()->next, 14);
}

TEST(ListDataSize, MeasuresManyAndLongNames)
{
    const std::string name(200, 'x');
    GList *many = nullptr;
    for (int i = 0; i < 10000; ++i) {
        many = g_list_prepend(many, borrowed(name.c_str()));
    }
    const Cells list(many);
    expect_size(list.get(), 2000004);
    expect_size(g_list_last(list.get()), 2000004);

    const std::string long_name(1 << 20, 'x');
    expect_size(names({long_name.c_str()}), 4 + (1 << 20));
}

// Q-UTIL-5
TEST(ListDataSize, OfNoListIsZeroAndReported)
{
    LogRecorder log;
    EXPECT_EQ(mdm_get_list_data_size(nullptr), 0);
    EXPECT_THAT(log.take(),
                ElementsAre(critical(size_function, "pkg_list is NULL!"), leave(size_function)));
}

// Q-UTIL-2
TEST(ListDataSize, OfANullFirstElementIsAnErrorFromAnyCell)
{
    for (const Cells &list : {names({nullptr}), names({nullptr, "abc", "de"})}) {
        for (GList *cell = list.get(); cell != nullptr; cell = cell->next) {
            LogRecorder log;
            EXPECT_EQ(mdm_get_list_data_size(cell), -195);
            EXPECT_THAT(log.take(), ElementsAre(critical(size_function, "current is NULL!"),
                                                leave(size_function)));
        }
    }
}

TEST(ListDataSize, DoesNotDependOnTheThreshold)
{
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(mdm_get_list_data_size(names({"abc", "de"}).get()), 9);
    EXPECT_EQ(mdm_get_list_data_size(nullptr), 0);
    EXPECT_EQ(mdm_get_list_data_size(names({nullptr}).get()), -195);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ListDataSize, LogsWithTagFileAndFunction)
{
    const LogRecorder log;
    mdm_get_list_data_size(nullptr);
    mdm_get_list_data_size(names({"abc"}).get());
    EXPECT_THAT(origins(log), ElementsAre("MDM_COMMON mdm_util.cpp: mdm_get_list_data_size",
                                          "MDM_COMMON mdm_util.cpp: mdm_get_list_data_size",
                                          "MDM_COMMON mdm_util.cpp: mdm_get_list_data_size"));
}

TEST(ListDataSize, LeavesTheListAloneAndAllocatesNothing)
{
    const Cells list = names({"abc", nullptr, "xyz"});
    const auto cells_before = cells_of(list.get());
    const auto elements_before = elements_of(list.get());
    const LogRecorder log;
    AllocationTrace trace;
    mdm_get_list_data_size(list.get()->next);
    trace.stop();
    EXPECT_THAT(trace.events(), IsEmpty());
    EXPECT_EQ(cells_of(list.get()), cells_before);
    EXPECT_EQ(elements_of(list.get()), elements_before);
    EXPECT_EQ(texts_of(list.get()),
              (std::vector<std::optional<std::string>>{"abc", std::nullopt, "xyz"}));
    EXPECT_EQ(list.get()->prev, nullptr);
    EXPECT_EQ(list.get()->next->prev, list.get());
    EXPECT_EQ(list.get()->next->next->prev, list.get()->next);
}

// Neither answer is logged.
int32_t is_valid(const std::string &name)
{
    LogRecorder log;
    const int32_t answer = mdm_is_valid_package_name(name.c_str());
    EXPECT_THAT(log.take(), IsEmpty()) << name;
    return answer;
}

// The same byte alone, at either end and in the middle.
void expect_byte(int byte, bool valid)
{
    SCOPED_TRACE(byte);
    const std::string text(1, static_cast<char>(byte));
    const int32_t expected = valid ? 1 : 0;
    EXPECT_EQ(is_valid(text), expected);
    EXPECT_EQ(is_valid(text + "alpha.beta"), expected);
    EXPECT_EQ(is_valid("alpha" + text + "beta"), expected);
    EXPECT_EQ(is_valid("alpha.beta" + text), expected);
}

TEST(PackageName, MayHoldLettersDigitsHyphensAndDots)
{
    for (const char *name : {"alpha.beta.app", "a-b.c", "123", "Alpha.Beta.App", "z", "Z9"}) {
        EXPECT_EQ(is_valid(name), 1) << name;
    }
}

TEST(PackageName, HasNoRuleAboutDotsHyphensAndSegments)
{
    for (const char *name : {".", "-", "...", "---", ".a", "a.", "a..b", "-a", "a-", "9.a", "a"}) {
        EXPECT_EQ(is_valid(name), 1) << name;
    }
}

TEST(PackageName, MayHaveAnyLength)
{
    const std::string long_name(1 << 20, 'a');
    EXPECT_EQ(is_valid(long_name), 1);
    EXPECT_EQ(is_valid("_" + long_name), 0);
    EXPECT_EQ(is_valid(long_name + "_"), 0);
}

// Q-UTIL-4
TEST(PackageName, IsRefusedInSilenceForAnyOtherByte)
{
    for (const char *name :
         {"alpha.beta.my_app", "_", "alpha beta", " ", "alpha.beta\n", "alpha/beta", "alpha,beta",
          "alpha:beta", "alpha.b\xE4ta", "alpha.b\xC3\xA4ta", "\xFF", "\x80"}) {
        EXPECT_EQ(is_valid(name), 0) << name;
    }
}

// Every byte above 127 is refused.
void expect_ascii_only()
{
    const std::string accepted = "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    for (int byte = 1; byte <= 255; ++byte) {
        expect_byte(byte, accepted.find(static_cast<char>(byte)) != std::string::npos);
    }
}

TEST(PackageName, MayHoldExactlyTheseBytesInThePosixLocale)
{
    expect_ascii_only();
}

// Q-UTIL-5
TEST(PackageName, IsReportedIfMissing)
{
    LogRecorder log;
    EXPECT_EQ(mdm_is_valid_package_name(nullptr), 0);
    EXPECT_THAT(log.take(), ElementsAre(critical(name_function, "package_name is NULL!"),
                                        leave(name_function)));
}

// Q-UTIL-4
TEST(PackageName, IsReportedIfBlank)
{
    LogRecorder log;
    EXPECT_EQ(mdm_is_valid_package_name(""), 0);
    EXPECT_THAT(log.take(), ElementsAre(critical(name_function, "package_name is BLANK!"),
                                        leave(name_function)));
}

TEST(PackageName, DoesNotDependOnTheThreshold)
{
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(mdm_is_valid_package_name(nullptr), 0);
    EXPECT_EQ(mdm_is_valid_package_name(""), 0);
    EXPECT_EQ(mdm_is_valid_package_name("a_b"), 0);
    EXPECT_EQ(mdm_is_valid_package_name("a-b.c"), 1);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(PackageName, LogsWithTagFileAndFunction)
{
    const LogRecorder log;
    mdm_is_valid_package_name("");
    EXPECT_THAT(origins(log), ElementsAre("MDM_COMMON mdm_util.cpp: mdm_is_valid_package_name",
                                          "MDM_COMMON mdm_util.cpp: mdm_is_valid_package_name"));
}

// A host program that has chosen a locale of its own.
class PackageNameInLocale : public ::testing::Test {
protected:
    explicit PackageNameInLocale(const char *locale) : locale_(locale) {}

    void SetUp() override
    {
        setenv("LOCPATH", MDM_LOCALES_DIR, 1);
        if (std::setlocale(LC_CTYPE, locale_) == nullptr) {
            GTEST_SKIP() << "this machine cannot load the locale " << locale_;
        }
    }

    void TearDown() override
    {
        std::setlocale(LC_CTYPE, previous_.c_str());
        if (previous_path_) {
            setenv("LOCPATH", previous_path_->c_str(), 1);
        } else {
            unsetenv("LOCPATH");
        }
    }

private:
    static std::optional<std::string> environment(const char *name)
    {
        const char *value = std::getenv(name);
        return value == nullptr ? std::nullopt : std::optional<std::string>(value);
    }

    const char *locale_;
    std::string previous_ = std::setlocale(LC_CTYPE, nullptr);
    std::optional<std::string> previous_path_ = environment("LOCPATH");
};

// One byte a character, with letters above 127.
class PackageNameInLatin1 : public PackageNameInLocale {
protected:
    PackageNameInLatin1() : PackageNameInLocale("de_DE.ISO-8859-1") {}
};

// There, bytes above 127 are parts of characters.
class PackageNameInUtf8 : public PackageNameInLocale {
protected:
    PackageNameInUtf8() : PackageNameInLocale("C.UTF-8") {}
};

TEST_F(PackageNameInLatin1, MayHoldItsLetters)
{
    EXPECT_EQ(is_valid("M\xFCller.App"), 1);
    for (const int letter : {0xC4, 0xDF, 0xE4, 0xF6, 0xFF}) {
        expect_byte(letter, true);
    }
}

TEST_F(PackageNameInLatin1, MayNotHoldItsSignsAndSpaces)
{
    EXPECT_EQ(is_valid("m\xFCller_app"), 0);
    for (const int sign : {0x5F, 0x80, 0xA0, 0xA7, 0xD7, 0xF7}) {
        expect_byte(sign, false);
    }
}

TEST_F(PackageNameInLatin1, MayHoldWhatTheLocaleCallsAlphanumeric)
{
    for (int byte = 1; byte <= 255; ++byte) {
        expect_byte(byte, std::isalnum(byte) != 0 || byte == '-' || byte == '.');
    }
}

TEST_F(PackageNameInLatin1, FollowsAChangeOfTheLocale)
{
    EXPECT_EQ(is_valid("\xE4"), 1);
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(is_valid("\xE4"), 0);
}

TEST_F(PackageNameInUtf8, IsJudgedByBytesAndNotByCharacters)
{
    EXPECT_EQ(is_valid("m\xC3\xBCller.app"), 0);
    expect_ascii_only();
}

}  // namespace
}  // namespace mdm::test::util_test
