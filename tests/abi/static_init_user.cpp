// SPDX-License-Identifier: Apache-2.0
//
// A library whose own static initialiser uses the value classes and the constants.
#include "mdm/device_policy_manager.hpp"

using namespace DevicePolicyManager;

namespace {

DeviceInventoryCallHistoryEvent protocols()
{
    DeviceInventoryCallHistoryEvent event;
    event.str5.value = ServerInfo::SMTP_PROTOCOL;
    event.str6.value = ServerInfo::POP3_PROTOCOL;
    event.str7.value = ServerInfo::IMAP4_PROTOCOL;
    event.str7.is_set = true;
    return event;
}

const DeviceInventoryCallHistoryEvent built_at_load = protocols();

}  // namespace

extern "C" {

MDM_API const DeviceInventoryCallHistoryEvent *event_built_at_load();
MDM_API const std::string *smtp_protocol_of_the_library();

const DeviceInventoryCallHistoryEvent *event_built_at_load()
{
    return &built_at_load;
}

const std::string *smtp_protocol_of_the_library()
{
    return &ServerInfo::SMTP_PROTOCOL;
}

}  // extern "C"
