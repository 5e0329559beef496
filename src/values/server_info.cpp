// SPDX-License-Identifier: Apache-2.0
//
// The one source that runs code when the library is loaded and unloaded.
#include "mdm/device_policy_manager.hpp"

namespace DevicePolicyManager::ServerInfo {

// These strings are too short to be allocated, so making them cannot throw.
// NOLINTBEGIN(cert-err58-cpp)
const std::string SMTP_PROTOCOL = "smtp";
const std::string POP3_PROTOCOL = "pop3";
const std::string IMAP4_PROTOCOL = "imap4";
// NOLINTEND(cert-err58-cpp)

}  // namespace DevicePolicyManager::ServerInfo
