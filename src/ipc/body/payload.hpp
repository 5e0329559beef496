// SPDX-License-Identifier: Apache-2.0
//
// The payload of a body: how a handler reaches it, releases it, and checks it before a message is
// sealed.
#pragma once

#include <cstdint>

#include <glib.h>

#include "mdm/guarded.h"
#include "wire/names.hpp"

namespace mdm {

// A size handler returns this for a body that it cannot size. Q-BODY-1
inline constexpr uint32_t no_size = 0;

// Whether `type` is one of the listed values.
template <class Type, class... Types>
constexpr bool is_any(Type type, Types... listed)
{
    return ((type == static_cast<Type>(listed)) || ...);
}

// Q-BODY-2: these categories compare `data_size` with 0, so a negative one announces a payload.
// Q-BODY-3: a sender looks at `data` as well.
template <class Body>
bool has_payload(const Body &body)
{
    return body.data != nullptr && body.data_size != 0;
}

// The record that `data` points to.
template <class Record, class Body>
Record &payload(const Body &body)
{
    return *static_cast<Record *>(body.data);
}

// Releases a payload that owns no other memory.
inline void release_data(void *&data)
{
    g_free(data);
    data = nullptr;
}

// These functions return the path of a fault, or null.

// Refuses a payload that is announced but missing, and one that is there but not announced.
const char *validate_payload(bool is_announced, const void *data, Names names);
// Refuses any payload, because the format has none here.
const char *validate_nothing(const void *data, Names names);
// Refuses a list that is not announced. An announced list may be null, because null is the empty
// list.
const char *validate_list(bool is_announced, const void *data, Names names);
// Refuses a negative size as well: it is added to the message's size and would cut the message.
const char *validate_bytes(int32_t size, const void *data, Names names);

// Whether a sealed message may end with this number of zeros. A negative number would cut the
// message. Q-GUARDED-3
constexpr bool is_padding(int32_t size)
{
    return size >= 0 && size <= MDM_MAX_PADDING;
}

}  // namespace mdm
