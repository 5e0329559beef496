// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::admin_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers admin(1);

char pkg[] = "alpha.app";
char text[] = "hi";
char empty[] = "";
char one[] = "x";
char non_ascii[] = "\xC3\xA4\xFF";

mdm_body_t body(uint32_t type, char *pkg_text, char *other_text)
{
    mdm_body_t body{};
    body.admin.type = type;
    body.admin.aux = 0xAAAAAAAA;
    body.admin.value = 0x01020304;
    body.admin.pkg = pkg_text;
    body.admin.text = other_text;
    body.admin.status = -2;
    return body;
}

TEST(Admin, RegistrationQueryWithoutPackageIs12Bytes)
{
    mdm_body_t sent = body(IS_CLIENT_REGISTERED, nullptr, nullptr);
    sent.admin.status = 1;
    const Bytes bytes = hex("00 00 00 00 00 00 00 00 01 00 00 00");
    EXPECT_EQ(admin.size(&sent), 12U);
    EXPECT_EQ(admin.write(&sent), bytes);

    mdm_body_t received{};
    received.admin.pkg = static_cast<char *>(sentinel());
    EXPECT_EQ(admin.read(&received, bytes), 12U);
    EXPECT_EQ(received.admin.pkg, nullptr);
    EXPECT_EQ(received.admin.status, 1);
}

TEST(Admin, RegistrationQueryCarriesTypePackageAndStatus)
{
    mdm_body_t sent = body(IS_CLIENT_REGISTERED, pkg, text);
    EXPECT_EQ(admin.size(&sent), 21U);
    EXPECT_EQ(admin.write(&sent),
              hex("00 00 00 00 09 00 00 00 61 6C 70 68 61 2E 61 70 70 FE FF FF FF"));
}

TEST(Admin, GeneralFormCarriesTypeValuePackageAndText)
{
    mdm_body_t sent = body(0x80000001, pkg, text);
    EXPECT_EQ(admin.size(&sent), 16U + 9 + 2);
    EXPECT_EQ(admin.write(&sent),
              hex("01 00 00 80 04 03 02 01 09 00 00 00 61 6C 70 68 61 2E 61 70 70 "
                  "02 00 00 00 68 69"));
}

TEST(Admin, EmptyStringsAre16BytesAndComeBackAsNull)
{
    mdm_body_t sent = body(5, empty, empty);
    EXPECT_EQ(admin.size(&sent), 16U);
    const Bytes bytes = admin.write(&sent);
    EXPECT_EQ(bytes, hex("05 00 00 00 04 03 02 01 00 00 00 00 00 00 00 00"));

    mdm_body_t received = body(0, pkg, text);
    EXPECT_EQ(admin.read(&received, bytes), 16U);
    EXPECT_EQ(received.admin.pkg, nullptr);
    EXPECT_EQ(received.admin.text, nullptr);
}

TEST(Admin, SizeCountsWhatIsWritten)
{
    std::string long_text(3000, 'y');
    for (const uint32_t type : {0U, 1U, 5U, 0xFFFFFFFFU}) {
        for (char *first : {static_cast<char *>(nullptr), empty, one, non_ascii, pkg}) {
            for (char *second : {static_cast<char *>(nullptr), empty, one, long_text.data()}) {
                mdm_body_t sent = body(type, first, second);
                EXPECT_EQ(admin.write(&sent).size(), admin.size(&sent));
            }
        }
    }
}

// Q-ADMIN-1
TEST(Admin, RegistrationQueryLeavesTheFieldsOfTheOtherForm)
{
    mdm_body_t sent = body(IS_CLIENT_REGISTERED, pkg, nullptr);
    mdm_body_t received = body(7, nullptr, static_cast<char *>(sentinel()));
    admin.read(&received, admin.write(&sent));
    EXPECT_EQ(received.admin.type, 0U);
    EXPECT_STREQ(received.admin.pkg, pkg);
    EXPECT_EQ(received.admin.status, -2);
    EXPECT_EQ(received.admin.value, 0x01020304U);
    EXPECT_EQ(received.admin.text, sentinel());
    EXPECT_EQ(received.admin.aux, 0xAAAAAAAAU);
    g_free(received.admin.pkg);
}

