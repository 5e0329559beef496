// SPDX-License-Identifier: Apache-2.0
//
// Short ways to write bytes down and to run messages and bodies through the codec.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "mdm/ipc.h"
#include "mdm_ipc_handlers.hpp"

namespace mdm::test {

using Bytes = std::vector<uint8_t>;

// hex("0A 00 ff") is {0x0A, 0x00, 0xFF}.
Bytes hex(std::string_view text);

Bytes operator+(const Bytes &left, const Bytes &right);

// A pointer for a field that nobody dereferences: to be found again where it was put.
void *sentinel();

// A heap string as a receiver's record holds one.
char *heap_text(const char *text);

// A zeroed message of a type.
mdm_msg_t message(uint8_t type);

// The bytes of a message; fails the test if there are none.
Bytes serialize(mdm_msg_t &msg);

// ipc_deserialize() on an exact heap copy of the bytes, so that no read beyond them goes unseen
// under a sanitizer.
int32_t deserialize(mdm_msg_t &msg, const Bytes &bytes);

// The body's bytes as the set handler of the message type writes them into a zeroed buffer that
// is larger than any test needs.
Bytes write_body(uint8_t type, mdm_body_t &body);

// Lets the get handler of the message type read the body; returns how many bytes it consumed.
size_t read_body(uint8_t type, mdm_body_t &body, const Bytes &bytes);

}  // namespace mdm::test
