// SPDX-License-Identifier: Apache-2.0
//
// The two callback categories: the rules of both, then the rules of each.
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::callback_test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

const Bytes null_str(4);

Bytes words(std::initializer_list<uint32_t> values)
{
    Bytes bytes;
    for (const uint32_t value : values) {
        bytes = bytes + word(value);
    }
    return bytes;
}

// The numbers and the strings of a payload, in wire order.
using Numbers = std::vector<uint32_t>;
using Strings = std::vector<char **>;

struct Category {
    Handlers handlers;
    const char *log_name;
    Numbers numbers;     // of fill()
    Bytes number_bytes;  // the same on the wire
    void (*fill)(mdm_body_t &body);
    Numbers (*numbers_of)(const mdm_body_t &body);
    Strings (*strings_of)(mdm_body_t &body);
};

std::ostream &operator<<(std::ostream &out, const Category &category)
{
    return out << format_of(category.handlers.type)->name;
}

constexpr Handlers app_cb(61);
constexpr Handlers misc_cb(63);

const Category app_category{
    app_cb,
    "APP",
    {0x81121314},
    hex("14 13 12 81"),
    [](mdm_body_t &body) { body.app_cb.num6 = 0x81121314; },
    [](const mdm_body_t &body) { return Numbers{body.app_cb.num6}; },
    [](mdm_body_t &body) {
        return Strings{&body.app_cb.str8, &body.app_cb.str7};
    },
};

const Category misc_category{
    misc_cb,
    "MISC",
    {0xF6, 0x81222324},
    hex("F6 24 23 22 81"),
    [](mdm_body_t &body) {
        body.misc_cb.flag6 = 0xF6;
        body.misc_cb.num7 = 0x81222324;
    },
    [](const mdm_body_t &body) {
        return Numbers{body.misc_cb.flag6, body.misc_cb.num7};
    },
    [](mdm_body_t &body) { return Strings{&body.misc_cb.str8}; },
};

constexpr uint32_t some_param = 0x01020304;
constexpr uint32_t some_param2 = 0x05060708;

Bytes head(uint32_t type, uint32_t data_size)
{
    return words({type, data_size, some_param, some_param2});
}

// The fields of the head stand at the same places in both bodies, so either serves for both.
class Callback : public ::testing::TestWithParam<Category> {
protected:
    static Handlers row() { return GetParam().handlers; }
    static Strings strings_of(mdm_body_t &body) { return GetParam().strings_of(body); }

    static mdm_body_t body(uint32_t type, const std::vector<const char *> &texts = {})
    {
        mdm_body_t body{};
        body.app_cb.type = type;
        body.app_cb.aux = 0xAAAAAAAA;
        body.app_cb.param = some_param;
        body.app_cb.param2 = some_param2;
        body.app_cb.data_size = 99;
        body.app_cb.aux2 = 0xBBBBBBBB;
        GetParam().fill(body);
        for (size_t i = 0; i < texts.size() && i < strings_of(body).size(); ++i) {
            *strings_of(body)[i] = borrowed(texts[i]);
        }
        return body;
    }

    static Bytes payload(const std::vector<const char *> &texts)
    {
        Bytes bytes = GetParam().number_bytes;
        mdm_body_t any = body(0);
        for (size_t i = 0; i < strings_of(any).size(); ++i) {
            bytes = bytes + (texts[i] == nullptr ? null_str : str(texts[i]));
        }
        return bytes;
    }

    // A receiver's record that was used before: it has nothing that may be released.
    static mdm_body_t used_body()
    {
        mdm_body_t used;
        std::memset(&used, 0xEE, sizeof used);
        used.app_cb.aux = 0xCCCCCCCC;
        used.app_cb.aux2 = 0xDDDDDDDD;
        for (char **text : strings_of(used)) {
            *text = static_cast<char *>(sentinel());
        }
        return used;
    }

    static void expect_head(const mdm_body_t &body, uint32_t type, uint32_t data_size)
    {
        EXPECT_EQ(body.app_cb.type, type);
        EXPECT_EQ(body.app_cb.aux, 0xCCCCCCCCU);
        EXPECT_EQ(body.app_cb.param, some_param);
        EXPECT_EQ(body.app_cb.param2, some_param2);
        EXPECT_EQ(body.app_cb.data_size, data_size);
        EXPECT_EQ(body.app_cb.aux2, 0xDDDDDDDDU);
    }

    static void expect_untouched_payload(mdm_body_t &body)
    {
        mdm_body_t used = used_body();
        EXPECT_EQ(GetParam().numbers_of(body), GetParam().numbers_of(used));
        for (char **text : strings_of(body)) {
            EXPECT_EQ(*text, sentinel());
        }
    }

