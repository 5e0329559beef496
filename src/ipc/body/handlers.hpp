// SPDX-License-Identifier: Apache-2.0
//
// The handlers of the categories. Both paths call them through the table in ipc/category.hpp.
#pragma once

#include <cstdint>

#include "log/log.hpp"
#include "mdm/message.h"
#include "wire/cursor.hpp"
#include "wire/lengths.hpp"

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
GetHandler _get_single_list_unread;

}  // namespace mdm
