// SPDX-License-Identifier: Apache-2.0
#include "input.hpp"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "command.hpp"
#include "support/messages.hpp"
#include "support/unprivileged.hpp"

namespace mdm::msg::input_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Content = std::vector<uint8_t>;

Content joined(std::initializer_list<Content> parts)
{
    Content all;
    for (const Content &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

class InputOf : public testing::Test {
protected:
    InputOf() { std::filesystem::create_directory(folder_); }
    ~InputOf() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string &name) const { return folder_ / name; }

    std::string file(const std::string &name, std::string_view content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
    std::string file(const std::string &name, const Content &content) const
    {
        return file(name, as_text(content));
    }

    // Keeps what is used: the name without the folder, the size and the warning.
    int use(const std::vector<std::string> &files, const InputOptions &options = {})
    {
        used_.clear();
        bytes_.clear();
        troubles_.clear();
        testing::internal::CaptureStderr();
        const int status = for_each_message(
            files, options,
            [this](const Input &input) {
                bytes_.emplace_back(input.bytes.begin(), input.bytes.end());
                used_.push_back(without_folder(input.name) + ", " +
                                std::to_string(input.bytes.size()) +
                                (input.warning.empty() ? "" : ": " + input.warning));
                return result_;
            },
            [this](const Trouble &trouble) { troubles_.push_back(trouble.reason); });
        said_ = without_folder(testing::internal::GetCapturedStderr());
        return status;
    }

    std::string without_folder(std::string text) const
    {
        const std::string folder = folder_.string() + "/";
        for (size_t at = text.find(folder); at != std::string::npos; at = text.find(folder)) {
            text.erase(at, folder.size());
        }
        return text;
    }

    const Content message_ = test::framed(7, Content(12));  // 52 bytes
    std::vector<std::string> used_;
    std::vector<Content> bytes_;
    std::vector<std::string> troubles_;
    std::string said_;
    int result_ = whole;

private:
    std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("mdm-input-" + std::to_string(getpid()));
};

TEST_F(InputOf, RawBytesIsTheirMessage)
{
    EXPECT_EQ(use({file("a", message_), file("b", Content{1, 2, 3})}), whole);
    EXPECT_THAT(used_, ElementsAre("a, 52", "b, 3"));
    EXPECT_EQ(bytes_.front(), message_);
    EXPECT_EQ(said_, "");
}

TEST_F(InputOf, HexTextIsTheBytesThatItStandsFor)
{
    EXPECT_EQ(use({file("a", "3e 00 # two\n 07")}), whole);
    EXPECT_THAT(bytes_, ElementsAre(Content{0x3e, 0, 7}));
}

TEST_F(InputOf, BytesThatAreNoTextAreRaw)
{
    EXPECT_EQ(use({file("a", Content(52, ' ')), file("b", joined({Content(51, ' '), {0x7f}}))}),
              whole);
    EXPECT_THAT(used_, ElementsAre("a, 0: the text has no bytes", "b, 52"));
    EXPECT_EQ(use({file("a", "any text")}), malformed);
    EXPECT_EQ(use({file("latin", "3e00 # B\xfcro"), file("c1", "3e00 # \u0085")}), whole);
    EXPECT_THAT(used_, ElementsAre("latin, 11", "c1, 9"));
}

TEST_F(InputOf, OptionsDecideWhetherBytesAreText)
{
    const std::string text = file("text", "3e00");
    EXPECT_EQ(use({text}, {.raw = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("text, 4"));
    EXPECT_EQ(use({text}, {.hex = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("text, 2"));
    EXPECT_EQ(use({file("latin", "3e00 # B\xfcro")}, {.hex = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("latin, 2"));
    EXPECT_EQ(use({file("raw", message_)}, {.hex = TRUE}), malformed);
    EXPECT_EQ(said_, "mdm-msg: raw:1:2: '\\x00' is no hex digit\n");
}

TEST_F(InputOf, BadHexTextNamesItsPlace)
{
    EXPECT_EQ(use({file("a", "00 11\n\n00 11 22 33 44 0g"), file("b", "00")}), malformed);
    EXPECT_EQ(said_, "mdm-msg: a:3:17: 'g' is no hex digit\n");
    EXPECT_THAT(troubles_, ElementsAre("3:17: 'g' is no hex digit"));
    EXPECT_THAT(used_, ElementsAre("b, 1"));
}

TEST_F(InputOf, LettersThatAreNoAsciiDoNotMakeTextRaw)
{
    EXPECT_EQ(use({file("comment", "3e00 # B\u00fcro")}), whole);
    EXPECT_THAT(used_, ElementsAre("comment, 2"));
    EXPECT_EQ(use({file("copied", "3e 00\u00a007")}), malformed);
    EXPECT_EQ(said_, "mdm-msg: copied:1:6: '\\u{a0}' is no hex digit\n");
}

TEST_F(InputOf, AnEmptyFileIsAMessageOfNoBytes)
{
    EXPECT_EQ(use({file("a", ""), file("b", " # nothing\n")}), whole);
    EXPECT_THAT(used_, ElementsAre("a, 0: the file is empty", "b, 0: the text has no bytes"));
}

TEST_F(InputOf, AFileThatCannotBeReadIsNamed)
{
    const std::string secret = file("secret", message_);
    std::filesystem::permissions(secret, std::filesystem::perms::none);
    const test::Unprivileged unprivileged;
    EXPECT_EQ(use({secret, path(""), path("missing"), file("a", message_)}), unreadable);
    EXPECT_EQ(said_, "mdm-msg: secret: cannot be read: Permission denied\n"
                     "mdm-msg: : cannot be read: Is a directory\n"
                     "mdm-msg: missing: cannot be read: No such file or directory\n");
    EXPECT_EQ(troubles_.size(), 3U);
    EXPECT_THAT(used_, ElementsAre("a, 52"));
}

TEST_F(InputOf, AReadErrorIsNamed)
{
    EXPECT_EQ(use({"/proc/self/mem"}), unreadable);
    EXPECT_EQ(said_, "mdm-msg: /proc/self/mem: cannot be read: Input/output error\n");
}

TEST_F(InputOf, AFileOfUnknownSizeIsRead)
{
    EXPECT_EQ(use({"/proc/self/cmdline"}, {.raw = TRUE}), whole);
    ASSERT_EQ(bytes_.size(), 1U);
    EXPECT_GT(bytes_.front().size(), 5U);
}

TEST_F(InputOf, ALargeFileIsMapped)
{
    const std::string large = file("large", "");
    std::filesystem::resize_file(large, (1U << 20) + 1);
    EXPECT_EQ(use({large}), whole);
    EXPECT_THAT(used_, ElementsAre("large, 1048577"));
}

TEST_F(InputOf, TheLargestStatusCounts)
{
    result_ = malformed;
    EXPECT_EQ(use({file("a", message_)}), malformed);
    EXPECT_EQ(use({path("missing"), path("a")}), unreadable);
    EXPECT_EQ(use({path("a"), path("missing")}), unreadable);
}

TEST_F(InputOf, AStreamIsItsMessages)
{
    const Content other = test::framed(62, {}, "hi");  // 42 bytes
    const std::string stream = file("s", joined({message_, other, message_}));
    EXPECT_EQ(use({stream}, {.stream = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("s: message 1 at byte 0, 52", "s: message 2 at byte 52, 42",
                                   "s: message 3 at byte 94, 52"));
    EXPECT_EQ(bytes_[1], other);
    EXPECT_EQ(use({file("one", message_)}, {.stream = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("one, 52"));
}

TEST_F(InputOf, TheLastMessageOfAStreamMayBeCut)
{
    for (const size_t size : {1U, 3U, 4U, 39U, 40U, 51U}) {
        const std::string stream = file("s", joined({message_, test::first_bytes(message_, size)}));
        EXPECT_EQ(use({stream}, {.stream = TRUE}), whole);
        EXPECT_THAT(used_, ElementsAre("s: message 1 at byte 0, 52",
                                       "s: message 2 at byte 52, " + std::to_string(size)));
    }
}

TEST_F(InputOf, AStreamEndsAtALengthThatIsTooSmall)
{
    for (const uint32_t length : {0U, 1U, 31U, 0xFFFFFFF7U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
        Content tiny = message_;
        test::put_word(tiny, 0, length);
        const std::string stream = file("s", joined({message_, tiny, message_}));
        EXPECT_EQ(use({stream}, {.stream = TRUE}), whole);
        EXPECT_THAT(used_,
                    ElementsAre("s: message 1 at byte 0, 52", "s: message 2 at byte 52, 104"));
    }
    Content least = test::framed(62, {});
    EXPECT_EQ(use({file("s", joined({least, least}))}, {.stream = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("s: message 1 at byte 0, 40", "s: message 2 at byte 40, 40"));
}

TEST_F(InputOf, AStreamMayBeHexText)
{
    EXPECT_EQ(use({file("s", hex(joined({message_, message_})))}, {.stream = TRUE}), whole);
    EXPECT_THAT(used_, ElementsAre("s: message 1 at byte 0, 52", "s: message 2 at byte 52, 52"));
}

TEST_F(InputOf, SeveralMessagesAreNotedWithoutStream)
{
    EXPECT_EQ(use({file("s", joined({message_, message_}))}), whole);
    EXPECT_THAT(used_, ElementsAre("s, 104: these are 2 messages, one behind the other; --stream "
                                   "reads them"));
    EXPECT_EQ(use({file("s", joined({message_, test::first_bytes(message_, 20)}))}), whole);
    EXPECT_THAT(used_, ElementsAre("s, 72"));
    EXPECT_EQ(use({file("s", joined({message_, Content(52)}))}), whole);
    EXPECT_THAT(used_, ElementsAre("s, 104"));
}

TEST_F(InputOf, AWarningBelongsToTheLastMessage)
{
    const std::string text = file(
        "s", R"(write(3, ")" + [this] {
            std::string escapes;
            for (const uint8_t byte : joined({message_, message_})) {
                escapes += "\\x" + hex(Bytes(&byte, 1));
            }
            return escapes;
        }() + "\"..., 999) = 999");
    EXPECT_EQ(use({text}, {.stream = TRUE}), whole);
    ASSERT_EQ(used_.size(), 2U);
    EXPECT_EQ(used_[0], "s: message 1 at byte 0, 52");
    EXPECT_THAT(used_[1], HasSubstr("strace has cut the string in line 1"));
    EXPECT_EQ(use({text}), whole);
    EXPECT_THAT(used_[0], HasSubstr("strace has cut the string in line 1"));
}

TEST_F(InputOf, AFileAboveFourGibibytesIsRefusedWithoutStream)
{
    if (sizeof(size_t) == 4) {
        GTEST_SKIP() << "such a file cannot be mapped";
    }
    const std::string huge = file("huge", message_);
    std::filesystem::resize_file(huge, (uint64_t{4} << 30) + 52);
    EXPECT_EQ(use({huge}), malformed);
    EXPECT_EQ(said_, "mdm-msg: huge: the file is larger than 4 GiB, and no message is; --stream "
                     "reads several messages\n");
    EXPECT_THAT(used_, IsEmpty());
    EXPECT_EQ(use({huge}, {.stream = TRUE}), malformed);
    EXPECT_THAT(used_, ElementsAre("huge: message 1 at byte 0, 52"));
    EXPECT_EQ(said_, "mdm-msg: huge: message 2 at byte 52 is larger than 4 GiB\n");
}

}  // namespace
}  // namespace mdm::msg::input_test
