// SPDX-License-Identifier: Apache-2.0
//
// Reads the whole of a received message.
#pragma once

#include <string>

#include "mdm/message.h"

namespace mdm::test {

// Every field that a message's category holds for its type and discriminator, those included that
// do not travel: numbers, texts, lists in their order, raw bytes with their terminator. Each byte
// of them is read on the way. What has the same fields has the same text, whether it was opened or
// deserialised into a zeroed record: an address is nowhere in it.
//
// Says "broken link" where the cells of a list do not lead back to where they came from, and
// "not null" for a pointer that nothing should have set.
std::string describe(const mdm_msg_t &msg);

}  // namespace mdm::test
