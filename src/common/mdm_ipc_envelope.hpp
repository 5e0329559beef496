// SPDX-License-Identifier: Apache-2.0
//
// The message envelope: what the trusting and the guarded path share of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mdm_ipc_handlers.hpp"

namespace mdm {

inline bool is_message_type(uint8_t type)
{
    return type != 0 && type <= last_message_type;
}

// The wire header, by offset from the first byte of a message. Bytes 6 and 7 are reserved:
// written as zero, ignored on reading. From offset 8 on it is the words and the text that
// head_fields lists; the last five words travel in the order 3, 6, 7, 4, 5.
namespace ipc_head {
inline constexpr uint32_t length = 0;
inline constexpr uint32_t type = 4;
inline constexpr uint32_t hdr_byte = 5;
inline constexpr uint32_t fields = 8;
}  // namespace ipc_head

inline constexpr auto head_fields =
    MDM_FIELDS(mdm_msg_t, "header", hdr_word1, hdr_word2, hdr_text, hdr_word3, hdr_word6, hdr_word7,
               hdr_word4, hdr_word5);

// The length field counts the message from offset 8 on: at least the header without its text.
inline constexpr uint32_t uncounted_size = 8;
inline constexpr uint32_t smallest_length_field = smallest_size(head_fields);
static_assert(smallest_length_field == 32);
inline constexpr uint32_t smallest_message = uncounted_size + smallest_length_field;

// The size of the whole message, as its size handler counts the body. That may be a negative number
// of bytes; the sum wraps and is judged as a signed total.
inline int32_t total_size(const ipc_handler_row &row, mdm_msg_t *msg)
{
    return static_cast<int32_t>(uncounted_size + size_of_fields(*msg, head_fields) +
                                row.size(&msg->body));
}

// Behind a message stand a zero byte and four guard bytes; none of the five is sent.
inline constexpr size_t trailer_size = 5;
inline constexpr size_t guard_offset = 1;
inline constexpr std::array<uint8_t, 4> guard = {0xF4, 0xF4, 0xF4, 0xF4};

// The size of the buffer for a message of `total` bytes.
inline size_t buffer_size(uint32_t total)
{
    return size_t{total} + trailer_size;
}

// Sets the length field, type byte, header byte and guard bytes in a zero-filled buffer.
inline void set_envelope(uint8_t *buffer, const mdm_msg_t &msg, uint32_t total)
{
    store_u32(buffer + ipc_head::length, total - uncounted_size);
    buffer[ipc_head::type] = msg.type;
    buffer[ipc_head::hdr_byte] = msg.hdr_byte;
    std::memcpy(buffer + total + guard_offset, guard.data(), guard.size());
}

// A new buffer with its envelope set; null for a total below 8.
uint8_t *_alloc_msg(const mdm_msg_t &msg, int32_t total);

// What the exported functions of the same names do once the row is known.
uint8_t *ipc_serialize(const ipc_handler_row &row, mdm_msg_t *msg, uint32_t *out_length);
int32_t ipc_deserialize(const ipc_handler_row &row, mdm_msg_t *msg, const uint8_t *buffer);

}  // namespace mdm