    // The lines of a handler that comes to look at `type`, which a line shows as a signed number.
    using Lines = std::vector<LogLine>;
    static Lines lines(const Origin &handler, int32_t type, const Lines &more = {})
    {
        const std::string number = "[" + std::to_string(type) + "]";
        Lines lines{enter(handler), info(handler, "Callback detail request " + number)};
        if (type != 0 && type != 1) {
            lines.push_back(critical(handler, std::string("Unknown ") + GetParam().log_name +
                                                  " callback type " + number));
        }
        lines.insert(lines.end(), more.begin(), more.end());
        lines.push_back(leave(handler));
        return lines;
    }

    static Lines size_lines(int32_t type, uint32_t size)
    {
        return lines(row().size, type, {info(row().size, "Size = " + std::to_string(size))});
    }

    static Lines null_lines(const Origin &handler, const char *text)
    {
        return {enter(handler), critical(handler, text), leave(handler)};
    }
};

const std::string long_text(350, '\xC3');
const std::vector<std::vector<const char *>> pairs_of_texts{
    {"abc", "de"},    {nullptr, nullptr},   {nullptr, "de"},
    {"abc", nullptr}, {"", "\xFF\xC3\xA9"}, {long_text.c_str(), "a"}};

TEST_P(Callback, Types0And1CarryThePayload)
{
    for (const int32_t callback_type : {0, 1}) {
        for (const auto &texts : pairs_of_texts) {
            mdm_body_t sent = body(static_cast<uint32_t>(callback_type), texts);
            const Bytes expected = payload(texts);
            const auto size = static_cast<uint32_t>(16 + expected.size());
            LogRecorder log;
            EXPECT_EQ(row().size(&sent), size);
            EXPECT_EQ(sent.app_cb.data_size, size);
            EXPECT_EQ(log.take(), size_lines(callback_type, size));
            const Bytes bytes = row().write(&sent);
            EXPECT_EQ(bytes, head(sent.app_cb.type, size) + expected);
            EXPECT_EQ(log.take(), lines(row().set, callback_type));

            mdm_body_t received = used_body();
            EXPECT_EQ(row().read(&received, bytes), size);
            EXPECT_EQ(log.take(), lines(row().get, callback_type));
            expect_head(received, sent.app_cb.type, size);
            EXPECT_EQ(GetParam().numbers_of(received), GetParam().numbers);
            for (size_t i = 0; i < strings_of(received).size(); ++i) {
                const bool empty = texts[i] == nullptr || *texts[i] == '\0';
                EXPECT_STREQ(*strings_of(received)[i], empty ? nullptr : texts[i]);
            }
            row().free(&received);
        }
    }
}

// Q-CALLBACK-3
TEST_P(Callback, EveryOtherTypeIsTheHeadAlone)
{
    std::vector<uint32_t> types{0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 0x10000, 0x10001};
    for (uint32_t callback_type = 2; callback_type <= 1000; ++callback_type) {
        types.push_back(callback_type);
    }
    for (const uint32_t callback_type : types) {
        SCOPED_TRACE(callback_type);
        const auto shown = static_cast<int32_t>(callback_type);
        mdm_body_t sent = body(callback_type, {"abc", "de"});
        LogRecorder log;
        EXPECT_EQ(row().size(&sent), 16U);
        EXPECT_EQ(sent.app_cb.data_size, 16U);
        EXPECT_EQ(log.take(), size_lines(shown, 16));
        const Bytes bytes = row().write(&sent);
        EXPECT_EQ(bytes, head(callback_type, 16));
        EXPECT_EQ(log.take(), lines(row().set, shown));

        mdm_body_t received = used_body();
        EXPECT_EQ(row().read(&received, bytes), 16U);
        EXPECT_EQ(log.take(), lines(row().get, shown));
        expect_head(received, callback_type, 16);
        expect_untouched_payload(received);

        EXPECT_THAT(row().release(&received), IsEmpty());
        EXPECT_EQ(log.take(), lines(row().free, shown));
        expect_untouched_payload(received);
    }
}

// Q-CALLBACK-2
TEST_P(Callback, ReaderStopsBehindTheHeadAtADataSizeOf0)
{
    for (const uint32_t callback_type : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        mdm_body_t received = used_body();
        LogRecorder log;
        AllocationTrace trace;
        EXPECT_EQ(row().read(&received, head(callback_type, 0)), 16U);
        trace.stop();
        expect_head(received, callback_type, 0);
        expect_untouched_payload(received);
        EXPECT_THAT(trace.kept(), IsEmpty());
        EXPECT_EQ(log.take(), enter_and_leave(row().get));
    }
}

