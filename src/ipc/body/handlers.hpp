// SPDX-License-Identifier: Apache-2.0
//
// The handlers of the categories. Both paths call them through the table in ipc/category.hpp.
#pragma once

#include <cstdint>

#include "log/log.hpp"
#include "mdm/message.h"
#include "wire/cursor.hpp"
#include "wire/lengths.hpp"
#include "wire/names.hpp"

namespace mdm {

// Writes the body; false on failure.
using SetHandler = bool(Writer &out, const Log &log, mdm_body_t *body);
// Reads the body; false on failure.
using GetHandler = bool(Reader &in, const Log &log, mdm_body_t *body);
// Returns the body's byte count on the wire. Runs before the set handler, and may store the
// `data_size` that the set handler sends, and the lengths of a list's strings.
using SizeHandler = uint32_t(Lengths &lengths, const Log &log, mdm_body_t *body);
// Releases the heap blocks of a received body.
using FreeHandler = void(const Log &log, mdm_body_t *body);
// Returns the path of the first field that is wrong, or null for a valid body. Wrong fields are null
// pointers that the size handler would follow, lists that cannot be sized, and payloads that do not
// match `data_size`. Runs on the guarded path alone, before the size handler. A category has no such
// handler if all its bodies are valid.
using ValidateHandler = const char *(const mdm_body_t &body, Names names);

// The categories: their message types from the first to the last, their name, and the file of their
// handlers without "mdm_ipc_" and ".cpp". A category with handlers of its own is
//
//   VALIDATED   if sealing has to refuse some of its bodies: _validate_x says which
//   PLAIN       if it never has to
//
// A SHARED category takes some or all handlers of others. It also names its row of handlers, which
// stands in category.cpp.
#define MDM_CATEGORIES(VALIDATED, PLAIN, SHARED)         \
    PLAIN(1, 2, admin, admin)                            \
    VALIDATED(3, 4, pwd, pwd)                            \
    VALIDATED(5, 6, security, security)                  \
    VALIDATED(7, 8, wifi, wifi)                          \
    VALIDATED(9, 10, bluetooth, bluetooth)               \
    VALIDATED(11, 12, eas, eas)                          \
    VALIDATED(13, 13, app, app)                          \
    VALIDATED(14, 14, app_res, app_res)                  \
    VALIDATED(15, 15, roaming, roaming)                  \
    SHARED(16, 16, roaming_res, roaming, roaming_res)    \
    VALIDATED(17, 18, misc, misc)                        \
    VALIDATED(21, 22, apn, apn)                          \
    SHARED(23, 24, browser, single_list, unread_list)    \
    SHARED(25, 26, date_time, single_list, single_list)  \
    SHARED(27, 28, remote, single_list, single_list)     \
    SHARED(29, 30, vpn, single_list, single_list)        \
    SHARED(31, 32, firewall, single_list, single_list)   \
    SHARED(33, 34, res, single_list, single_list)        \
    VALIDATED(35, 36, phone_res, phone_res)              \
    SHARED(37, 38, enterprise, single_list, unread_list) \
    VALIDATED(39, 40, email, email)                      \
    VALIDATED(45, 46, kiosk, kiosk)                      \
    VALIDATED(47, 48, container, container)              \
    VALIDATED(49, 50, location, location)                \
    PLAIN(51, 52, log_manager, log_manager)              \
    PLAIN(53, 54, platform, platform)                    \
    PLAIN(61, 61, app_cb, callback)                      \
    PLAIN(63, 63, misc_cb, callback)
#define MDM_NO_CATEGORY(...)

#define MDM_DECLARE(first, last, name, file) \
    SetHandler _set_##name;                  \
    GetHandler _get_##name;                  \
    SizeHandler _size_of_##name;             \
    FreeHandler _free_##name;
#define MDM_DECLARE_VALIDATED(first, last, name, file) \
    MDM_DECLARE(first, last, name, file)               \
    ValidateHandler _validate_##name;
MDM_CATEGORIES(MDM_DECLARE_VALIDATED, MDM_DECLARE, MDM_NO_CATEGORY)

// The handlers of the shared rows.
SetHandler _set_single_list, _set_roaming_res;
GetHandler _get_single_list, _get_unread_list, _get_roaming_res;
SizeHandler _size_of_single_list, _size_of_roaming_res;
FreeHandler _free_single_list;
ValidateHandler _validate_single_list, _validate_roaming_res;

}  // namespace mdm
