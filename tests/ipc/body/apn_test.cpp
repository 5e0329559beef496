// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::apn_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::StrEq;

constexpr Handlers apn(21);

constexpr std::array<uint32_t, 2> profile_types = {387, 393};
constexpr std::array<uint32_t, 3> list_types = {389, 390, 391};

bool is_profile(uint32_t type)
{
    return std::ranges::find(profile_types, type) != profile_types.end();
}

bool is_list(uint32_t type)
{
    return std::ranges::find(list_types, type) != list_types.end();
}

// Each type of a profile or a list, and a few of the others.
constexpr std::array<uint32_t, 9> some_types = {387, 393, 389, 390, 391, 388, 392, 0, 0x80000183};

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::apn>(type, data_size, data);
}

// No two of its fields are alike.
mdm_apn_account_t full_profile()
{
    return {0x20,           0xFFFFFF21,     borrowed("home"), borrowed("3"), borrowed("4"),
            borrowed("5"),  borrowed("6"),  borrowed("7"),    borrowed("8"), borrowed("9"),
            borrowed("10"), borrowed("11"), borrowed("12"),   borrowed("N"), borrowed("14")};
}

const Bytes profile_bytes =
    hex("20 00 00 00 21 FF FF FF 04 00 00 00 68 6F 6D 65 01 00 00 00 33 01 00 00 00 34 "
        "01 00 00 00 35 01 00 00 00 36 01 00 00 00 37 01 00 00 00 38 01 00 00 00 39 "
        "02 00 00 00 31 30 02 00 00 00 31 31 02 00 00 00 31 32 01 00 00 00 4E 02 00 00 00 31 34");
constexpr int32_t profile_size = 8 + 13 * 4 + 20;
const Bytes list_bytes = hex("02 00 00 00") + profile_bytes + hex("30 00 00 00") + Bytes(56);

// A payload of the type, as it travels; a raw one for a data_size of 4.
Bytes payload_bytes(uint32_t type)
{
    if (is_profile(type)) {
        return profile_bytes;
    }
    return is_list(type) ? list_bytes : hex("01 02 FE 34");
}

// The body that arrives with a payload of the type, and its blocks.
Arrival arrival(uint32_t type, int32_t data_size)
{
    return receive(apn, head_bytes(type, data_size) + payload_bytes(type));
}

const mdm_apn_account_t &profile_at(const void *record)
{
    return *static_cast<const mdm_apn_account_t *>(record);
}

std::array<char *, 13> strings_of(const mdm_apn_account_t &profile)
{
    return {profile.profile_name, profile.str3,  profile.str4, profile.str5,  profile.str6,
            profile.str7,         profile.str8,  profile.str9, profile.str10, profile.str11,
            profile.str12,        profile.str13, profile.str14};
}

void expect_full(const mdm_apn_account_t &profile)
{
    EXPECT_EQ(profile.num0, 0x20U);
    EXPECT_EQ(profile.num1, 0xFFFFFF21U);
    EXPECT_THAT(strings_of(profile),
                ElementsAre(StrEq("home"), StrEq("3"), StrEq("4"), StrEq("5"), StrEq("6"),
                            StrEq("7"), StrEq("8"), StrEq("9"), StrEq("10"), StrEq("11"),
                            StrEq("12"), StrEq("N"), StrEq("14")));
}

// The result, the stored data_size and the lines of one call of the size handler.
void expect_sizes(mdm_body_t &sent, uint32_t size, int32_t data_size)
{
    const std::string text = "size [" + std::to_string(static_cast<int32_t>(size)) + "]";
    LogRecorder log;
    EXPECT_EQ(apn.size(&sent), size);
    EXPECT_EQ(sent.apn.data_size, data_size);
    EXPECT_THAT(log.take(), ElementsAre(enter(apn.size), info(apn.size, text), leave(apn.size)));
}

