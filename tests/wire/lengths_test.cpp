// SPDX-License-Identifier: Apache-2.0
//
// A list of strings is written with the lengths that sizing has kept. Where they are not that
// list's, it is measured again: the bytes are always the same.
#include "wire/lengths.hpp"

#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/no_memory.hpp"
#include "support/wire.hpp"
#include "wire/cursor.hpp"

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

namespace mdm::test::lengths_test {
namespace {

using ::testing::ElementsAre;

constexpr Log silence(MDM_NAMES("some_file", "some"), Log::Function::silent);

// A list of strings, some of them null.
class Strings {
public:
    explicit Strings(const std::vector<const char *> &texts)
    {
        for (const char *text : texts) {
            list_ = g_list_append(list_, g_strdup(text));
        }
    }
    ~Strings() { g_list_free_full(list_, g_free); }
    Strings(const Strings &) = delete;
    Strings &operator=(const Strings &) = delete;

    GList *list() const { return list_; }

private:
    GList *list_ = nullptr;
};

// Written as by a category that ends a list at its first null element.
Bytes written(const Lengths &lengths, GList *list)
{
    Bytes buffer(4096, 0xEE);
    Writer out(buffer.data(), 0, 4096, silence, &lengths);
    out.count(list, "");
    out.strings_before_null(list, "");
    buffer.resize(static_cast<size_t>(out.position() - buffer.data()));
    return buffer;
}

TEST(Lengths, AreThoseOfTheStrings)
{
    const Strings strings({"a", "", "three"});
    Lengths lengths;
    EXPECT_EQ(lengths.measure(strings.list(), silence), 3 * 4 + 6U);
    const uint32_t *known = lengths.of(strings.list());
    ASSERT_NE(known, nullptr);
    EXPECT_THAT(std::vector(known, known + 3), ElementsAre(1U, 0U, 5U));
    EXPECT_TRUE(lengths.has_all(strings.list()));
    EXPECT_EQ(lengths.count(), 3U);
}

TEST(Lengths, EndAtTheFirstNullElement)
{
    const Strings strings({"a", nullptr, "three"});
    Lengths lengths;
    EXPECT_EQ(lengths.measure(strings.list(), silence), 5U);
    ASSERT_NE(lengths.of(strings.list()), nullptr);
    EXPECT_FALSE(lengths.has_all(strings.list()));
    EXPECT_EQ(written(lengths, strings.list()), hex("03 00 00 00 01 00 00 00 61"));
}

// Written as by a category that leaves a gap in the place of a null element.
Bytes written_with_gaps(const Lengths &lengths, GList *list)
{
    Bytes buffer(64, 0xEE);
    Writer out(buffer.data(), 0, 64, silence, &lengths);
    out.strings_with_gaps(list, 2, "");
    buffer.resize(static_cast<size_t>(out.position() - buffer.data()));
    return buffer;
}

TEST(Lengths, LeaveTheGapOfANullElement)
{
    const Strings strings({"a", nullptr, "b"});
    const Strings whole({"a", "", "b"});
    Lengths lengths;
    lengths.measure(strings.list(), silence);
    EXPECT_EQ(written_with_gaps(lengths, strings.list()),
              hex("03 00 00 00 01 00 00 00 61 00 00 01 00 00 00 62"));
    lengths.measure(whole.list(), silence);
    EXPECT_EQ(written_with_gaps(lengths, whole.list()),
              hex("03 00 00 00 01 00 00 00 61 00 00 00 00 01 00 00 00 62"));
}

TEST(Lengths, DoNotLetAGuardedWriterPassItsEnd)
{
    const Strings strings({"a", "bb"});
    Lengths lengths;
    lengths.measure(strings.list(), silence);
    Bytes buffer(10);
    ipc_fault_t fault{};
    Writer out(buffer.data(), 0, 10, silence, fault, &lengths);
    out.strings_before_null(strings.list(), "it");
    EXPECT_FALSE(out);
    EXPECT_STREQ(fault.path, "it");
    EXPECT_EQ(fault.offset, 9U);
    EXPECT_EQ(fault.needed, 2U);
    EXPECT_EQ(fault.left, 1U);
}

// One message may have several lists.
TEST(Lengths, OfOneListAreNotThoseOfTheNext)
{
    const Strings first({"a", "bb", "ccc"});
    const Strings second({"dddd", "e"});
    mdm_app_control_info_t controls[2] = {{1, first.list()}, {2, second.list()}};
    GList *list = g_list_append(g_list_append(nullptr, &controls[0]), &controls[1]);
    mdm_msg_t msg = message(14);
    msg.body.app_res.type = 172;
    msg.body.app_res.data_size = 1;
    msg.body.app_res.data = list;
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(&msg, &length);
    ASSERT_NE(bytes, nullptr);
    const Bytes expected = hex("02 00 00 00 "
                               "01 00 00 00 03 00 00 00 01 00 00 00 61 02 00 00 00 62 62 "
                               "03 00 00 00 63 63 63 "
                               "02 00 00 00 02 00 00 00 04 00 00 00 64 64 64 64 01 00 00 00 65");
    EXPECT_EQ(Bytes(bytes + length - expected.size(), bytes + length), expected);
    uint32_t sealed_length = 0;
    uint8_t *sealed = ipc_seal(&msg, &sealed_length, nullptr);
    ASSERT_NE(sealed, nullptr);
    EXPECT_EQ(Bytes(sealed, sealed + sealed_length), Bytes(bytes, bytes + length));
    g_free(sealed);
    g_free(bytes);
    g_list_free(list);
}

TEST(Lengths, AreOfTheListThatWasMeasuredLast)
{
    const Strings first({"a"});
    const Strings second({"bb", "cc"});
    Lengths lengths;
    EXPECT_EQ(lengths.of(first.list()), nullptr);
    lengths.measure(first.list(), silence);
    lengths.measure(second.list(), silence);
    EXPECT_EQ(lengths.of(first.list()), nullptr);
    EXPECT_FALSE(lengths.has_all(first.list()));
    EXPECT_EQ(written(lengths, first.list()), hex("01 00 00 00 01 00 00 00 61"));
    EXPECT_EQ(written(lengths, second.list()),
              hex("02 00 00 00 02 00 00 00 62 62 02 00 00 00 63 63"));
}

// A count begins with the given cell, and a loop with the list's first one.
TEST(Lengths, AreNotThoseOfAListGivenByALaterCell)
{
    const Strings strings({"a", "bb"});
    Lengths lengths;
    lengths.measure(strings.list()->next, silence);
    EXPECT_EQ(lengths.of(strings.list()->next), nullptr);
    EXPECT_EQ(written(lengths, strings.list()->next),
              hex("01 00 00 00 01 00 00 00 61 02 00 00 00 62 62"));
}

TEST(Lengths, OfAnEmptyListAreNone)
{
    const Strings strings({"a"});
    Lengths lengths;
    lengths.measure(strings.list(), silence);
    EXPECT_EQ(lengths.measure(nullptr, silence), 0U);
    EXPECT_FALSE(lengths.has_all(nullptr));
    EXPECT_EQ(written(lengths, nullptr), hex("00 00 00 00"));
}

std::string text_of(size_t index)
{
    std::string text(index % 7, 'x');
    return text;
}

// More than there is room for at first, and than after the next allocations.
constexpr size_t many = 300;

class ManyStrings : public ::testing::Test {
protected:
    ManyStrings()
    {
        for (size_t i = 0; i < many; ++i) {
            list_ = g_list_append(list_, g_strdup(text_of(i).c_str()));
        }
        expected_.push_back(many % 256);
        expected_.push_back(many / 256);
        expected_.resize(4);
        for (size_t i = 0; i < many; ++i) {
            const std::string text = text_of(i);
            expected_.push_back(static_cast<uint8_t>(text.size()));
            expected_.resize(expected_.size() + 3);
            expected_.insert(expected_.end(), text.begin(), text.end());
        }
    }
    ~ManyStrings() override { g_list_free_full(list_, g_free); }

