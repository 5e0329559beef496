// SPDX-License-Identifier: Apache-2.0
//
// The payload that a body's `data` points to: reaching it, releasing it, and checking it before a
// message is sealed.
#pragma once

#include <cstdint>

#include <glib.h>

#include "mdm/guarded.h"
#include "wire/names.hpp"

namespace mdm {

// What a size handler returns for a payload that it cannot size. The envelope takes it for a size
// like any other: what is then written has no room, so a sender must not pass such a body.
inline constexpr uint32_t no_size = 0;

// Whether a discriminator is among those listed.
template <class Type, class... Types>
constexpr bool is_any(Type type, Types... listed)
{
    return ((type == static_cast<Type>(listed)) || ...);
}

// The payload that a body's `data` points to.

// For the categories that test `data_size` against zero, so that a negative one announces a payload
// too.
template <class Body>
bool has_payload(const Body &body)
{
    return body.data != nullptr && body.data_size != 0;
}

// The record that a body's `data` points to.
template <class Record, class Body>
Record &payload(const Body &body)
{
    return *static_cast<Record *>(body.data);
}

// Releases what a body's `data` points at, if that owns nothing further.
inline void release_data(void *&data)
{
    g_free(data);
    data = nullptr;
}

// What is wrong with the payload that `data` points to.

// A payload that is announced and not there, or there and not announced.
const char *validate_payload(bool is_announced, const void *data, Names names);
// A payload where the format has none: no size lets it travel.
const char *validate_nothing(const void *data, Names names);
// A list: one that is announced may be null, because that is an empty one.
const char *validate_list(bool is_announced, const void *data, Names names);
// Raw bytes that are counted with the sign of their size: fewer than none would cut the message.
const char *validate_bytes(int32_t size, const void *data, Names names);

// Whether a message may be as many zeros longer than its payload. Fewer than none would cut it.
constexpr bool is_padding(int32_t size)
{
    return size >= 0 && size <= MDM_MAX_PADDING;
}

}  // namespace mdm
