// SPDX-License-Identifier: Apache-2.0
//
// The words and strings of the wire format.
//
//   u8, u32, i32   little-endian, at any alignment
//   str            u32 byte count, then the bytes; no terminator; null and empty are count 0
//   body head      type, param, data_size: 12 bytes
//
// Values stand back to back, without padding. Nothing here logs, checks a pointer or knows where
// a buffer ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <glib.h>

namespace mdm {

// Words.

inline constexpr uint32_t word_size = 4;

inline uint8_t *store_u32(uint8_t *position, uint32_t value)
{
    const uint32_t wire = GUINT32_TO_LE(value);
    std::memcpy(position, &wire, word_size);
    return position + word_size;
}

inline uint32_t load_u32(const uint8_t *position)
{
    uint32_t wire = 0;
    std::memcpy(&wire, position, word_size);
    return GUINT32_FROM_LE(wire);
}

// The limit for the size in memory of a record that a reader makes.
inline constexpr size_t largest_record = UINT8_MAX;

// Strings.

inline size_t text_size(const char *text)
{
    return text == nullptr ? 0 : std::strlen(text);
}

// The text's 32-bit count on the wire.
inline uint32_t text_length(const char *text)
{
    return static_cast<uint32_t>(text_size(text));
}

inline uint32_t size_of_str(const char *text)
{
    return word_size + text_length(text);
}

// Writes a text of `length` bytes, and returns the position after it.
inline uint8_t *write_str(uint8_t *position, const char *text, uint32_t length)
{
    position = store_u32(position, length);
    if (length == 0) {
        return position;
    }
    std::memcpy(position, text, length);
    return position + length;
}

// Fills a block of count + 1 bytes as g_strndup() does: the text ends at the first zero byte, and
// the rest is zero. Q-WIRE-2
inline char *copy_text(char *text, const uint8_t *bytes, size_t count)
{
    std::strncpy(text, reinterpret_cast<const char *>(bytes), count);
    text[count] = '\0';
    return text;
}

inline void release_string(char *&text)
{
    if (text != nullptr) {  // null needs no call
        g_free(text);
        text = nullptr;
    }
}

// The body head.

inline constexpr uint32_t body_head_size = 12;
// A body whose list is empty: the head and the list's count.
inline constexpr uint32_t empty_list_size = body_head_size + word_size;

}  // namespace mdm
