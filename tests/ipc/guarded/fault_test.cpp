// SPDX-License-Identifier: Apache-2.0
//
// The fault that ipc_open() reports, to the byte. Each message knows the steps of reading it. A cut
// or a false count must hit the right step, and the fault must say so.
#include <algorithm>
#include <initializer_list>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include "mdm/guarded.h"
#include "support/fault.hpp"
#include "support/format.hpp"
#include "support/guard_page.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test::guarded_fault_test {
namespace {

constexpr uint32_t most = std::numeric_limits<uint32_t>::max();

// The fault of bytes that are opened.
const std::string none = text_of(untouched_fault);

std::string fault_of(const uint8_t *buffer, size_t length)
{
    const LogRecorder log(MDM_LOG_NONE);
    ipc_fault_t fault = untouched_fault;
    const Opened msg(ipc_open(buffer, static_cast<uint32_t>(length), &fault));
    EXPECT_EQ(msg != nullptr, is_untouched(fault));
    return text_of(fault);
}

std::string fault_of(const Bytes &bytes)
{
    static GuardedBytes buffer(Bytes(4096));  // mapped once, because so many need it
    buffer.assign(bytes);
    return fault_of(buffer.data(), buffer.size());
}

Bytes with_word(Bytes bytes, size_t offset, uint32_t value)
{
    put_word(bytes, offset, value);
    return bytes;
}

// The envelope.

TEST(Fault, OfNoBytesIsTheLengthField)
{
    EXPECT_EQ(fault_of(nullptr, 0), text_of({0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(nullptr, 100), text_of({0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(Bytes{}), text_of({0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(hex("20")), text_of({0, 4, 1, "header.length"}));
    EXPECT_EQ(fault_of(hex("20 00 00")), text_of({0, 4, 3, "header.length"}));
}

TEST(Fault, OfAFalseLengthIsWhatItClaims)
{
    const Bytes bytes = framed(19, {});
    EXPECT_EQ(fault_of(with_word(bytes, 0, 33)), text_of({0, 41, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 31)), text_of({0, 39, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0)), text_of({0, 8, 40, "header.length"}));
    EXPECT_EQ(fault_of(first_bytes(bytes, 39)), text_of({0, 40, 39, "header.length"}));
    EXPECT_EQ(fault_of(bytes + hex("00")), text_of({0, 40, 41, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0x7FFFFFFF)),
              text_of({0, 0x80000007, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0xFFFFFFF7)), text_of({0, most, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0xFFFFFFF8)), text_of({0, most, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, most)), text_of({0, most, 40, "header.length"}));
}

// In 32 bits the length field and 8 would wrap to the number of these bytes.
TEST(Fault, OfALengthThatWrapsIsTheLengthField)
{
    EXPECT_EQ(fault_of(hex("FC FF FF FF")), text_of({0, most, 4, "header.length"}));
    EXPECT_EQ(fault_of(hex("FF FF FF FF 13 00 00")), text_of({0, most, 7, "header.length"}));
}

TEST(Fault, OfAMessageWithoutAWholeHeaderIsItsLength)
{
    const Bytes bytes = framed(19, {});
    for (uint32_t length = 8; length < 40; ++length) {
        EXPECT_EQ(fault_of(cut(bytes, length)), text_of({0, 40, length, "header.length"}));
    }
}

TEST(Fault, OfATypeThatIsNoneIsTheType)
{
    for (const uint8_t type : hex("00 51 80 FF")) {
        EXPECT_EQ(fault_of(framed(type, hex("01 02"))), text_of({4, 1, 38, "header.type"}));
    }
}

TEST(Fault, IsFoundInTheLengthBeforeTheType)
{
    EXPECT_EQ(fault_of(cut(framed(0, {}), 39)), text_of({0, 40, 39, "header.length"}));
}

TEST(Fault, OfALengthThatNoMessageHasIsFoundWithoutReadingOn)
{
    if (sizeof(void *) == 4) {
        GTEST_SKIP() << "no address space for 4 GiB";
    }
    constexpr size_t length = most;
    void *zeros =
        mmap(nullptr, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(zeros, MAP_FAILED);
    EXPECT_EQ(fault_of(static_cast<uint8_t *>(zeros), length),
              text_of({0, 8, most, "header.length"}));
    munmap(zeros, length);
}

TEST(Fault, OfAHeaderThatItsTextPushesOutIsTheFieldThatIsHit)
{
    const Bytes bytes = framed(19, {}, "12345678");
    EXPECT_EQ(fault_of(bytes), none);
    EXPECT_EQ(fault_of(cut(bytes, 47)), text_of({44, 4, 3, "header.hdr_word5"}));
    EXPECT_EQ(fault_of(cut(bytes, 44)), text_of({44, 4, 0, "header.hdr_word5"}));
    EXPECT_EQ(fault_of(cut(bytes, 43)), text_of({40, 4, 3, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(cut(bytes, 40)), text_of({40, 4, 0, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 13)), text_of({45, 4, 3, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 17)), text_of({45, 4, 3, "header.hdr_word7"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 21)), text_of({45, 4, 3, "header.hdr_word6"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 28)), text_of({48, 4, 0, "header.hdr_word3"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 29)), text_of({20, 29, 28, "header.hdr_text"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, most)), text_of({20, most, 28, "header.hdr_text"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 0x80000000)),
              text_of({20, 0x80000000, 28, "header.hdr_text"}));
}

// The sentence.

TEST(FaultSentence, SaysWhatIsNeededAndWhatIsLeft)
{
    EXPECT_EQ(sentence({56, 12, 3, "wifi.network.ssid"}),
              "wifi.network.ssid at offset 56 needs 12 bytes, 3 are left");
    EXPECT_EQ(sentence({56, 1, 0, "misc_cb.flag6"}),
              "misc_cb.flag6 at offset 56 needs 1 byte, 0 are left");
    EXPECT_EQ(sentence({40, 4, 1, "res.type"}), "res.type at offset 40 needs 4 bytes, 1 is left");
    EXPECT_EQ(sentence({52, most, 4, "app.packages"}),
              "app.packages at offset 52 needs 4294967295 bytes or more, 4 are left");
}

// Q-GUARDED-2
TEST(FaultSentence, SaysThatASizeIsNegative)
{
    EXPECT_EQ(sentence({52, most, 4, "apn.data"}), "apn.data at offset 52 has a negative size");
    EXPECT_EQ(sentence({52, most - 1, 4, "apn.data"}),
              "apn.data at offset 52 needs 4294967294 bytes, 4 are left");
    // An array of that length could also need as many bytes.
    EXPECT_EQ(sentence({52, most, 4, "misc.array"}),
              "misc.array at offset 52 needs 4294967295 bytes or more, 4 are left");
}

// The sentence of a fault in the length field, behind the field's name.
std::string length_sentence(uint32_t needed, uint32_t left)
{
    const std::string whole = sentence({0, needed, left, "header.length"});
    EXPECT_THAT(whole, ::testing::StartsWith("header.length"));
    return whole.substr(std::min(whole.size(), sizeof "header.length" - 1));
}

TEST(FaultSentence, SaysBothLengthsThatDoNotFit)
{
    EXPECT_EQ(length_sentence(60, 57), " announces a message of 60 bytes, 57 are there");
    EXPECT_EQ(length_sentence(8, 40), " announces a message of 8 bytes, 40 are there");
    EXPECT_EQ(length_sentence(40, 41), " announces a message of 40 bytes, 41 are there");
    EXPECT_EQ(length_sentence(most, 41),
              " announces a message of 4294967295 bytes or more, 41 are there");
}

// The fault does not tell which value the length field has.
TEST(FaultSentence, SaysHowLongAMessageIsAtLeast)
{
    EXPECT_EQ(length_sentence(40, 39), ": a message has 40 bytes or more, 39 are there");
    EXPECT_EQ(length_sentence(40, 1), ": a message has 40 bytes or more, 1 is there");
    EXPECT_EQ(length_sentence(41, 39), " announces a message of 41 bytes, 39 are there");
}

TEST(FaultSentence, SaysThatNotEvenALengthIsThere)
{
    EXPECT_EQ(length_sentence(4, 3), " at offset 0 needs 4 bytes, 3 are left");
    EXPECT_EQ(length_sentence(4, 0), " at offset 0 needs 4 bytes, 0 are left");
}

TEST(FaultSentence, SaysThatATypeIsNone)
{
    EXPECT_EQ(sentence({4, 1, 36, "header.type"}), "header.type at offset 4 is no message type");
}

TEST(FaultSentence, SaysWhatIsMissing)
{
    EXPECT_EQ(sentence({0, 0, 0, "message"}), "message is missing");
    EXPECT_EQ(sentence({40, 0, 0, "wifi.data"}), "wifi.data is missing");
    EXPECT_EQ(sentence({40, 0, 0, "phone_res.ext.detail"}), "phone_res.ext.detail is missing");
    EXPECT_EQ(sentence({60, 0, 17, "app_res.item.name"}), "app_res.item.name is missing");
}

TEST(FaultSentence, SaysWhatCannotBeSent)
{
    EXPECT_EQ(sentence({40, 0, 0, "eas.data_size"}),
              "eas.data_size is no size that the payload can be sent with");
    EXPECT_EQ(sentence({40, 0, 0, "phone_res.type"}), "phone_res.type is no type that can be sent");
    EXPECT_EQ(sentence({4, 0, 0, "header.type"}), "header.type is no type that can be sent");
    EXPECT_EQ(sentence({52, 0, 9, "app.packages"}),
              "app.packages has a null element, or is not handed over by its first cell");
    EXPECT_EQ(sentence({0, 40, 0, "header.length"}),
              "header.length: the message adds up to no size that it can have");
}

TEST(FaultSentence, SaysHowMuchMemoryCouldNotBeHad)
{
    EXPECT_EQ(sentence({0, 4000, 0, "memory"}), "there is no memory for 4000 bytes");
    EXPECT_EQ(sentence({0, most, 0, "memory"}), "there is no memory for 4294967295 bytes or more");
}

// A fault that no refusal has written.
TEST(FaultSentence, SaysSoOfAFaultThatNobodyHasWritten)
{
    EXPECT_EQ(sentence({}), "there is no fault");
    EXPECT_EQ(sentence({1, 2, 3, ""}), "there is no fault");
}

// A fault's path is the library's own; a longer one is cut, and does no harm.
TEST(FaultSentence, CutsAPathThatIsLongerThanAnyField)
{
    const std::string path(1000, 'p');
    EXPECT_EQ(sentence({1, 2, 3, path.c_str()}), std::string(255, 'p'));
}

// Bodies: some by hand.

TEST(Fault, OfAPairIsTheStringThatIsCut)
{
    // 40 type, 44 param, 48 data_size, 52 count, 56 "home", 60 count, 64 "on"
    const Bytes bytes = framed(7, head_bytes(305, 1) + str("home") + str("on"));
    EXPECT_EQ(fault_of(bytes), none);
    EXPECT_EQ(fault_of(cut(bytes, 65)), text_of({64, 2, 1, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 64)), text_of({64, 2, 0, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 63)), text_of({60, 4, 3, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 59)), text_of({56, 4, 3, "wifi.pair.ssid"}));
    EXPECT_EQ(fault_of(cut(bytes, 55)), text_of({52, 4, 3, "wifi.pair.ssid"}));
    EXPECT_EQ(fault_of(cut(bytes, 51)), text_of({48, 4, 3, "wifi.data_size"}));
    EXPECT_EQ(fault_of(cut(bytes, 47)), text_of({44, 4, 3, "wifi.param"}));
    EXPECT_EQ(fault_of(cut(bytes, 43)), text_of({40, 4, 3, "wifi.type"}));
}

TEST(Fault, OfAListIsItsElementsBehindTheCount)
{
    const Bytes bytes =
        framed(13, word(4) + word(0) + str("") + word(1) + word(2) + str("abc") + str("c"));
    EXPECT_EQ(fault_of(bytes), none);
    EXPECT_EQ(fault_of(with_word(bytes, 56, 3)), text_of({72, 4, 0, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 4)), text_of({60, 16, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x3FFFFFFF)),
              text_of({60, 0xFFFFFFFC, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x40000000)), text_of({60, most, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x7FFFFFFF)), text_of({60, most, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x80000000)), none);
    EXPECT_EQ(fault_of(with_word(bytes, 56, most)), none);
}

TEST(Fault, OfAnAccountsListIsWhatItsSmallestAccountsNeed)
{
    const Bytes bytes = framed(5, head_bytes(70, 1) + word(2) + Bytes(208));
    EXPECT_EQ(fault_of(bytes), none);
    EXPECT_EQ(fault_of(cut(bytes, 263)), text_of({56, 208, 207, "security.accounts"}));
    EXPECT_EQ(fault_of(with_word(bytes, 52, 3)), text_of({56, 312, 208, "security.accounts"}));
    EXPECT_EQ(fault_of(with_word(bytes, 260, 1)), text_of({264, 1, 0, "security.account.str25"}));
    EXPECT_EQ(fault_of(with_word(bytes, 72, 1)), text_of({261, 4, 3, "security.account.str25"}));
}

// Q-MISC-8, Q-GUARDED-2
TEST(Fault, OfANegativeSizeNeedsAllThereIs)
{
    const Bytes payload = hex("01 02 03 04");
    EXPECT_EQ(fault_of(framed(21, head_bytes(388, -1) + payload)),
              text_of({52, most, 4, "apn.data"}));
    EXPECT_EQ(fault_of(framed(17, head_bytes(1, INT32_MIN) + payload)),
              text_of({52, most, 4, "misc.data"}));
    EXPECT_EQ(fault_of(framed(17, head_bytes(122, -1) + payload)),
              text_of({52, most, 4, "misc.array"}));
    EXPECT_EQ(fault_of(framed(45, head_bytes(613, -4))), text_of({52, most, 0, "kiosk.data"}));
    EXPECT_EQ(fault_of(framed(47, head_bytes(631, -1) + payload)),
              text_of({52, most, 4, "container.data"}));
}

TEST(Fault, OfANegativeSizeIsNoneWhereTheSizeIsNoLength)
{
    for (const Bytes &bytes :
         {framed(11, head_bytes(104, -1) + Bytes(12)), framed(39, head_bytes(5, -1) + Bytes(8)),
          framed(21, head_bytes(389, -1) + Bytes(4)), framed(17, head_bytes(123, -1)),
          framed(17, head_bytes(127, -1) + Bytes(4)), framed(45, head_bytes(618, -1) + Bytes(4)),
          framed(47, head_bytes(640, -1)), framed(33, head_bytes(640, -1))}) {
        EXPECT_EQ(fault_of(bytes), none);
    }
}

TEST(Fault, OfAnUnknownDetailIsNone)
{
    for (const uint32_t kind : {0U, 10U, 0x80000000U, most}) {
        EXPECT_EQ(fault_of(framed(7, head_bytes(345, 1) + str("a") + word(kind))), none);
    }
}

// Bodies: all of them, by the steps of reading.

// The messages that have a body.
std::vector<GoodMessage> bodies()
{
    std::vector<GoodMessage> all = good_messages();
    std::erase_if(all, [](const GoodMessage &message) { return message.steps.empty(); });
    return all;
}

// The first step that does not find enough bytes.
std::string expected_fault(const GoodMessage &message, size_t length)
{
    const auto size = static_cast<uint32_t>(length);
    if (size < header_size) {
        return text_of({0, header_size, size, "header.length"});
    }
    for (const Step &step : message.steps) {
        const auto offset = static_cast<uint32_t>(step.offset);
        if (step.needed > size - offset) {
            return text_of(
                {offset, static_cast<uint32_t>(step.needed), size - offset, step.path.c_str()});
        }
    }
    return none;
}

void expect_faults_of_cuts(const GoodMessage &message, uint32_t discriminator)
{
    const Bytes bytes = with_word(message.bytes, 40, discriminator);
    EXPECT_EQ(fault_of(bytes), none) << message.name << ", " << discriminator;
    for (size_t length = 8; length < bytes.size(); ++length) {
        EXPECT_EQ(fault_of(cut(bytes, length)), expected_fault(message, length))
            << message.name << ", " << discriminator;
    }
}

TEST(Fault, NamesTheFieldThatACutHits)
{
    std::set<std::string> names;
    for (const GoodMessage &message : bodies()) {
        EXPECT_TRUE(names.insert(message.name).second) << message.name;
        for (const uint32_t type : discriminators_of(*message.category, *message.form)) {
            expect_faults_of_cuts(message, type);
        }
    }
}

// A good message with other values in one of its count fields.
class Recounted {
public:
    Recounted(const GoodMessage &message, const CountField &count)
        : left(static_cast<uint32_t>(message.bytes.size() - count.behind)), message_(message),
          count_(count)
    {
    }

    // Fewer bytes follow than the value counts.
    void expect_refused(uint32_t value, uint32_t needed) const
    {
        const auto offset = static_cast<uint32_t>(count_.behind);
        EXPECT_EQ(fault_with(value), text_of({offset, needed, left, count_.path.c_str()})) << value;
    }

    void expect_opened(std::initializer_list<uint32_t> values) const
    {
        for (const uint32_t value : values) {
            EXPECT_EQ(fault_with(value), none) << value;
        }
    }

    // One element more than there can be, and sizes that 32 bits cannot hold.
    void expect_many_refused() const
    {
        const uint32_t one_too_many = left / count_.smallest + 1;
        expect_refused(one_too_many, one_too_many * count_.smallest);
        const uint32_t last_exact = most / count_.smallest;
        expect_refused(last_exact, last_exact * count_.smallest);
        expect_refused(last_exact + 1, most);
        expect_refused(0x7FFFFFFF, most);
    }

    const uint32_t left;  // the number of bytes behind the field

private:
    std::string fault_with(uint32_t value) const
    {
        return fault_of(with_word(message_.bytes, count_.at, value));
    }

    const GoodMessage &message_;
    const CountField &count_;
};

template <class Check>
void for_each_count(CountField::Of of, Check check)
{
    size_t fields = 0;
    for (const GoodMessage &message : bodies()) {
        for (const CountField &count : message.counts) {
            if (count.of == of) {
                ++fields;
                SCOPED_TRACE(message.name + ": " + count.path + " at " + std::to_string(count.at));
                check(Recounted(message, count));
            }
        }
    }
    EXPECT_GT(fields, 0U);
}

TEST(Fault, OfATextIsTheLengthThatItClaims)
{
    for_each_count(CountField::Of::text, [](const Recounted &text) {
        for (const uint32_t value :
             {text.left + 1, text.left + 2, 0x7FFFFFFFU, 0x80000000U, most}) {
            text.expect_refused(value, value);
        }
    });
}

TEST(Fault, OfAListIsTheSizeOfTheElementsThatItClaims)
{
    for_each_count(CountField::Of::list, [](const Recounted &list) {
        list.expect_many_refused();
        list.expect_opened({0, 0x80000000, most});
    });
}

// The count of the list in the parameter has no sign: only 0 stands for an empty list.
// Q-MISC-7
TEST(Fault, OfAMiscListIsTheSizeOfTheElementsThatItClaims)
{
    for_each_count(CountField::Of::unsigned_list, [](const Recounted &list) {
        list.expect_many_refused();
        list.expect_refused(0x80000000, most);
        list.expect_refused(most, most);
        list.expect_opened({0});
    });
}

TEST(Fault, OfRawBytesIsTheSizeThatTheHeadClaims)
{
    const auto expect_too_large_refused = [](const Recounted &raw) {
        for (const uint32_t value : {raw.left + 1, raw.left + 2, 0x7FFFFFFFU}) {
            raw.expect_refused(value, value);
        }
        raw.expect_opened({raw.left, raw.left - 1, 0});
    };
    for_each_count(CountField::Of::size, [&](const Recounted &raw) {
        expect_too_large_refused(raw);
        raw.expect_opened({0x80000000, most});  // no payload follows
    });
    for_each_count(CountField::Of::signed_size, [&](const Recounted &raw) {
        expect_too_large_refused(raw);
        raw.expect_refused(0x80000000, most);
        raw.expect_refused(most, most);
    });
}

TEST(Fault, OfAnArrayIsTheSizeOfTheStringsThatTheHeadClaims)
{
    for_each_count(CountField::Of::array, [](const Recounted &array) {
        array.expect_many_refused();
        array.expect_refused(0x80000000, most);
        array.expect_refused(most, most);
        array.expect_opened({0});
    });
}

}  // namespace
}  // namespace mdm::test::guarded_fault_test