    GList *list_ = nullptr;
    Bytes expected_;
};

TEST_F(ManyStrings, AreAllKnown)
{
    Lengths lengths;
    EXPECT_EQ(lengths.measure(list_, silence), expected_.size() - 4);
    const uint32_t *known = lengths.of(list_);
    ASSERT_NE(known, nullptr);
    for (size_t i = 0; i < many; ++i) {
        EXPECT_EQ(known[i], text_of(i).size());
    }
    EXPECT_EQ(written(lengths, list_), expected_);
}

TEST_F(ManyStrings, AreMeasuredAgainWithoutMemory)
{
    for (size_t allocations = 0; allocations < 3; ++allocations) {
        Lengths lengths;
        {
            const NoMemory no_memory(allocations);
            EXPECT_EQ(lengths.measure(list_, silence), expected_.size() - 4);
        }
        EXPECT_EQ(lengths.of(list_), nullptr);
        EXPECT_FALSE(lengths.has_all(list_));
        EXPECT_EQ(written(lengths, list_), expected_);
        EXPECT_EQ(written(lengths, nullptr), hex("00 00 00 00"));
    }
}

TEST_F(ManyStrings, AreKnownAgainOnceThereIsMemory)
{
    Lengths lengths;
    {
        const NoMemory no_memory;
        lengths.measure(list_, silence);
    }
    lengths.measure(list_, silence);
    EXPECT_NE(lengths.of(list_), nullptr);
    EXPECT_EQ(written(lengths, list_), expected_);
}

// A count on the wire has 32 bits. ThreadSanitizer would keep a shadow of every byte of such a
// text.
#if SIZE_MAX > UINT32_MAX && !__has_feature(thread_sanitizer)

// 2^32 + 1 letters, which are the same few in memory.
class HugeText {
public:
    HugeText()
    {
        const int file = memfd_create("letters", MFD_CLOEXEC);
        std::string letters(block, 'x');
        EXPECT_EQ(write(file, letters.data(), block), static_cast<ssize_t>(block));
        begin_ = static_cast<char *>(mmap(nullptr, mapped, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        for (size_t offset = 0; offset < mapped - block; offset += block) {
            EXPECT_NE(mmap(begin_ + offset, block, PROT_READ, MAP_PRIVATE | MAP_FIXED, file, 0),
                      MAP_FAILED);
        }
        close(file);
        begin_[mapped - block] = 'x';  // the rest of the last block is zero
    }
    ~HugeText() { munmap(begin_, mapped); }
    HugeText(const HugeText &) = delete;
    HugeText &operator=(const HugeText &) = delete;

    char *text() const { return begin_; }

private:
    static constexpr size_t block = size_t{1} << 20;
    static constexpr size_t mapped = (size_t{1} << 32) + block;

    char *begin_;
};

char *huge_text()
{
    static const HugeText huge;
    return huge.text();
}

TEST(LengthsOfAHugeText, AreNotKnown)
{
    GList *list = g_list_append(nullptr, huge_text());
    Lengths lengths;
    EXPECT_EQ(lengths.measure(list, silence), 4 + 1U);
    EXPECT_EQ(lengths.of(list), nullptr);
    EXPECT_FALSE(lengths.has_all(list));
    g_list_free(list);
}

TEST(LengthsOfAHugeText, LetNobodySealIt)
{
    GList *list = g_list_append(nullptr, huge_text());
    mdm_msg_t msg = message(13);
    msg.body.app.type = 4;
    msg.body.app.data_size = 1;
    msg.body.app.data = list;
    uint32_t length = 0;
    ipc_fault_t fault{};
    EXPECT_EQ(ipc_seal(&msg, &length, &fault), nullptr);
    EXPECT_STREQ(fault.path, "app.packages");
    EXPECT_EQ(fault.needed, UINT32_MAX);
    EXPECT_EQ(fault.left, 1U);

    msg.body.app.data = nullptr;
    msg.body.app.data_size = 0;
    msg.hdr_text = huge_text();
    EXPECT_EQ(ipc_seal(&msg, &length, &fault), nullptr);
    EXPECT_STREQ(fault.path, "header.hdr_text");
    EXPECT_EQ(fault.needed, UINT32_MAX);
    g_list_free(list);
}

#else

TEST(LengthsOfAHugeText, NeedMoreMemoryThanIsHere)
{
    GTEST_SKIP() << "no address space for 4 GiB, or too much shadow memory";
}

#endif

}  // namespace
}  // namespace mdm::test::lengths_test