// Q-CALLBACK-2
TEST_P(Callback, ReaderTakesThePayloadUnderAnyOtherDataSize)
{
    for (const uint32_t data_size : {1U, 15U, 16U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const Bytes bytes = head(1, data_size) + payload({"abc", "de"});
        mdm_body_t received = used_body();
        EXPECT_EQ(row().read(&received, bytes), bytes.size());
        expect_head(received, 1, data_size);
        EXPECT_EQ(GetParam().numbers_of(received), GetParam().numbers);
        EXPECT_STREQ(*strings_of(received)[0], "abc");
        row().free(&received);
        EXPECT_EQ(received.app_cb.data_size, data_size);
    }
}

TEST_P(Callback, WriterSendsWhateverDataSizeHolds)
{
    for (const uint32_t data_size : {0U, 99U, 0xFFFFFFFFU}) {
        mdm_body_t sent = body(0, {"abc", "de"});
        sent.app_cb.data_size = data_size;
        EXPECT_EQ(row().write(&sent), head(0, data_size) + payload({"abc", "de"}));
        EXPECT_EQ(sent.app_cb.data_size, data_size);
    }
}

// Q-CALLBACK-1
TEST_P(Callback, SizeIsComputedAnewEachTime)
{
    mdm_body_t sent = body(1, {"abc", "de"});
    const uint32_t size = row().size(&sent);
    EXPECT_EQ(row().size(&sent), size);
    *strings_of(sent)[0] = borrowed("ab");
    EXPECT_EQ(row().size(&sent), size - 1);
    EXPECT_EQ(sent.app_cb.data_size, size - 1);
    sent.app_cb.type = 2;
    EXPECT_EQ(row().size(&sent), 16U);
    EXPECT_EQ(sent.app_cb.data_size, 16U);
}

// Q-CALLBACK-7
TEST_P(Callback, NumbersAreLoggedAsSignedOnes)
{
    mdm_body_t sent = body(0xFFFFFFFF);
    LogRecorder log(MDM_LOG_INFO);
    row().size(&sent);
    ASSERT_EQ(log.platform_lines().size(), 3U);
    EXPECT_THAT(log.platform_lines()[0].text, EndsWith(") > Callback detail request [-1]"));
    EXPECT_THAT(log.platform_lines()[1].text,
                EndsWith(std::string(") > \033[0;31m* Critical * Unknown ") + GetParam().log_name +
                         " callback type [-1]\033[0;m"));
    EXPECT_THAT(log.platform_lines()[2].text, EndsWith(") > Size = 16"));
}

TEST_P(Callback, FreeReleasesAndNullsOneStringAfterTheOther)
{
    for (const int32_t callback_type : {0, 1}) {
        mdm_body_t received = body(static_cast<uint32_t>(callback_type));
        std::vector<const void *> texts;
        for (char **text : strings_of(received)) {
            *text = heap_text("text");
            texts.push_back(*text);
        }
        LogRecorder log;
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            bool is_null = true;  // the strings before this one
            for (size_t i = 0; i < texts.size(); ++i) {
                is_null = is_null && texts[i] != block;
                EXPECT_EQ(*strings_of(received)[i] == nullptr, is_null);
            }
        });
        row().free(&received);
        trace.stop();
        EXPECT_EQ(trace.released(), texts);
        EXPECT_EQ(log.take(), lines(row().free, callback_type));
        for (char **text : strings_of(received)) {
            EXPECT_EQ(*text, nullptr);
        }
        EXPECT_EQ(received.app_cb.data_size, 99U);
        EXPECT_EQ(GetParam().numbers_of(received), GetParam().numbers);

        EXPECT_THAT(row().release(&received), IsEmpty());
        EXPECT_EQ(log.take(), lines(row().free, callback_type));
    }
}

// Q-CALLBACK-6
TEST_P(Callback, NullArgumentsAreNamedInTheLog)
{
    mdm_body_t some = body(0);
    Bytes buffer(64);
    LogRecorder log;
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_EQ(log.take(), null_lines(row().size, "info is NULL"));
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().set, "p_msg is NULL"));
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().set, "p_data is NULL"));
    EXPECT_EQ(row().set(nullptr, nullptr), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().set, "p_msg is NULL"));
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().get, "p_msg is NULL"));
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().get, "p_data is NULL"));
    EXPECT_EQ(row().get(nullptr, nullptr), nullptr);
    EXPECT_EQ(log.take(), null_lines(row().get, "p_msg is NULL"));
    row().free(nullptr);
    EXPECT_EQ(log.take(), null_lines(row().free, "info is NULL"));
    EXPECT_EQ(buffer, Bytes(64));
    EXPECT_EQ(some.app_cb.param, some_param);
}

