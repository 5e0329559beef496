// SPDX-License-Identifier: Apache-2.0
//
// The handlers of a category: how the envelope calls them, and the categories that exist.
#pragma once

#include <array>
#include <cstdint>

#include "mdm/ipc.h"
#include "mdm_cursor.hpp"
#include "mdm_fields.hpp"
#include "mdm_lengths.hpp"
#include "mdm_log.hpp"
#include "mdm_wire.hpp"

namespace mdm {

// Writes the body; false on failure.
using SetHandler = bool(Writer &out, const Log &log, mdm_body_t *body);
// Reads the body; false on failure.
using GetHandler = bool(Reader &in, const Log &log, mdm_body_t *body);
// Returns the body's byte count on the wire. Runs before the set handler, and may store the
// `data_size` that the set handler sends, and the lengths of a list's strings.
using SizeHandler = uint32_t(Lengths &lengths, const Log &log, mdm_body_t *body);
// Releases the heap parts of a received body.
using FreeHandler = void(const Log &log, mdm_body_t *body);
// Returns the path of what keeps a body from being sized safely, or its receiver from finding what
// is announced; null for a sound body. Runs on the guarded path alone, before the size handler,
// which follows the body's pointers. A category has none if each of its bodies is sound.
using ValidateHandler = const char *(const mdm_body_t &body, Names names);

// One row of the dispatch table. An empty one has no handlers.
struct ipc_handler_row {
    SetHandler *set;
    GetHandler *get;
    SizeHandler *size;
    FreeHandler *free;
    ValidateHandler *validate = nullptr;
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

#define MDM_DECLARE_HANDLERS(category) \
    SetHandler _set_##category;        \
    GetHandler _get_##category;        \
    SizeHandler _size_of_##category

MDM_DECLARE_HANDLERS(admin);
MDM_DECLARE_HANDLERS(pwd);
MDM_DECLARE_HANDLERS(security);
MDM_DECLARE_HANDLERS(wifi);
MDM_DECLARE_HANDLERS(bluetooth);
MDM_DECLARE_HANDLERS(eas);
MDM_DECLARE_HANDLERS(app);
MDM_DECLARE_HANDLERS(app_res);
MDM_DECLARE_HANDLERS(roaming);
MDM_DECLARE_HANDLERS(roaming_res);
MDM_DECLARE_HANDLERS(misc);
MDM_DECLARE_HANDLERS(apn);
MDM_DECLARE_HANDLERS(single_list);
MDM_DECLARE_HANDLERS(phone_res);
MDM_DECLARE_HANDLERS(email);
MDM_DECLARE_HANDLERS(kiosk);
MDM_DECLARE_HANDLERS(container);
MDM_DECLARE_HANDLERS(location);
MDM_DECLARE_HANDLERS(log_manager);
MDM_DECLARE_HANDLERS(platform);
MDM_DECLARE_HANDLERS(app_cb);
MDM_DECLARE_HANDLERS(misc_cb);

FreeHandler _free_admin, _free_pwd, _free_security, _free_wifi, _free_bluetooth, _free_eas,
    _free_app, _free_app_res, _free_roaming, _free_misc, _free_apn, _free_single_list,
    _free_phone_res, _free_email, _free_kiosk, _free_container, _free_location, _free_log_manager,
    _free_platform, _free_app_cb, _free_misc_cb;

ValidateHandler _validate_pwd, _validate_security, _validate_wifi, _validate_bluetooth,
    _validate_eas, _validate_app, _validate_app_res, _validate_roaming, _validate_roaming_res,
    _validate_misc, _validate_apn, _validate_single_list, _validate_phone_res, _validate_email,
    _validate_kiosk, _validate_container, _validate_location;

// What browser and enterprise have of their own.
GetHandler _get_single_list_size;

}  // namespace mdm
