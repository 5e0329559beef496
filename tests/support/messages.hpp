// SPDX-License-Identifier: Apache-2.0
//
// A message of every category and every form, as bytes that were made without the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/format.hpp"

namespace mdm::test {

// A step of reading a body: so many bytes must be there for the field.
struct Step {
    std::string path;
    size_t offset;
    size_t needed;
};

// A number in the bytes that says how much follows it.
struct Claim {
    enum class Of { text, list, unsigned_list, size, signed_size, array };

    Of of;
    std::string path;
    size_t at;          // of the number
    size_t behind;      // the offset of the bytes that the number counts
    uint32_t smallest;  // bytes for one of what it counts
};

// The texts and elements of a payload.
enum class Content : uint8_t {
    full,          // a list has an empty text between others; of two records the last has texts
    whole,         // no text of a list is empty
    begins_empty,  // the first text of a list is empty
    ends_empty,    // the last text of a list is empty
    empty,         // all texts are empty
    none,          // no elements
};

struct GoodMessage {
    std::string name;  // unique; lower-case letters, digits and dashes
    std::vector<uint8_t> bytes;
    Content content = Content::none;
    const CategoryFormat *category = nullptr;
    const Form *form = nullptr;
    bool has_payload = false;
    bool may_be_sent_on = false;   // by a receiver, as it was opened
    std::vector<Step> steps = {};  // in the order of reading
    std::vector<Claim> claims = {};
};

// Each is whole and true. Few are longer than 300 bytes. Both types of a pair occur, and types
// without a category.
std::vector<GoodMessage> good_messages();

// The head of a body. But for the two words it is zero.
std::vector<uint8_t> head_bytes(const CategoryFormat &category, uint32_t discriminator,
                                int32_t data_size);

// The whole message around a body: a header in which every word and byte is told from the others.
std::vector<uint8_t> framed(uint8_t type, const std::vector<uint8_t> &body,
                            const std::string &hdr_text = "");

}  // namespace mdm::test