// Q-ADMIN-1
TEST(Admin, GeneralFormLeavesStatus)
{
    for (const uint32_t type : {1U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        mdm_body_t sent = body(type, pkg, non_ascii);
        sent.admin.value = 9;
        mdm_body_t received = body(0, nullptr, nullptr);
        received.admin.status = 77;
        AllocationTrace trace;
        admin.read(&received, admin.write(&sent));
        trace.stop();
        EXPECT_EQ(received.admin.type, type);
        EXPECT_EQ(received.admin.value, 9U);
        EXPECT_STREQ(received.admin.pkg, pkg);
        EXPECT_STREQ(received.admin.text, non_ascii);
        EXPECT_EQ(received.admin.status, 77);
        EXPECT_EQ(received.admin.aux, 0xAAAAAAAAU);
        EXPECT_THAT(trace.kept(), ElementsAre(Block{received.admin.pkg, sizeof pkg},
                                              Block{received.admin.text, sizeof non_ascii}));
        admin.free(&received);
    }
}

TEST(Admin, FreeReleasesBothStringsInOrderAndMayRunTwice)
{
    for (const uint32_t type : {0U, 5U}) {
        mdm_body_t received = body(type, heap_text("pkg"), heap_text("text"));
        const void *first = received.admin.pkg;
        const void *second = received.admin.text;
        AllocationTrace trace;
        admin.free(&received);
        admin.free(&received);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(first, second));
        EXPECT_EQ(received.admin.pkg, nullptr);
        EXPECT_EQ(received.admin.text, nullptr);
        EXPECT_EQ(received.admin.type, type);
    }
}

TEST(Admin, WholeMessageLeaksNothing)
{
    const Journey journey = travel(2, body(5, pkg, text));
    EXPECT_EQ(journey.allocated.size(), 2U);
    EXPECT_THAT(journey.kept, IsEmpty());
}

TEST(Admin, SizeOfNullBodyFailsAnAssert)
{
    LogRecorder log;
    EXPECT_EQ(admin.size(nullptr), 0U);
    EXPECT_THAT(log.take(), ElementsAre(enter(admin.size), assert_fails(admin.size)));
}

TEST(Admin, FailureIsTheSameWithTheLoggerOff)
{
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(admin.size(nullptr), 0U);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(Admin, FreeOfNullBodyDoesNothing)
{
    LogRecorder log;
    admin.free(nullptr);
    EXPECT_EQ(log.take(), enter_and_leave(admin.free));
}

TEST(Admin, RegistrationQueryLogsItsFields)
{
    mdm_body_t sent = body(IS_CLIENT_REGISTERED, pkg, nullptr);
    LogRecorder log;
    admin.size(&sent);
    EXPECT_EQ(log.take(), enter_and_leave(admin.size));
    const Bytes bytes = admin.write(&sent);
    EXPECT_THAT(log.take(), ElementsAre(enter(admin.set), debug(admin.set, "info->type: 0"),
                                        debug(admin.set, "Processing IS_CLIENT_REGISTERED, pkg: "
                                                         "'alpha.app', status: -2"),
                                        leave(admin.set)));
    mdm_body_t received{};
    admin.read(&received, bytes);
    EXPECT_THAT(log.take(), ElementsAre(enter(admin.get), debug(admin.get, "info->type: 0"),
                                        debug(admin.get, "Processed IS_CLIENT_REGISTERED, pkg: "
                                                         "'alpha.app', status: -2"),
                                        leave(admin.get)));
    admin.free(&received);
    EXPECT_EQ(log.take(), enter_and_leave(admin.free));
}

TEST(Admin, NullPackageIsLoggedAsTheCLibraryPrintsIt)
{
    mdm_body_t sent = body(IS_CLIENT_REGISTERED, nullptr, nullptr);
    LogRecorder log;
    admin.write(&sent);
    EXPECT_EQ(log.take()[2].text, "Processing IS_CLIENT_REGISTERED, pkg: '(null)', status: -2");
}

// Q-ADMIN-2
TEST(Admin, GeneralFormLogsItsTypeOnlyAsASignedNumber)
{
    mdm_body_t sent = body(0xFFFFFFFE, pkg, nullptr);
    LogRecorder log;
    const Bytes bytes = admin.write(&sent);
    EXPECT_THAT(log.take(), ElementsAre(enter(admin.set), debug(admin.set, "info->type: -2"),
                                        leave(admin.set)));
    mdm_body_t received{};
    admin.read(&received, bytes);
    EXPECT_THAT(log.take(), ElementsAre(enter(admin.get), debug(admin.get, "info->type: -2"),
                                        leave(admin.get)));
    admin.free(&received);
}

}  // namespace
}  // namespace mdm::test::admin_test