TEST(Apn, ProfileCarriesTwoNumbersAndThirteenStrings)
{
    for (const uint32_t type : profile_types) {
        mdm_apn_account_t record = full_profile();
        mdm_body_t sent = body(type, 3, &record);
        expect_sizes(sent, 12 + 3 + profile_size, 3 + profile_size);
        const Bytes bytes = apn.write(&sent);
        EXPECT_EQ(bytes, head_bytes(type, 3 + profile_size) + profile_bytes);
        EXPECT_EQ(sent.apn.data, &record);

        auto [back, blocks] = arrival(type, profile_size);
        expect_headed<&mdm_body_t::apn>(back, type, profile_size);
        const mdm_apn_account_t &profile = profile_at(back.apn.data);
        expect_full(profile);
        ASSERT_EQ(blocks.size(), 1U + 13);
        EXPECT_EQ(blocks.front(), (Block{&profile, sizeof profile}));
        EXPECT_EQ(blocks.back(), (Block{profile.str14, 3}));
        apn.free(&back);
    }
}

// Q-APN-1
TEST(Apn, ProfilesSizeAddsToDataSizeWithEveryCall)
{
    mdm_apn_account_t record{};
    record.num0 = 1;
    record.num1 = 2;
    const Bytes payload = hex("01 00 00 00 02 00 00 00") + Bytes(52);
    for (const uint32_t type : profile_types) {
        mdm_body_t sent = body(type, 1, &record);
        expect_sizes(sent, 73, 61);
        EXPECT_EQ(apn.write(&sent), head_bytes(type, 61) + payload);
        expect_sizes(sent, 133, 121);
        EXPECT_EQ(apn.write(&sent), head_bytes(type, 121) + payload);

        sent.apn.data_size = -1;
        expect_sizes(sent, 71, 59);
        sent.apn.data_size = INT32_MIN;
        expect_sizes(sent, 0x80000000U + 72, INT32_MIN + 60);
        sent.apn.data_size = -60;
        expect_sizes(sent, 12, 0);
        EXPECT_EQ(apn.write(&sent), head_bytes(type, 0));
    }
}

// Q-APN-1
TEST(Apn, ProfileMessageEndsWithAsManyZeroBytesAsDataSizeHeld)
{
    mdm_apn_account_t record{};
    record.num0 = 1;
    record.num1 = 2;
    mdm_msg_t msg = message(apn.type);
    msg.body = body(387, 1, &record);
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()),
              hex("83 01 00 00 04 03 02 01 3D 00 00 00 01 00 00 00 02 00 00 00") + Bytes(53));
    serialize(msg);
    EXPECT_EQ(msg.body.apn.data_size, 121);

    mdm_msg_t arrived{};
    EXPECT_EQ(deserialize(arrived, bytes), 0);
    EXPECT_EQ(arrived.body.apn.data_size, 61);
    const mdm_apn_account_t &profile = profile_at(arrived.body.apn.data);
    EXPECT_EQ(profile.num0, 1U);
    EXPECT_EQ(profile.num1, 2U);
    EXPECT_THAT(strings_of(profile), Each(IsNull()));
    ipc_free(&arrived);
}

// Q-BODY-8
TEST(Apn, ListCarriesACountAndProfilesAndCountsTheWholeBody)
{
    constexpr int32_t size = 16 + profile_size + 60;
    mdm_apn_account_t first = full_profile();
    mdm_apn_account_t second{};
    second.num0 = 0x30;
    GList *list = list_of({&first, &second});
    for (const uint32_t type : list_types) {
        mdm_body_t sent = body(type, -5, list);
        expect_sizes(sent, size, size);
        expect_sizes(sent, size, size);
        EXPECT_EQ(apn.write(&sent), head_bytes(type, size) + list_bytes);

        auto [back, blocks] = arrival(type, size);
        const auto profiles = elements_of(back.apn.data);
        ASSERT_EQ(profiles.size(), 2U);
        expect_full(profile_at(profiles[0]));
        EXPECT_EQ(profile_at(profiles[1]).num0, 0x30U);
        EXPECT_EQ(profile_at(profiles[1]).num1, 0U);
        EXPECT_THAT(strings_of(profile_at(profiles[1])), Each(IsNull()));
        EXPECT_EQ(blocks.size(), 2U + 13 + 2);
        apn.free(&back);
    }
    g_list_free(list);
}

TEST(Apn, ListOfTwoProfilesWithNullStringsIs136Bytes)
{
    mdm_apn_account_t record{};
    GList *list = list_of({&record, &record});
    mdm_body_t sent = body(390, 1, list);
    expect_sizes(sent, 136, 136);
    EXPECT_EQ(apn.write(&sent), head_bytes(390, 136) + hex("02 00 00 00") + Bytes(120));
    g_list_free(list);
}

