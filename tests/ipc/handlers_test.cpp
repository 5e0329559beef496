// SPDX-License-Identifier: Apache-2.0
//
// What the handlers of many categories have in common: the answer to a null argument.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm_ipc_handlers.hpp"
#include "support/log_recorder.hpp"
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
    static const ipc_handler_row &row() { return handler_row(GetParam().type); }
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

}  // namespace
}  // namespace mdm::test
