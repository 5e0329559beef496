// SPDX-License-Identifier: Apache-2.0
//
// The baseline of the codec: for each message of the benchmark, a function written by hand makes
// the allocations and copies that its format asks for. It has no log, no table and no check. It
// measures a string of a record once. It measures a string of a list twice, because it has no place
// to keep the lengths.
#pragma once

#include <cstdint>

#include "mdm/message.h"

namespace mdm::bench {

// The bytes that ipc_serialize() returns; released with g_free().
using BaselineEncode = uint8_t *(const mdm_msg_t &msg, uint32_t &length);
BaselineEncode baseline_encode_res;
BaselineEncode baseline_encode_admin;
BaselineEncode baseline_encode_pwd;
BaselineEncode baseline_encode_apn;
BaselineEncode baseline_encode_accounts;
BaselineEncode baseline_encode_names;

// Rebuilds the message as ipc_deserialize() does.
using BaselineDecode = void(const uint8_t *bytes, mdm_msg_t &msg);
BaselineDecode baseline_decode_res;
BaselineDecode baseline_decode_admin;
BaselineDecode baseline_decode_pwd;
BaselineDecode baseline_decode_apn;
BaselineDecode baseline_decode_accounts;
BaselineDecode baseline_decode_names;

// Releases a rebuilt message as ipc_free() does, and what that leaves to the owner.
using BaselineRelease = void(mdm_msg_t &msg);
BaselineRelease baseline_release_res;
BaselineRelease baseline_release_admin;
BaselineRelease baseline_release_pwd;
BaselineRelease baseline_release_apn;
BaselineRelease baseline_release_accounts;
BaselineRelease baseline_release_names;

}  // namespace mdm::bench
