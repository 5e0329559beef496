// SPDX-License-Identifier: Apache-2.0
//
// Rules that hold for the handlers of many categories: how they answer a null argument, and the
// file and the function in their lines.
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ipc/category.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"
#include "support/wire.hpp"

namespace mdm::test::category_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Lines = std::vector<LogLine>;

// How a category's handlers log.
enum class Manner {
    entering,   // entry and exit, also in the free handler
    quiet,      // neither, but the free handler's exit for a null body
    app,        // as quiet; the size handler has a line of its own
    no_free,    // entry and exit; the free handler takes a body for granted
    free_exit,  // entry and exit, but the free handler's exit alone
};

struct Category {
    const char *name;
    Manner manner;
};

constexpr Category categories[] = {
    {"pwd", Manner::no_free},          {"security", Manner::entering},
    {"wifi", Manner::entering},        {"bluetooth", Manner::entering},
    {"eas", Manner::no_free},          {"app", Manner::app},
    {"app_res", Manner::app},          {"roaming", Manner::no_free},
    {"roaming_res", Manner::no_free},  {"misc", Manner::entering},
    {"apn", Manner::entering},         {"browser", Manner::free_exit},
    {"date_time", Manner::free_exit},  {"remote", Manner::free_exit},
    {"vpn", Manner::free_exit},        {"firewall", Manner::free_exit},
    {"res", Manner::free_exit},        {"phone_res", Manner::quiet},
    {"enterprise", Manner::free_exit}, {"email", Manner::entering},
    {"kiosk", Manner::quiet},          {"container", Manner::entering},
};

std::ostream &operator<<(std::ostream &out, const Category &category)
{
    return out << category.name;
}

class NullArguments : public ::testing::TestWithParam<Category> {
protected:
    static Handlers row() { return handlers_of(GetParam().name); }
    static Manner manner() { return GetParam().manner; }

    static Lines failed_check(const Origin &handler)
    {
        Lines lines;
        if (manner() != Manner::quiet && manner() != Manner::app) {
            lines.push_back(enter(handler));
        }
        lines.push_back(assert_fails(handler));
        return lines;
    }

    static Lines size_of_nothing()
    {
        return manner() == Manner::app
                   ? Lines{critical(row().size, "p_data is NULL!"), leave(row().size)}
                   : failed_check(row().size);
    }

    static Lines release_of_nothing()
    {
        return manner() == Manner::entering ? enter_and_leave(row().free)
                                            : Lines{leave(row().free)};
    }
};

TEST_P(NullArguments, FailACheck)
{
    mdm_body_t some{};
    Bytes buffer(64);
    LogRecorder log;
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_THAT(log.take(), ElementsAreArray(size_of_nothing()));
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check(row().set)));
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check(row().set)));
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check(row().get)));
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check(row().get)));
    EXPECT_EQ(buffer, Bytes(64));
}

TEST_P(NullArguments, AreNothingToRelease)
{
    if (manner() == Manner::no_free) {
        return;
    }
    LogRecorder log;
    row().free(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(release_of_nothing()));
}

