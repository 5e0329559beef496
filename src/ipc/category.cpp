// SPDX-License-Identifier: Apache-2.0
#include "ipc/category.hpp"

#include <array>

namespace mdm {
namespace {

// What rows have in common, under the names of the row.
constexpr SetHandler *_set_single_list_unread = _set_single_list;
constexpr SizeHandler *_size_of_single_list_unread = _size_of_single_list;
constexpr FreeHandler *_free_single_list_unread = _free_single_list;
constexpr ValidateHandler *_validate_single_list_unread = _validate_single_list;
constexpr FreeHandler *_free_roaming_res = _free_roaming;
constexpr ValidateHandler *no_validation = nullptr;
constexpr auto _validate_admin = no_validation, _validate_log_manager = no_validation,
               _validate_platform = no_validation, _validate_app_cb = no_validation,
               _validate_misc_cb = no_validation;

// The rows behind the empty one. Seven categories share two.
#define MDM_ROWS(ROW)                                                                        \
    ROW(admin), ROW(pwd), ROW(security), ROW(wifi), ROW(bluetooth), ROW(eas), ROW(app),      \
        ROW(app_res), ROW(roaming), ROW(roaming_res), ROW(misc), ROW(apn), ROW(single_list), \
        ROW(single_list_unread), ROW(phone_res), ROW(email), ROW(kiosk), ROW(container),     \
        ROW(location), ROW(log_manager), ROW(platform), ROW(app_cb), ROW(misc_cb)

#define MDM_ENUMERATOR(row) row
enum class Row : uint8_t { none, MDM_ROWS(MDM_ENUMERATOR) };

}  // namespace

#define MDM_ROW(row)                                                         \
    {                                                                        \
        _set_##row, _get_##row, _size_of_##row, _free_##row, _validate_##row \
    }
constexpr ipc_handler_row handler_rows[] = {{nullptr, nullptr, nullptr, nullptr},
                                            MDM_ROWS(MDM_ROW)};

// Each category: its message types from the first to the last, its name, its row, and the file of its
// handlers.
#define MDM_CATEGORIES(CATEGORY)                                  \
    CATEGORY(1, 2, admin, admin, admin)                           \
    CATEGORY(3, 4, pwd, pwd, pwd)                                 \
    CATEGORY(5, 6, security, security, security)                  \
    CATEGORY(7, 8, wifi, wifi, wifi)                              \
    CATEGORY(9, 10, bluetooth, bluetooth, bluetooth)              \
    CATEGORY(11, 12, eas, eas, eas)                               \
    CATEGORY(13, 13, app, app, app)                               \
    CATEGORY(14, 14, app_res, app_res, app_res)                   \
    CATEGORY(15, 15, roaming, roaming, roaming)                   \
    CATEGORY(16, 16, roaming_res, roaming_res, roaming)           \
    CATEGORY(17, 18, misc, misc, misc)                            \
    CATEGORY(21, 22, apn, apn, apn)                               \
    CATEGORY(23, 24, browser, single_list_unread, single_list)    \
    CATEGORY(25, 26, date_time, single_list, single_list)         \
    CATEGORY(27, 28, remote, single_list, single_list)            \
    CATEGORY(29, 30, vpn, single_list, single_list)               \
    CATEGORY(31, 32, firewall, single_list, single_list)          \
    CATEGORY(33, 34, res, single_list, single_list)               \
    CATEGORY(35, 36, phone_res, phone_res, phone_res)             \
    CATEGORY(37, 38, enterprise, single_list_unread, single_list) \
    CATEGORY(39, 40, email, email, email)                         \
    CATEGORY(45, 46, kiosk, kiosk, kiosk)                         \
    CATEGORY(47, 48, container, container, container)             \
    CATEGORY(49, 50, location, location, location)                \
    CATEGORY(51, 52, log_manager, log_manager, log_manager)       \
    CATEGORY(53, 54, platform, platform, platform)                \
    CATEGORY(61, 61, app_cb, app_cb, callback)                    \
    CATEGORY(63, 63, misc_cb, misc_cb, callback)

#define MDM_NAMES_OF(first, last, name, row, file) MDM_NAMES(#file, #name) "\0"
constexpr char category_names[] = MDM_CATEGORIES(MDM_NAMES_OF);

constexpr std::array<TypeEntry, last_message_type + 1> type_entries = [] {
    std::array<TypeEntry, last_message_type + 1> entries{};
    uint16_t names = 0;
#define MDM_FILL_TYPES(first, last, name, row, file)                                 \
    static_assert(sizeof(#file #name "mdm_ipc_.cpp_size_of_") < Log::longest_origin, \
                  "too long for a line");                                            \
    for (size_t type = (first); type <= (last); ++type) {                            \
        entries[type] = {static_cast<uint8_t>(Row::row), names};                     \
    }                                                                                \
    names += sizeof(MDM_NAMES_OF(first, last, name, row, file)) - 1;
    MDM_CATEGORIES(MDM_FILL_TYPES)
    return entries;
}();

}  // namespace mdm
