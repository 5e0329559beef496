// SPDX-License-Identifier: Apache-2.0
//
// What the handlers of many categories have in common: the answer to a null argument.
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ipc/category.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"
#include "support/wire.hpp"

namespace mdm::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Lines = std::vector<LogLine>;

// How a category's handlers log.
enum class Manner {
    entering,  // entry and exit, also in the free handler
    quiet,     // neither, but the free handler's exit for a null body
    app,       // as quiet; the size handler has a line of its own
    no_free,   // entry and exit; the free handler takes a body for granted
};

struct Category {
    const char *name;
    uint8_t type;
    Manner manner;
};

std::ostream &operator<<(std::ostream &out, const Category &category)
{
    return out << category.name;
}

class NullArguments : public ::testing::TestWithParam<Category> {
protected:
    static Handlers row() { return Handlers(GetParam().type); }
    static Manner manner() { return GetParam().manner; }

    static std::string handler(const char *kind)
    {
        return std::string("_") + kind + "_" + GetParam().name;
    }

    static Lines failed_check(const char *kind)
    {
        const std::string function = handler(kind);
        Lines lines;
        if (manner() == Manner::entering || manner() == Manner::no_free) {
            lines.push_back(enter(function.c_str()));
        }
        lines.push_back(assert_fails(function.c_str()));
        return lines;
    }

    static Lines size_of_nothing()
    {
        const std::string function = handler("size_of");
        return manner() == Manner::app
                   ? Lines{critical(function.c_str(), "p_data is NULL!"), leave(function.c_str())}
                   : failed_check("size_of");
    }

    static Lines release_of_nothing()
    {
        const std::string function = handler("free");
        return manner() == Manner::entering
                   ? Lines{enter(function.c_str()), leave(function.c_str())}
                   : Lines{leave(function.c_str())};
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
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check("set")));
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check("set")));
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check("get")));
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(failed_check("get")));
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

INSTANTIATE_TEST_SUITE_P(
    Of, NullArguments,
    ::testing::Values(
        Category{"security", 5, Manner::entering}, Category{"wifi", 7, Manner::entering},
        Category{"bluetooth", 9, Manner::entering}, Category{"eas", 11, Manner::no_free},
        Category{"app", 13, Manner::app}, Category{"app_res", 14, Manner::app},
        Category{"roaming", 15, Manner::no_free}, Category{"roaming_res", 16, Manner::no_free},
        Category{"misc", 17, Manner::entering}, Category{"apn", 21, Manner::entering},
        Category{"phone_res", 35, Manner::quiet}, Category{"email", 39, Manner::entering},
        Category{"kiosk", 45, Manner::quiet}, Category{"container", 47, Manner::entering}),
    [](const auto &test) { return std::string(test.param.name); });

// Where the lines of each category come from. Both types of a pair have one row.
TEST(HandlerLines, SayTheirFileAndTheirFunction)
{
    const std::map<std::string, std::string> shared_files = {
        {"roaming_res", "mdm_ipc_roaming.cpp"},   {"app_cb", "mdm_ipc_callback.cpp"},
        {"misc_cb", "mdm_ipc_callback.cpp"},      {"browser", "mdm_ipc_single_list.cpp"},
        {"date_time", "mdm_ipc_single_list.cpp"}, {"remote", "mdm_ipc_single_list.cpp"},
        {"vpn", "mdm_ipc_single_list.cpp"},       {"firewall", "mdm_ipc_single_list.cpp"},
        {"res", "mdm_ipc_single_list.cpp"},       {"enterprise", "mdm_ipc_single_list.cpp"},
    };
    const std::map<uint8_t, std::string> categories = {
        {1, "admin"},        {3, "pwd"},          {5, "security"},   {7, "wifi"},
        {9, "bluetooth"},    {11, "eas"},         {13, "app"},       {14, "app_res"},
        {15, "roaming"},     {16, "roaming_res"}, {17, "misc"},      {21, "apn"},
        {23, "browser"},     {25, "date_time"},   {27, "remote"},    {29, "vpn"},
        {31, "firewall"},    {33, "res"},         {35, "phone_res"}, {37, "enterprise"},
        {39, "email"},       {45, "kiosk"},       {47, "container"}, {49, "location"},
        {51, "log_manager"}, {53, "platform"},    {61, "app_cb"},    {63, "misc_cb"},
    };
    for (const auto &[type, name] : categories) {
        const auto shared = shared_files.find(name);
        const std::string file =
            shared != shared_files.end() ? shared->second : "mdm_ipc_" + name + ".cpp";
        const mdm::Category category = category_of(type);
        LogRecorder recorder;
        for (const auto function :
             {Log::Function::set, Log::Function::get, Log::Function::size, Log::Function::free}) {
            const Log log = category.log(function);
            MDM_ENTER();
        }
        const std::vector<LogLine> lines = recorder.take();
        EXPECT_THAT(lines,
                    ElementsAreArray(
                        {enter(("_set_" + name).c_str()), enter(("_get_" + name).c_str()),
                         enter(("_size_of_" + name).c_str()), enter(("_free_" + name).c_str())}));
        for (const LogLine &line : lines) {
            EXPECT_EQ(line.file, file);
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
        EXPECT_EQ(size_body(sent.type, sent.body), 0U) << int{sent.type};
    }
    mdm_body_t book = headed_body<&mdm_body_t::misc>(281, 1, nullptr);
    EXPECT_EQ(size_body(17, book), static_cast<uint32_t>(-999));
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
    EXPECT_EQ(_get_app(&app, pair.data()), pair.data() + pair.size());
    const Bytes text = hex("7C 00 00 00 00 00 00 00 04 00 00 00 00 00 00 00");
    mdm_body_t misc{};
    EXPECT_EQ(_get_misc(&misc, text.data()), nullptr);
}

}  // namespace
}  // namespace mdm::test