TEST_P(NullArguments, FailAlikeWithTheLoggerOff)
{
    mdm_body_t some{};
    Bytes buffer(64);
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    if (manner() != Manner::no_free) {
        row().free(nullptr);
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, NullArguments, ::testing::ValuesIn(categories),
                         ::testing::PrintToStringParamName());

// Some handlers of these take their arguments for granted, or answer in another way.
constexpr const char *other_categories[] = {"admin",    "location", "log_manager",
                                            "platform", "app_cb",   "misc_cb"};

TEST(Categories, AnswerNullArguments)
{
    std::set<std::string> tested(std::begin(other_categories), std::end(other_categories));
    for (const Category &category : categories) {
        tested.insert(category.name);
    }
    for (const CategoryFormat &format : category_formats()) {
        EXPECT_TRUE(tested.contains(format.name)) << format.name << " is in neither list";
    }
}

// The files in tests/ipc/body/ have the names of those in src/ipc/body/.
TEST(Categories, HaveATestEach)
{
    const auto project = std::filesystem::path(MDM_DOCS_DIR).parent_path();
    for (const CategoryFormat &format : category_formats()) {
        const std::string prefix = "mdm_ipc_";
        const std::string name =
            std::filesystem::path(format.file).stem().string().substr(prefix.size());
        const auto test = project / "tests/ipc/body" / (name + "_test.cpp");
        EXPECT_TRUE(std::filesystem::exists(test)) << test;
    }
}

// The origin of each category's lines.
TEST(HandlerLines, SayTheirFileAndTheirFunction)
{
    for (const CategoryFormat &format : category_formats()) {
        for (const uint8_t type : {format.first_type(), format.last_type()}) {
            const mdm::Category category = category_of(type);
            LogRecorder recorder;
            for (const auto function : {Log::Function::set, Log::Function::get, Log::Function::size,
                                        Log::Function::free}) {
                const Log log = category.log(function);
                MDM_ENTER();
            }
            const Handlers handlers(type);
            EXPECT_THAT(recorder.take(), ElementsAre(enter(handlers.set), enter(handlers.get),
                                                     enter(handlers.size), enter(handlers.free)));
        }
    }
}

// Payloads that cannot be sized, written or read. The lines that they log are in each category's
// own test.
class FailingPayloads : public ::testing::Test {
protected:
    struct Sent {
        uint8_t type;
        mdm_body_t body;
    };

    void TearDown() override
    {
        EXPECT_THAT(silence_.take(), IsEmpty());
        g_list_free(null_element_);
    }

    GList *null_element_ = list_of({nullptr});
    LogRecorder silence_{MDM_LOG_NONE};
};

TEST_F(FailingPayloads, AreNotSizedWithTheLoggerOff)
{
    for (Sent sent : {
             Sent{5, headed_body<&mdm_body_t::security>(70, 1, null_element_)},
             Sent{7, headed_body<&mdm_body_t::wifi>(305, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(88, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(290, 1, null_element_)},
             Sent{9, headed_body<&mdm_body_t::bluetooth>(91, 1, null_element_)},
             Sent{11, headed_body<&mdm_body_t::eas>(106, 1, null_element_)},
             Sent{15, headed_body<&mdm_body_t::roaming>(1, 1, nullptr)},
             Sent{21, headed_body<&mdm_body_t::apn>(389, 1, null_element_)},
         }) {
        EXPECT_EQ(Handlers(sent.type).size(&sent.body), 0U) << int{sent.type};
    }
    mdm_body_t book = headed_body<&mdm_body_t::misc>(281, 1, nullptr);
    EXPECT_EQ(Handlers(17).size(&book), static_cast<uint32_t>(-999));
}

TEST_F(FailingPayloads, AreNotWrittenWithTheLoggerOff)
{
    mdm_phone_res_ext_t no_detail{};
    for (Sent sent : {
             Sent{5, headed_body<&mdm_body_t::security>(68, 1, nullptr)},
             Sent{5, headed_body<&mdm_body_t::security>(70, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(305, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(88, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(319, 1, nullptr)},
             Sent{7, headed_body<&mdm_body_t::wifi>(345, 1, nullptr)},
             Sent{17, headed_body<&mdm_body_t::misc>(124, 1, nullptr)},
             Sent{17, headed_body<&mdm_body_t::misc>(281, 1, nullptr)},
             Sent{35, headed_body<&mdm_body_t::phone_res>(400, 1, nullptr)},
             Sent{35, headed_body<&mdm_body_t::phone_res>(422, 1, nullptr)},
             Sent{35, headed_body<&mdm_body_t::phone_res>(422, 1, &no_detail)},
         }) {
        Bytes buffer(64);
        EXPECT_EQ(Handlers(sent.type).set(buffer.data(), &sent.body), nullptr) << int{sent.type};
    }
}

TEST_F(FailingPayloads, AreNotReadWithoutMemoryAndWithTheLoggerOff)
{
    const NoMemory no_memory;
    const Bytes pair = hex("B8 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00");
    mdm_body_t app{};
    EXPECT_EQ(Handlers(13).get(&app, pair.data()), pair.data() + pair.size());
    const Bytes text = hex("7C 00 00 00 00 00 00 00 04 00 00 00 00 00 00 00");
    mdm_body_t misc{};
    EXPECT_EQ(Handlers(17).get(&misc, text.data()), nullptr);
}

}  // namespace
}  // namespace mdm::test::category_test
