// SPDX-License-Identifier: Apache-2.0
//
// The four handlers of a category: how the envelope calls them, how a category defines them, and
// the categories that exist.
#pragma once

#include <cstdint>

#include "mdm/ipc.h"
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

// The row of a message type from 0 to 80.
const ipc_handler_row &handler_row(uint8_t type);

// A new buffer for a message of `total` bytes, with its length field, type byte, header byte and
// guard bytes set; null for a total below 8.
uint8_t *_alloc_msg(const mdm_msg_t &msg, int32_t total);

// What the exported functions of the same names do once the row is known.
uint8_t *ipc_serialize(const ipc_handler_row &row, mdm_msg_t *msg, uint32_t *out_length);
int32_t ipc_deserialize(const ipc_handler_row &row, mdm_msg_t *msg, const uint8_t *buffer);

// Defines a category's set and get handlers: its cursor handlers of the same names,
//     template <class Out> bool _set_<category>(Out &out, const mdm_<category>_info_t *info)
//     template <class In> bool _get_<category>(In &in, mdm_<category>_info_t *info)
// run over the trusting cursors. False stands for failure.
#define MDM_TRUSTING_HANDLERS(category)                                          \
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
    }

// Every member of the union has the union's own address; null stays null.
#define MDM_BODY_MEMBER(body, category) \
    (static_cast<mdm_##category##_info_t *>(static_cast<void *>(body)))

#define MDM_DECLARE_HANDLERS(category) \
    SetHandler _set_##category;        \
    GetHandler _get_##category;        \
    SizeHandler _size_of_##category;   \
    FreeHandler _free_##category

MDM_DECLARE_HANDLERS(admin);
MDM_DECLARE_HANDLERS(pwd);
MDM_DECLARE_HANDLERS(security);
MDM_DECLARE_HANDLERS(wifi);
MDM_DECLARE_HANDLERS(bluetooth);
MDM_DECLARE_HANDLERS(eas);
MDM_DECLARE_HANDLERS(app);
MDM_DECLARE_HANDLERS(app_res);
MDM_DECLARE_HANDLERS(roaming);
SetHandler _set_roaming_res;
GetHandler _get_roaming_res;
SizeHandler _size_of_roaming_res;  // released by _free_roaming()
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
