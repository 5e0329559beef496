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
#define MDM_CATEGORIES(VALIDATED, PLAIN, SHARED)                                             \
    PLAIN(MDM_TYPE_ADMIN, MDM_TYPE_ADMIN_2, admin, admin)                                    \
    VALIDATED(MDM_TYPE_PWD, MDM_TYPE_PWD_2, pwd, pwd)                                        \
    VALIDATED(MDM_TYPE_SECURITY, MDM_TYPE_SECURITY_2, security, security)                    \
    VALIDATED(MDM_TYPE_WIFI, MDM_TYPE_WIFI_2, wifi, wifi)                                    \
    VALIDATED(MDM_TYPE_BLUETOOTH, MDM_TYPE_BLUETOOTH_2, bluetooth, bluetooth)                \
    VALIDATED(MDM_TYPE_EAS, MDM_TYPE_EAS_2, eas, eas)                                        \
    VALIDATED(MDM_TYPE_APP, MDM_TYPE_APP, app, app)                                          \
    VALIDATED(MDM_TYPE_APP_RES, MDM_TYPE_APP_RES, app_res, app_res)                          \
    VALIDATED(MDM_TYPE_ROAMING, MDM_TYPE_ROAMING, roaming, roaming)                          \
    SHARED(MDM_TYPE_ROAMING_RES, MDM_TYPE_ROAMING_RES, roaming_res, roaming, roaming_res)    \
    VALIDATED(MDM_TYPE_MISC, MDM_TYPE_MISC_2, misc, misc)                                    \
    VALIDATED(MDM_TYPE_APN, MDM_TYPE_APN_2, apn, apn)                                        \
    SHARED(MDM_TYPE_BROWSER, MDM_TYPE_BROWSER_2, browser, single_list, unread_list)          \
    SHARED(MDM_TYPE_DATE_TIME, MDM_TYPE_DATE_TIME_2, date_time, single_list, single_list)    \
    SHARED(MDM_TYPE_REMOTE, MDM_TYPE_REMOTE_2, remote, single_list, single_list)             \
    SHARED(MDM_TYPE_VPN, MDM_TYPE_VPN_2, vpn, single_list, single_list)                      \
    SHARED(MDM_TYPE_FIREWALL, MDM_TYPE_FIREWALL_2, firewall, single_list, single_list)       \
    SHARED(MDM_TYPE_RES, MDM_TYPE_RES_2, res, single_list, single_list)                      \
    VALIDATED(MDM_TYPE_PHONE_RES, MDM_TYPE_PHONE_RES_2, phone_res, phone_res)                \
    SHARED(MDM_TYPE_ENTERPRISE, MDM_TYPE_ENTERPRISE_2, enterprise, single_list, unread_list) \
    VALIDATED(MDM_TYPE_EMAIL, MDM_TYPE_EMAIL_2, email, email)                                \
    VALIDATED(MDM_TYPE_KIOSK, MDM_TYPE_KIOSK_2, kiosk, kiosk)                                \
    VALIDATED(MDM_TYPE_CONTAINER, MDM_TYPE_CONTAINER_2, container, container)                \
    VALIDATED(MDM_TYPE_LOCATION, MDM_TYPE_LOCATION_2, location, location)                    \
    PLAIN(MDM_TYPE_LOG_MANAGER, MDM_TYPE_LOG_MANAGER_2, log_manager, log_manager)            \
    PLAIN(MDM_TYPE_PLATFORM, MDM_TYPE_PLATFORM_2, platform, platform)                        \
    PLAIN(MDM_TYPE_APP_CB, MDM_TYPE_APP_CB, app_cb, callback)                                \
    PLAIN(MDM_TYPE_MISC_CB, MDM_TYPE_MISC_CB, misc_cb, callback)
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
