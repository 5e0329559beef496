// SPDX-License-Identifier: Apache-2.0
//
// The whole of a received message as text.
#pragma once

#include <string>

#include "mdm/message.h"

namespace mdm::test {

// Every field that a message's category holds for its type and discriminator, those included that
// do not travel: numbers, texts, lists in their order, raw bytes with their terminator. Messages
// with the same fields have the same dump, whether they were opened or deserialised into a zeroed
// record: no address is in it.
//
// The dump says "broken link" where a cell of a list does not point back to the cell before it, and
// "not null" for a pointer that nothing should have set.
std::string dump(const mdm_msg_t &msg);

}  // namespace mdm::test
