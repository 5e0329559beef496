// SPDX-License-Identifier: Apache-2.0
//
// A copying constructor builds the default object and then assigns. The constructor from a constant
// rvalue does the same, because it cannot move from a constant. Q-VALUES-1
#include "mdm/device_policy_manager.hpp"
#include "values/value_class.hpp"

namespace DevicePolicyManager {

MiscSimChangeInfoCommonDetailsCommon::MiscSimChangeInfoCommonDetailsCommon() = default;

MiscSimChangeInfoCommonDetailsCommon::MiscSimChangeInfoCommonDetailsCommon(
    const MiscSimChangeInfoCommonDetailsCommon &other)
    : MiscSimChangeInfoCommonDetailsCommon()
{
    *this = other;
}

MiscSimChangeInfoCommonDetailsCommon::MiscSimChangeInfoCommonDetailsCommon(
    const MiscSimChangeInfoCommonDetailsCommon &&other)
    : MiscSimChangeInfoCommonDetailsCommon(other)
{
}

MiscSimChangeInfoCommonDetailsCommon &
MiscSimChangeInfoCommonDetailsCommon::operator=(const MiscSimChangeInfoCommonDetailsCommon &other)
{
    using Self = MiscSimChangeInfoCommonDetailsCommon;
    if (this != &other) {
        mdm::assign(*this, other, &Self::str0, &Self::str1, &Self::str2, &Self::str3, &Self::str4,
                    &Self::str5, &Self::wide6);
    }
    return *this;
}

MiscSimChangeInfoCommonDetailsCommon::~MiscSimChangeInfoCommonDetailsCommon() = default;

MiscSimChangeInfoCommon::MiscSimChangeInfoCommon() = default;

MiscSimChangeInfoCommon::MiscSimChangeInfoCommon(const MiscSimChangeInfoCommon &other)
    : MiscSimChangeInfoCommon()
{
    *this = other;
}

MiscSimChangeInfoCommon::MiscSimChangeInfoCommon(const MiscSimChangeInfoCommon &&other)
    : MiscSimChangeInfoCommon(other)
{
}

MiscSimChangeInfoCommon &MiscSimChangeInfoCommon::operator=(const MiscSimChangeInfoCommon &other)
{
    using Self = MiscSimChangeInfoCommon;
    if (this != &other) {
        mdm::assign(*this, other, &Self::num0, &Self::wide1, &Self::details2, &Self::details3);
    }
    return *this;
}

MiscSimChangeInfoCommon::~MiscSimChangeInfoCommon() = default;

}  // namespace DevicePolicyManager