TEST(Apn, ListsOfManyProfilesTravel)
{
    expect_many_records_to_travel(apn, 391, &mdm_apn_account_t::num1, 200, 16 + 200 * 60);
}

TEST(Apn, ListCountBelow1IsReceivedAsNull)
{
    for (const uint32_t type : list_types) {
        expect_counts_below_1_as_null(apn, type);
    }
}

// Q-BODY-9
TEST(Apn, ListWithANullElementHasNoSize)
{
    mdm_apn_account_t record{};
    expect_no_size_with_null_element(apn, 390, &record, "acconts is NULL");
}

// Q-BODY-9
TEST(Apn, NullElementIsCountedButNeitherWrittenNorLogged)
{
    mdm_apn_account_t unnamed{};
    mdm_apn_account_t named = full_profile();
    GList *list = list_of({nullptr, &unnamed, nullptr, &named});
    mdm_body_t sent = body(389, 9, list);
    LogRecorder log;
    const Bytes bytes = apn.write(&sent);
    EXPECT_THAT(log.take(), ElementsAre(enter(apn.set), info(apn.set, "ProfileName [(null)]"),
                                        info(apn.set, "ProfileName [home]"), leave(apn.set)));
    EXPECT_EQ(bytes,
              hex("85 01 00 00 04 03 02 01 09 00 00 00 04 00 00 00") + Bytes(60) + profile_bytes);
    g_list_free(list);
}

TEST(Apn, EveryOtherTypeIsRaw)
{
    for (const uint32_t type : {388U, 392U, 386U, 394U, 131U, 643U, 0U, 0xFFFFFFFFU}) {
        mdm_body_t sent = body(type, 4, sentinel());
        expect_sizes(sent, 16, 4);
        expect_raw_bytes_to_travel(apn, type);
    }
}

// Q-BODY-4
TEST(Apn, RawSizeTrustsTheSignOfDataSize)
{
    expect_raw_size_with_sign(apn, 388, sentinel());
    mdm_body_t sent = body(388, -4, sentinel());
    expect_sizes(sent, 8, -4);
}

TEST(Apn, TextsOfEveryKindTravel)
{
    std::string text(500, 'y');
    mdm_apn_account_t record{};
    record.profile_name = borrowed("\xC3\xA4\xFF\x01");
    record.str3 = borrowed("");
    record.str5 = text.data();
    record.str14 = borrowed("x");
    mdm_body_t sent = body(387, 1, &record);
    expect_sizes(sent, 73 + 505, 61 + 505);
    mdm_body_t back{};
    EXPECT_EQ(apn.read(&back, apn.write(&sent)), 72U + 505);
    EXPECT_THAT(strings_of(profile_at(back.apn.data)),
                ElementsAre(StrEq("\xC3\xA4\xFF\x01"), IsNull(), IsNull(), StrEq(text), IsNull(),
                            IsNull(), IsNull(), IsNull(), IsNull(), IsNull(), IsNull(), IsNull(),
                            StrEq("x")));
    apn.free(&back);
}

// Q-BODY-3
TEST(Apn, NoPayloadIsTheHeadAlone)
{
    for (const uint32_t type : some_types) {
        for (const mdm_body_t &sent : {body(type, 0, sentinel()), body(type, 1, nullptr),
                                       body(type, -1, nullptr), body(type, INT32_MIN, nullptr)}) {
            LogRecorder log;
            expect_head_alone(apn, sent);
            EXPECT_THAT(log.take(), ElementsAre(enter(apn.size), leave(apn.size), enter(apn.set),
                                                leave(apn.set)));
        }
        expect_head_received(apn, type, 0, nullptr);
    }
}

// Q-BODY-2
TEST(Apn, NegativeDataSizeIsAPayloadOfAProfileOrAList)
{
    for (const uint32_t type : {387U, 389U, 390U, 391U, 393U}) {
        for (const int32_t data_size : {-1, INT32_MIN}) {
            mdm_body_t back = arrival(type, data_size).body;
            EXPECT_EQ(back.apn.data_size, data_size);
            EXPECT_EQ(apn.write(&back), head_bytes(type, data_size) + payload_bytes(type));
            apn.free(&back);
        }
    }
}

