// SPDX-License-Identifier: Apache-2.0
//
// A message of every category and every shape, as bytes that were made without the library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mdm::test {

struct GoodMessage {
    std::string name;  // unique; lower-case letters, digits and dashes
    std::vector<uint8_t> bytes;
};

// Each is whole and true. Few are longer than 300 bytes. Both types of a pair occur, and types
// without a category.
std::vector<GoodMessage> good_messages();

// The whole message around a body: a header in which every word and byte is told from the others.
std::vector<uint8_t> framed(uint8_t type, const std::vector<uint8_t> &body,
                            const std::string &hdr_text = "");

}  // namespace mdm::test