TEST_P(Callback, NullArgumentsFailAlikeWithTheLoggerOff)
{
    mdm_body_t some = body(0);
    Bytes buffer(64);
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    row().free(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_P(Callback, WholeMessagesLeakNothing)
{
    for (const uint32_t callback_type : {0U, 1U, 2U}) {
        const Bytes expected = callback_type < 2 ? payload({"abc", "de"}) : Bytes{};
        const auto size = static_cast<uint32_t>(16 + expected.size());
        mdm_body_t sent = body(callback_type, {"abc", "de"});
        const Journey journey = travel(row().type, sent);
        EXPECT_EQ(journey.bytes, head(callback_type, size) + expected);
        EXPECT_EQ(journey.received.body.app_cb.data_size, size);
        EXPECT_EQ(journey.allocated.size(), callback_type < 2 ? strings_of(sent).size() : 0);
        EXPECT_THAT(journey.kept, IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Both, Callback, ::testing::Values(app_category, misc_category),
                         ::testing::PrintToStringParamName());

// Q-CALLBACK-4
TEST(AppCb, CarriesTheNumberThenTheLastStringThenTheOther)
{
    mdm_body_t sent{};
    sent.app_cb = {1,          0xAAAAAAAA, 0x11121314,     0x21222324,     0,
                   0xBBBBBBBB, 0x31323334, borrowed("7!"), borrowed("8th")};
    EXPECT_EQ(app_cb.size(&sent), 33U);
    const Bytes bytes =
        hex("01 00 00 00 21 00 00 00 14 13 12 11 24 23 22 21 34 33 32 31 03 00 00 00 38 74 68 "
            "02 00 00 00 37 21");
    EXPECT_EQ(app_cb.write(&sent), bytes);

    mdm_body_t received{};
    AllocationTrace trace;
    EXPECT_EQ(app_cb.read(&received, bytes), 33U);
    trace.stop();
    EXPECT_STREQ(received.app_cb.str7, "7!");
    EXPECT_STREQ(received.app_cb.str8, "8th");
    EXPECT_THAT(trace.kept(),
                ElementsAre(Block{received.app_cb.str8, 4}, Block{received.app_cb.str7, 3}));
    EXPECT_THAT(app_cb.release(&received),
                ElementsAre(trace.kept()[0].address, trace.kept()[1].address));
}

// Q-CALLBACK-1
TEST(AppCb, WithoutStringsIs28Bytes)
{
    mdm_body_t sent{};
    EXPECT_EQ(app_cb.size(&sent), 28U);
    EXPECT_EQ(app_cb.write(&sent), words({0, 28, 0, 0, 0, 0, 0}));
}

// Q-CALLBACK-5
TEST(MiscCb, CarriesOneByteAndAnUnalignedNumberThenTheString)
{
    mdm_body_t sent{};
    sent.misc_cb = {1,          0xAAAAAAAA, 0x11121314, 0x21222324,     0,
                    0xBBBBBBBB, 0x41,       0x51525354, borrowed("8th")};
    EXPECT_EQ(misc_cb.size(&sent), 28U);
    const Bytes bytes =
        hex("01 00 00 00 1C 00 00 00 14 13 12 11 24 23 22 21 41 54 53 52 51 03 00 00 00 38 74 68");
    EXPECT_EQ(misc_cb.write(&sent), bytes);

    mdm_body_t received{};
    AllocationTrace trace;
    EXPECT_EQ(misc_cb.read(&received, bytes), 28U);
    trace.stop();
    EXPECT_EQ(received.misc_cb.flag6, 0x41);
    EXPECT_EQ(received.misc_cb.num7, 0x51525354U);
    EXPECT_STREQ(received.misc_cb.str8, "8th");
    EXPECT_THAT(trace.kept(), ElementsAre(Block{received.misc_cb.str8, 4}));
    EXPECT_THAT(misc_cb.release(&received), ElementsAre(trace.kept()[0].address));
}

TEST(MiscCb, WithoutAStringIs25Bytes)
{
    mdm_body_t sent{};
    sent.misc_cb.type = 1;
    sent.misc_cb.num7 = 0xFFFFFFFE;
    EXPECT_EQ(misc_cb.size(&sent), 25U);
    const Bytes bytes = misc_cb.write(&sent);
    EXPECT_EQ(bytes, hex("01 00 00 00 19 00 00 00 00 00 00 00 00 00 00 00 "
                         "00 FE FF FF FF 00 00 00 00"));
    mdm_body_t received{};
    EXPECT_EQ(misc_cb.read(&received, bytes), 25U);
    EXPECT_EQ(received.misc_cb.num7, 0xFFFFFFFEU);
    EXPECT_EQ(received.misc_cb.str8, nullptr);
}

}  // namespace
}  // namespace mdm::test::callback_test
