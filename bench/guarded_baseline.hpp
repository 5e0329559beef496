// SPDX-License-Identifier: Apache-2.0
//
// The baseline of the guarded path: each message of the benchmark is opened by hand, with every
// check that untrusted bytes need. One block holds the message, its record and its texts, which
// take no more memory than bytes on the wire. A second block holds a list; the checked count gives
// its size. There is no log and no table. Each function opens one type and one form of a message,
// and does not check the type and the discriminator.
#pragma once

#include <cstdint>

#include "mdm/message.h"

namespace mdm::bench {

// The message that ipc_open() returns, or null for bytes that ipc_open() refuses.
using BaselineOpen = mdm_msg_t *(const uint8_t *bytes, uint32_t length);
BaselineOpen baseline_open_res;
BaselineOpen baseline_open_admin;
BaselineOpen baseline_open_pwd;
BaselineOpen baseline_open_apn;
BaselineOpen baseline_open_accounts;
BaselineOpen baseline_open_names;

void baseline_close(mdm_msg_t *msg);

}  // namespace mdm::bench
