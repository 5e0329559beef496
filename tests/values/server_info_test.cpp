// SPDX-License-Identifier: Apache-2.0
#include <set>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"

namespace mdm::test {
namespace {

using namespace DevicePolicyManager::ServerInfo;

static_assert(std::is_same_v<decltype(SMTP_PROTOCOL), const std::string>);
static_assert(std::is_same_v<decltype(POP3_PROTOCOL), const std::string>);
static_assert(std::is_same_v<decltype(IMAP4_PROTOCOL), const std::string>);

TEST(ServerInfo, NamesTheProtocols)
{
    EXPECT_EQ(SMTP_PROTOCOL, "smtp");
    EXPECT_EQ(POP3_PROTOCOL, "pop3");
    EXPECT_EQ(IMAP4_PROTOCOL, "imap4");
}

TEST(ServerInfo, NamesAreObjectsOfTheirOwn)
{
    const std::set<const std::string *> objects{&SMTP_PROTOCOL, &POP3_PROTOCOL, &IMAP4_PROTOCOL};
    EXPECT_EQ(objects.size(), 3U);
}

}  // namespace
}  // namespace mdm::test
