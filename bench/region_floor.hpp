// SPDX-License-Identifier: Apache-2.0
//
// The floor under the guarded path: each message of the benchmark opened by hand, with every check
// that received bytes call for. One block holds the message, its record and then its texts, which
// take no more room than they took on the wire; a second one, of the size that the checked count
// gives, holds a list. No log, no table: each function is for one kind of message, and believes
// that type and discriminator say so.
#pragma once

#include <cstdint>

#include "mdm/message.h"

namespace mdm::bench {

// The message that ipc_open() returns, or null where that refuses.
using RegionOpen = mdm_msg_t *(const uint8_t *bytes, uint32_t length);
RegionOpen region_open_res;
RegionOpen region_open_admin;
RegionOpen region_open_pwd;
RegionOpen region_open_apn;
RegionOpen region_open_accounts;
RegionOpen region_open_names;

void region_close(mdm_msg_t *msg);

}  // namespace mdm::bench
