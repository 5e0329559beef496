// SPDX-License-Identifier: Apache-2.0
//
// The message envelope, as far as the trusting and the guarded path share it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ipc/category.hpp"

namespace mdm {

inline bool is_message_type(uint8_t type)
{
    return type != 0 && type <= last_message_type;
}

// The wire header, by offset from the first byte of a message. Bytes 6 and 7 are reserved: written
// as zero, ignored on reading. From offset 8 on, the header is the words and the text of the
// message head; the cursors know their layout. Q-ENVELOPE-3
namespace ipc_head {
inline constexpr uint32_t length = 0;
inline constexpr uint32_t type = 4;
inline constexpr uint32_t hdr_byte = 5;
inline constexpr uint32_t reserved = 6;  // Q-ENVELOPE-2
inline constexpr uint32_t fields = 8;
}  // namespace ipc_head

// The length field counts the message from offset 8 on: at least the header without its text.
inline constexpr uint32_t uncounted_size = 8;  // Q-ENVELOPE-1
inline constexpr uint32_t smallest_length_field = smallest_head_size;
static_assert(smallest_length_field == 32);
inline constexpr uint32_t smallest_message = uncounted_size + smallest_length_field;

inline uint32_t head_size(const mdm_msg_t &msg)
{
    return smallest_message + text_length(msg.hdr_text);
}

// The size of the whole message. The size handler may count a negative number of bytes for the
// body, so the sum wraps and is checked as a signed total.
inline int32_t total_size(const ipc_handler_row &row, mdm_msg_t *msg, Lengths &lengths,
                          const Log &log)
{
    return static_cast<int32_t>(head_size(*msg) + row.size(lengths, log, &msg->body));
}

// The trailer stands behind a message in its buffer and is not sent: a zero byte, then four guard
// bytes.
inline constexpr std::array<uint8_t, 5> trailer = {0, 0xF4, 0xF4, 0xF4, 0xF4};
inline constexpr size_t guard_offset = 1;  // in the trailer. Q-ENVELOPE-8

// The size of the buffer for a message of `total` bytes.
inline size_t buffer_size(uint32_t total)
{
    return size_t{total} + trailer.size();
}

// Writes the bytes in front of the head's fields, and the trailer.
void set_envelope(uint8_t *buffer, const mdm_msg_t &msg, uint32_t total);

// A new buffer with its envelope set; null for a total below 8. Q-ENVELOPE-6
uint8_t *_alloc_msg(const mdm_msg_t &msg, int32_t total);

// The exported functions of the same names call these once the category is known.
uint8_t *ipc_serialize(const Category &category, mdm_msg_t *msg, uint32_t *out_length);
int32_t ipc_deserialize(const Category &category, mdm_msg_t *msg, const uint8_t *buffer);

}  // namespace mdm
