// SPDX-License-Identifier: Apache-2.0
//
// Short ways to write bytes down and to run messages and bodies through the codec.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
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

// A string literal for a sender's record: the codec reads a sender's strings and no more.
char *borrowed(const char *text);

// A new list of new strings, as a receiver's body holds one; a null text is a null element.
GList *heap_list(std::initializer_list<const char *> texts);

// A new list of elements that stay where they are.
GList *list_of(std::initializer_list<void *> elements);

// What a body's `data` holds, if it is a list: the texts of its strings (none for a null element),
// the addresses of its elements, and those of its cells.
std::vector<std::optional<std::string>> texts_of(const void *list);
std::vector<const void *> elements_of(const void *list);
std::vector<const void *> cells_of(const void *list);

// A zeroed message of a type.
mdm_msg_t message(uint8_t type);

// The bytes of a message; fails the test if there are none.
Bytes serialize(mdm_msg_t &msg);

// ipc_deserialize() on an exact heap copy of the bytes, so that no read beyond them goes unseen
// under a sanitizer.
int32_t deserialize(mdm_msg_t &msg, const Bytes &bytes);

// What the size handler of the message type returns.
uint32_t size_body(uint8_t type, mdm_body_t &body);

// The body's bytes as the set handler of the message type writes them into a zeroed buffer that
// is larger than any test needs.
Bytes write_body(uint8_t type, mdm_body_t &body);

// Lets the get handler of the message type read the body; returns how many bytes it consumed.
size_t read_body(uint8_t type, mdm_body_t &body, const Bytes &bytes);

// Lets the free handler of the message type release the body; returns what it released, in order.
std::vector<const void *> free_body(uint8_t type, mdm_body_t &body);

}  // namespace mdm::test
