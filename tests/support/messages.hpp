// SPDX-License-Identifier: Apache-2.0
//
// Messages of every category and every form, as bytes that were made without the library, and ways
// to change and to open them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "mdm/guarded.h"
#include "support/format.hpp"

namespace mdm::test {

inline constexpr size_t type_offset = 4;
inline constexpr size_t header_size = 40;  // with an empty text
inline constexpr size_t trailer_size = 5;  // behind a message that was sealed or serialised

// A step of reading a body: so many bytes must be there for the field.
struct Step {
    std::string path;
    size_t offset;
    size_t needed;
};

// A count, length or size in the bytes, which says how much follows.
struct CountField {
    enum class Of { text, list, unsigned_list, size, signed_size, array };

    Of of;
    std::string path;
    size_t at;          // the offset of the field
    size_t behind;      // the offset of the counted bytes
    uint32_t smallest;  // the bytes that one counted element takes at least
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
    std::vector<CountField> counts = {};
};

// Each is whole and true. Few are longer than 300 bytes. Both types of a pair occur, and types
// without a category.
std::vector<GoodMessage> good_messages();

// The head of a body. But for the two words it is zero.
std::vector<uint8_t> zeroed_head(const CategoryFormat &category, uint32_t discriminator,
                                 int32_t data_size);

// The whole message around a body: a header in which every word and byte is told from the others.
std::vector<uint8_t> framed(uint8_t type, const std::vector<uint8_t> &body,
                            const std::string &hdr_text = "");

// Changes of a message's bytes.

uint32_t word_at(const std::vector<uint8_t> &bytes, size_t offset);
void put_word(std::vector<uint8_t> &bytes, size_t offset, uint32_t value);

// Makes the length field true, if there is room for one.
void correct_length(std::vector<uint8_t> &bytes);

// Puts letters in front of the header's text, if there is room for its count. The length field
// stays as it is.
void lengthen_text(std::vector<uint8_t> &bytes, uint32_t letters);

std::vector<uint8_t> first_bytes(const std::vector<uint8_t> &bytes, size_t count);

// The first bytes, with a true length field.
std::vector<uint8_t> cut(const std::vector<uint8_t> &bytes, size_t size);

// An opened message.
struct CloseMessage {
    void operator()(mdm_msg_t *msg) const { ipc_close(msg); }
};
using Opened = std::unique_ptr<mdm_msg_t, CloseMessage>;

// Opens an exact heap copy of the bytes, so that a sanitizer sees a read beyond it. The copy is
// released before the message is returned.
Opened opened(const std::vector<uint8_t> &bytes, ipc_fault_t *fault = nullptr);

// The results of calling `find` in four threads at the same time.
template <class Find>
auto in_four_threads(Find find)
{
    std::array<decltype(find()), 4> found;
    std::vector<std::jthread> threads;
    for (auto &one : found) {
        threads.emplace_back([&one, &find] { one = find(); });
    }
    threads.clear();  // waits for all of them
    return found;
}

}  // namespace mdm::test
