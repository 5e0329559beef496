// SPDX-License-Identifier: Apache-2.0
//
// The floor under the codec: for each message of the benchmark the allocations and copies that
// its contract asks for, written by hand for that one message. No log, no table, no check. A string
// of a record is measured once; one of a list a second time while it is copied, because there is
// nowhere to keep the lengths.
#pragma once

#include <cstdint>

#include "mdm/message.h"

namespace mdm::bench {

// The bytes that ipc_serialize() returns; released with g_free().
using FloorEncode = uint8_t *(const mdm_msg_t &msg, uint32_t &length);
FloorEncode floor_encode_res;
FloorEncode floor_encode_admin;
FloorEncode floor_encode_pwd;
FloorEncode floor_encode_apn;
FloorEncode floor_encode_accounts;
FloorEncode floor_encode_names;

// Rebuilds the message as ipc_deserialize() does.
using FloorDecode = void(const uint8_t *bytes, mdm_msg_t &msg);
FloorDecode floor_decode_res;
FloorDecode floor_decode_admin;
FloorDecode floor_decode_pwd;
FloorDecode floor_decode_apn;
FloorDecode floor_decode_accounts;
FloorDecode floor_decode_names;

// Releases a rebuilt message as ipc_free() does, and what that leaves to the owner.
using FloorRelease = void(mdm_msg_t &msg);
FloorRelease floor_release_res;
FloorRelease floor_release_admin;
FloorRelease floor_release_pwd;
FloorRelease floor_release_apn;
FloorRelease floor_release_accounts;
FloorRelease floor_release_names;

}  // namespace mdm::bench