TEST(Apn, TypesOfEachForm)
{
    const Bytes payload = hex("01 00 00 00") + Bytes(60);
    for (const uint32_t type : swept_types({387, 389, 390, 391, 393})) {
        const size_t consumed = is_profile(type) ? 72 : is_list(type) ? 76 : 13;
        mdm_body_t back{};
        EXPECT_EQ(apn.read(&back, head_bytes(type, 1) + payload), consumed) << type;
        EXPECT_EQ(apn.size(&back), is_profile(type) ? 73 : consumed) << type;
        EXPECT_EQ(apn.write(&back).size(), consumed) << type;
        const bool keeps_data = is_profile(type) || is_list(type);
        EXPECT_EQ(apn.release(&back).size(), is_list(type) ? 2U : 1U) << type;
        EXPECT_EQ(back.apn.data != nullptr, keeps_data) << type;
        EXPECT_EQ(back.apn.data_size != 0, keeps_data) << type;
    }
}

// Q-BODY-7
TEST(Apn, FreeReleasesAProfileOrAListAndLeavesTheBody)
{
    for (const uint32_t type : {387U, 389U, 390U, 391U, 393U}) {
        mdm_body_t back = arrival(type, -1).body;
        auto *list = static_cast<GList *>(back.apn.data);
        std::vector<const void *> profiles = {back.apn.data};
        std::vector<const void *> cells;
        if (is_list(type)) {
            back.apn.data = list = g_list_insert(list, nullptr, 1);
            profiles = {list->data, list->next->next->data};
            cells = cells_of(list);
        }
        const void *data = back.apn.data;
        std::vector<const void *> expected;
        std::ranges::copy(strings_of(profile_at(profiles[0])), std::back_inserter(expected));
        std::ranges::copy(profiles, std::back_inserter(expected));
        std::ranges::copy(cells, std::back_inserter(expected));
        LogRecorder log;
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (std::ranges::find(profiles, block) != profiles.end()) {
                EXPECT_THAT(strings_of(profile_at(block)), Each(IsNull()));
            }
        });
        apn.free(&back);
        trace.stop();
        EXPECT_EQ(trace.released(), expected);
        EXPECT_EQ(log.take(), enter_and_leave(apn.free));
        EXPECT_EQ(back.apn.data, data);
        EXPECT_EQ(back.apn.data_size, -1);
    }
}

TEST(Apn, FreeReleasesARawPayloadAndResetsTheBody)
{
    for (const uint32_t type : {388U, 392U}) {
        expect_raw_bytes_released(apn, type, 4, 0, enter_and_leave(apn.free));
    }
}

// Q-BODY-5
TEST(Apn, FreeWithoutAPayloadReleasesNothing)
{
    for (const uint32_t type : some_types) {
        expect_no_release(apn, body(type, 3, nullptr), enter_and_leave(apn.free));
        expect_no_release(apn, body(type, 0, sentinel()), enter_and_leave(apn.free));
    }
}

TEST(Apn, BothMessageTypesCarryEveryFormAndLeakNothing)
{
    for (const uint8_t message_type : {apn.type, uint8_t{22}}) {
        for (const uint32_t type : some_types) {
            mdm_body_t body = arrival(type, 4).body;
            const auto [journey, again] = travel_and_write_again(message_type, body);
            EXPECT_EQ(again, head_bytes(type, journey.sent.apn.data_size) + payload_bytes(type));
            EXPECT_THAT(journey.kept, IsEmpty());
            apn.free(&body);
        }
    }
}

// Q-APN-2
TEST(Apn, OnlyListsLogTheirProfilesNames)
{
    for (const uint32_t type : some_types) {
        const auto lines = [type](const Origin &function) {
            std::vector<LogLine> expected = {enter(function), leave(function)};
            if (is_list(type)) {
                expected.insert(expected.begin() + 1, {info(function, "ProfileName [home]"),
                                                       info(function, "ProfileName [(null)]")});
            }
            return expected;
        };
        const Bytes bytes = head_bytes(type, 4) + payload_bytes(type);
        mdm_body_t back{};
        LogRecorder log;
        apn.read(&back, bytes);
        EXPECT_EQ(log.take(), lines(apn.get));
        apn.write(&back);
        EXPECT_EQ(log.take(), lines(apn.set));
        apn.free(&back);
    }
}

}  // namespace
}  // namespace mdm::test::apn_test
