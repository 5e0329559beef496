// SPDX-License-Identifier: Apache-2.0
//
// The baseline of the guarded path: each message of the benchmark opened by hand, with every check
// that received bytes call for. One block holds the message, its record and then its texts, which
// take no more room than they took on the wire; a second one, of the size that the checked count
// gives, holds a list. No log, no table: each function is for one type and one form of a message,
// and does not check that type and discriminator say so.
#pragma once

#include <cstdint>

#include "mdm/message.h"

namespace mdm::bench {

// The message that ipc_open() returns, or null where that refuses.
using BaselineOpen = mdm_msg_t *(const uint8_t *bytes, uint32_t length);
BaselineOpen baseline_open_res;
BaselineOpen baseline_open_admin;
BaselineOpen baseline_open_pwd;
BaselineOpen baseline_open_apn;
BaselineOpen baseline_open_accounts;
BaselineOpen baseline_open_names;

void baseline_close(mdm_msg_t *msg);

}  // namespace mdm::bench
