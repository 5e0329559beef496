// SPDX-License-Identifier: Apache-2.0
//
// The handlers of a category: how the envelope calls them, how a category defines them, and the
// categories that exist.
#pragma once

#include <array>
#include <cstdint>

#include "mdm/ipc.h"
#include "mdm_checked.hpp"
#include "mdm_wire.hpp"

namespace mdm {

// Writes the body; returns the position after it, or null on failure.
using SetHandler = uint8_t *(uint8_t *position, mdm_body_t *body);
// Reads the body; returns the position after it, or null on failure.
using GetHandler = const uint8_t *(mdm_body_t *body, const uint8_t *position);
// Returns the body's byte count on the wire. Runs before the set handler, and may store the
// `data_size` that the set handler sends.
using SizeHandler = uint32_t(mdm_body_t *body);
// Releases the heap parts of a received body.
using FreeHandler = void(mdm_body_t *body);

// One row of the dispatch table; any handler may be null.
struct ipc_handler_row {
    SetHandler *set;
    GetHandler *get;
    SizeHandler *size;
    FreeHandler *free;
};

// The same for the guarded path, where a cursor tells of a failure.
using OpenHandler = void(CheckedReader &in, mdm_body_t &body);
using SealHandler = void(CheckedWriter &out, const mdm_body_t &body);
// Returns the path of what keeps a body from being sized safely, or its receiver from finding what
// is announced; null for a sound body. Runs before the size handler, which follows its pointers.
using UnsoundHandler = const char *(const mdm_body_t *body);

struct GuardedRow {
    OpenHandler *open;
    SealHandler *seal;
    UnsoundHandler *unsound;
};

// What an unsound handler finds wrong with the payload that `data` points to.

struct PayloadPaths {
    const char *data;
    const char *data_size;
};
#define MDM_PAYLOAD_PATHS(category)               \
    ::mdm::PayloadPaths                           \
    {                                             \
#category ".data", #category ".data_size" \
    }

// A payload that is announced and not there, or there and not announced.
inline const char *unsound_payload(bool is_announced, const void *data, const PayloadPaths &paths)
{
    if (is_announced == (data != nullptr)) {
        return nullptr;
    }
    return is_announced ? paths.data : paths.data_size;
}

// A payload where the format has none: no size lets it travel.
inline const char *unsound_nothing(const void *data, const PayloadPaths &paths)
{
    return unsound_payload(false, data, paths);
}

// A list: one that is announced may be null, because that is an empty one.
inline const char *unsound_list(bool is_announced, const void *data, const PayloadPaths &paths)
{
    return is_announced ? nullptr : unsound_nothing(data, paths);
}

// Raw bytes that are counted with the sign of their size: fewer than none would cut the message.
inline const char *unsound_bytes(int32_t size, const void *data, const PayloadPaths &paths)
{
    return size < 0 ? paths.data_size : unsound_payload(size != 0, data, paths);
}

// Whether a message may be as many zeros longer than its payload. Fewer than none would cut it.
constexpr bool is_padding(int32_t size)
{
    return size >= 0 && size <= MDM_MAX_PADDING;
}

inline constexpr uint8_t last_message_type = 80;

// Seven pointers, and room for an eighth: so a shift finds a row.
struct alignas(8 * sizeof(void *)) MessageRow {
    ipc_handler_row handlers;
    GuardedRow guarded;
};
[[gnu::visibility("hidden")]] extern const std::array<MessageRow, last_message_type + 1>
    message_rows;

// The handlers of a message type from 0 to 80.
inline const ipc_handler_row &handler_row(uint8_t type)
{
    return message_rows[type].handlers;
}

inline const GuardedRow &guarded_row(uint8_t type)
{
    return message_rows[type].guarded;
}

// Defines the handlers of a category that run over a cursor. Its cursor handlers,
//     template <class Out> bool _set_<category>(Out &out, const mdm_<category>_info_t *info)
//     template <class In> bool _get_<category>(In &in, mdm_<category>_info_t *info)
// stand in front; false stands for failure. So does what its unsound handler calls,
//     const char *unsound_part(const mdm_<category>_info_t &info)
#define MDM_HANDLERS(category)                                                   \
    uint8_t *_set_##category(uint8_t *position, mdm_body_t *body)                \
    {                                                                            \
        Writer out(position);                                                    \
        const bool done = _set_##category(out, MDM_BODY_MEMBER(body, category)); \
        return done ? out.position() : nullptr;                                  \
    }                                                                            \
    const uint8_t *_get_##category(mdm_body_t *body, const uint8_t *position)    \
    {                                                                            \
        Reader in(position);                                                     \
        const bool done = _get_##category(in, MDM_BODY_MEMBER(body, category));  \
        return done ? in.position() : nullptr;                                   \
    }                                                                            \
    void _open_##category(CheckedReader &in, mdm_body_t &body)                   \
    {                                                                            \
        _get_##category(in, &body.category);                                     \
    }                                                                            \
    void _seal_##category(CheckedWriter &out, const mdm_body_t &body)            \
    {                                                                            \
        if (!_set_##category(out, &body.category)) {                             \
            out.omit(#category ".data");                                         \
        }                                                                        \
    }                                                                            \
    const char *_unsound_in_##category(const mdm_body_t *body)                   \
    {                                                                            \
        return unsound_part(body->category);                                     \
    }

// Every member of the union has the union's own address; null stays null.
#define MDM_BODY_MEMBER(body, category) \
    (static_cast<mdm_##category##_info_t *>(static_cast<void *>(body)))

#define MDM_DECLARE_HANDLERS(category)       \
    MDM_DECLARE_SENT_AND_RECEIVED(category); \
    FreeHandler _free_##category
#define MDM_DECLARE_SENT_AND_RECEIVED(category) \
    SetHandler _set_##category;                 \
    GetHandler _get_##category;                 \
    SizeHandler _size_of_##category;            \
    OpenHandler _open_##category;               \
    SealHandler _seal_##category;               \
    UnsoundHandler _unsound_in_##category

MDM_DECLARE_HANDLERS(admin);
MDM_DECLARE_HANDLERS(pwd);
MDM_DECLARE_HANDLERS(security);
MDM_DECLARE_HANDLERS(wifi);
MDM_DECLARE_HANDLERS(bluetooth);
MDM_DECLARE_HANDLERS(eas);
MDM_DECLARE_HANDLERS(app);
MDM_DECLARE_HANDLERS(app_res);
MDM_DECLARE_HANDLERS(roaming);
MDM_DECLARE_SENT_AND_RECEIVED(roaming_res);  // released by _free_roaming()
MDM_DECLARE_HANDLERS(misc);
MDM_DECLARE_HANDLERS(apn);
MDM_DECLARE_HANDLERS(browser);
MDM_DECLARE_HANDLERS(date_time);
MDM_DECLARE_HANDLERS(remote);
MDM_DECLARE_HANDLERS(vpn);
MDM_DECLARE_HANDLERS(firewall);
MDM_DECLARE_HANDLERS(res);
MDM_DECLARE_HANDLERS(phone_res);
MDM_DECLARE_HANDLERS(enterprise);
MDM_DECLARE_HANDLERS(email);
MDM_DECLARE_HANDLERS(kiosk);
MDM_DECLARE_HANDLERS(container);
MDM_DECLARE_HANDLERS(location);
MDM_DECLARE_HANDLERS(log_manager);
MDM_DECLARE_HANDLERS(platform);
MDM_DECLARE_HANDLERS(app_cb);
MDM_DECLARE_HANDLERS(misc_cb);

}  // namespace mdm
