// SPDX-License-Identifier: Apache-2.0
//
// The functions of the value classes compile as C++11, and without a warning about a conversion.
#include "mdm/device_policy_manager.hpp"

void use_value_classes();

void use_value_classes()
{
    using namespace DevicePolicyManager;

    DeviceInventoryCallHistoryEvent event;
    mdm::set(event.num0, -1);
    mdm::set(event.wide1, -1);
    mdm::set(event.num3, 1);
    mdm::set(event.str5, "literal");
    mdm::set(event.str6, std::string("rvalue"));
    mdm::set(event.str7, event.str6.value);
    mdm::set(event.details12, DeviceInventoryCallHistoryCallDetails());
    mdm::set(event.num3, mdm::value_or(event.num3, 2));
    mdm::set(event.str8, mdm::value_or(event.str8, "fallback"));
    mdm::unset(event.str8);
    mdm::set(event.num0, mdm::equal(event.str7, event.str8) ? 1 : 0);
    mdm::set(event.num2, mdm::equal(event, event) ? 1 : 0);

    DeviceInventoryCallHistoryQueryParameter parameter;
    mdm::set(parameter.wide1, 1);
    mdm::equal(parameter, parameter);
    mdm::equal(DeviceInventoryPurgeStatus(), DeviceInventoryPurgeStatus());
    mdm::equal(MiscSimChangeInfoCommon(), MiscSimChangeInfoCommon());
}
