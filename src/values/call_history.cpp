// SPDX-License-Identifier: Apache-2.0
//
// A copying constructor builds the default object and then assigns. The constructor from a constant
// rvalue does the same, because it cannot move from a constant. Q-VALUES-1
#include "mdm/device_policy_manager.hpp"
#include "values/value_class.hpp"

namespace DevicePolicyManager {

// Q-VALUES-2
DeviceInventoryCallHistoryCallDetails::DeviceInventoryCallHistoryCallDetails() = default;

DeviceInventoryCallHistoryCallDetails::DeviceInventoryCallHistoryCallDetails(
    const DeviceInventoryCallHistoryCallDetails &other)
    : DeviceInventoryCallHistoryCallDetails()
{
    *this = other;
}

DeviceInventoryCallHistoryCallDetails &
DeviceInventoryCallHistoryCallDetails::operator=(const DeviceInventoryCallHistoryCallDetails &other)
{
    using Self = DeviceInventoryCallHistoryCallDetails;
    if (this != &other) {
        mdm::assign(*this, other, &Self::num0, &Self::str1);
    }
    return *this;
}

DeviceInventoryCallHistoryCallDetails::~DeviceInventoryCallHistoryCallDetails() = default;

DeviceInventoryCallHistoryEvent::DeviceInventoryCallHistoryEvent() = default;

DeviceInventoryCallHistoryEvent::DeviceInventoryCallHistoryEvent(
    const DeviceInventoryCallHistoryEvent &other)
    : DeviceInventoryCallHistoryEvent()
{
    *this = other;
}

DeviceInventoryCallHistoryEvent::DeviceInventoryCallHistoryEvent(
    const DeviceInventoryCallHistoryEvent &&other)
    : DeviceInventoryCallHistoryEvent(other)
{
}

DeviceInventoryCallHistoryEvent &
DeviceInventoryCallHistoryEvent::operator=(const DeviceInventoryCallHistoryEvent &other)
{
    using Self = DeviceInventoryCallHistoryEvent;
    if (this != &other) {
        mdm::assign(*this, other, &Self::num0, &Self::wide1, &Self::num2, &Self::num3, &Self::num4,
                    &Self::str5, &Self::str6, &Self::str7, &Self::str8, &Self::str9, &Self::str10,
                    &Self::str11, &Self::details12);
    }
    return *this;
}

DeviceInventoryCallHistoryEvent::~DeviceInventoryCallHistoryEvent() = default;

DeviceInventoryCallHistoryQueryParameter::DeviceInventoryCallHistoryQueryParameter() = default;

DeviceInventoryCallHistoryQueryParameter::DeviceInventoryCallHistoryQueryParameter(
    const DeviceInventoryCallHistoryQueryParameter &other)
    : DeviceInventoryCallHistoryQueryParameter()
{
    *this = other;
}

DeviceInventoryCallHistoryQueryParameter::DeviceInventoryCallHistoryQueryParameter(
    const DeviceInventoryCallHistoryQueryParameter &&other)
    : DeviceInventoryCallHistoryQueryParameter(other)
{
}

DeviceInventoryCallHistoryQueryParameter &DeviceInventoryCallHistoryQueryParameter::operator=(
    const DeviceInventoryCallHistoryQueryParameter &other)
{
    using Self = DeviceInventoryCallHistoryQueryParameter;
    if (this != &other) {
        mdm::assign(*this, other, &Self::num0, &Self::wide1, &Self::wide2, &Self::num3, &Self::str4,
                    &Self::str5, &Self::num6, &Self::num7);
    }
    return *this;
}

DeviceInventoryCallHistoryQueryParameter::~DeviceInventoryCallHistoryQueryParameter() = default;

DeviceInventoryPurgeStatus::DeviceInventoryPurgeStatus() = default;

DeviceInventoryPurgeStatus::DeviceInventoryPurgeStatus(const DeviceInventoryPurgeStatus &other)
    : DeviceInventoryPurgeStatus()
{
    *this = other;
}

DeviceInventoryPurgeStatus::DeviceInventoryPurgeStatus(const DeviceInventoryPurgeStatus &&other)
    : DeviceInventoryPurgeStatus(other)
{
}

DeviceInventoryPurgeStatus &
DeviceInventoryPurgeStatus::operator=(const DeviceInventoryPurgeStatus &other)
{
    using Self = DeviceInventoryPurgeStatus;
    if (this != &other) {
        mdm::assign(*this, other, &Self::wide0, &Self::wide1, &Self::wide2, &Self::wide3,
                    &Self::wide4, &Self::wide5);
    }
    return *this;
}

DeviceInventoryPurgeStatus::~DeviceInventoryPurgeStatus() = default;

}  // namespace DevicePolicyManager
