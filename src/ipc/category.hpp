// SPDX-License-Identifier: Apache-2.0
//
// The categories that exist, and how the envelope calls their handlers.
#pragma once

#include <array>
#include <cstdint>

#include "ipc/body/handlers.hpp"
#include "log/log.hpp"
#include "wire/cursor.hpp"
#include "wire/names.hpp"

namespace mdm {

// One row of the dispatch table. An empty one has no handlers.
struct ipc_handler_row {
    SetHandler *set;
    GetHandler *get;
    SizeHandler *size;
    FreeHandler *free;
    ValidateHandler *validate = nullptr;  // null if every body of the category is valid
};

// A category as the envelope meets it: its handlers, and the names that they use.
struct Category {
    const ipc_handler_row &row;
    Names names;

    bool set(Writer &out, mdm_body_t *body) const { return row.set(out, out.log(), body); }
    bool get(Reader &in, mdm_body_t *body) const { return row.get(in, in.log(), body); }

    // The lines of a handler.
    Log log(Log::Function function) const { return Log(names.origin(), function); }
};

inline constexpr uint8_t last_message_type = 80;

// Where the row and the names of a message type are found.
struct TypeEntry {
    uint8_t row;
    uint16_t names;
};
[[gnu::visibility("hidden")]] extern const ipc_handler_row handler_rows[];
[[gnu::visibility("hidden")]] extern const char category_names[];
[[gnu::visibility("hidden")]] extern const std::array<TypeEntry, last_message_type + 1>
    type_entries;

// The category of a message type from 0 to 80. A type without a category has an empty row.
inline Category category_of(uint8_t type)
{
    const TypeEntry &entry = type_entries[type];
    return {handler_rows[entry.row], Names(category_names + entry.names)};
}

}  // namespace mdm
