// SPDX-License-Identifier: Apache-2.0
//
// The handlers of the categories: called through the library's table, and named in log lines.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "mdm/ipc.h"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test {

// A category: its message types from the first to the last, its name, and the file of its handlers.
struct CategoryEntry {
    uint8_t first;
    uint8_t last;
    const char *name;
    const char *file;
};

// Every category, written down without the library's own table.
inline constexpr CategoryEntry category_entries[] = {
    {1, 2, "admin", "mdm_ipc_admin.cpp"},
    {3, 4, "pwd", "mdm_ipc_pwd.cpp"},
    {5, 6, "security", "mdm_ipc_security.cpp"},
    {7, 8, "wifi", "mdm_ipc_wifi.cpp"},
    {9, 10, "bluetooth", "mdm_ipc_bluetooth.cpp"},
    {11, 12, "eas", "mdm_ipc_eas.cpp"},
    {13, 13, "app", "mdm_ipc_app.cpp"},
    {14, 14, "app_res", "mdm_ipc_app_res.cpp"},
    {15, 15, "roaming", "mdm_ipc_roaming.cpp"},
    {16, 16, "roaming_res", "mdm_ipc_roaming.cpp"},
    {17, 18, "misc", "mdm_ipc_misc.cpp"},
    {21, 22, "apn", "mdm_ipc_apn.cpp"},
    {23, 24, "browser", "mdm_ipc_single_list.cpp"},
    {25, 26, "date_time", "mdm_ipc_single_list.cpp"},
    {27, 28, "remote", "mdm_ipc_single_list.cpp"},
    {29, 30, "vpn", "mdm_ipc_single_list.cpp"},
    {31, 32, "firewall", "mdm_ipc_single_list.cpp"},
    {33, 34, "res", "mdm_ipc_single_list.cpp"},
    {35, 36, "phone_res", "mdm_ipc_phone_res.cpp"},
    {37, 38, "enterprise", "mdm_ipc_single_list.cpp"},
    {39, 40, "email", "mdm_ipc_email.cpp"},
    {45, 46, "kiosk", "mdm_ipc_kiosk.cpp"},
    {47, 48, "container", "mdm_ipc_container.cpp"},
    {49, 50, "location", "mdm_ipc_location.cpp"},
    {51, 52, "log_manager", "mdm_ipc_log_manager.cpp"},
    {53, 54, "platform", "mdm_ipc_platform.cpp"},
    {61, 61, "app_cb", "mdm_ipc_callback.cpp"},
    {63, 63, "misc_cb", "mdm_ipc_callback.cpp"},
};

// The category of a message type; throws if there is none.
const CategoryEntry &category_entry(uint8_t type);

// A handler of a message type. It may stand for the origin of its lines: enter(wifi.set).
class Handler {
public:
    constexpr Handler(uint8_t type, const char *prefix) : type_(type), prefix_(prefix) {}

    // NOLINTNEXTLINE(google-explicit-constructor): see above
    operator Origin() const;

protected:
    uint8_t type_;

private:
    const char *prefix_;
};

struct SizeOf : Handler {
    using Handler::Handler;
    uint32_t operator()(mdm_body_t *body) const;
};

// Writes the body with no end in sight, and gaps not at all; returns the position after it, or null
// on failure.
struct Set : Handler {
    using Handler::Handler;
    uint8_t *operator()(uint8_t *position, mdm_body_t *body) const;
};

// Reads the body; returns the position after it, or null on failure.
struct Get : Handler {
    using Handler::Handler;
    const uint8_t *operator()(mdm_body_t *body, const uint8_t *position) const;
};

struct Free : Handler {
    using Handler::Handler;
    void operator()(mdm_body_t *body) const;
};

// The handlers of a message type, and short ways to use them.
struct Handlers {
    constexpr explicit Handlers(uint8_t message_type)
        : type(message_type), size(message_type, "_size_of_"), set(message_type, "_set_"),
          get(message_type, "_get_"), free(message_type, "_free_")
    {
    }

    uint8_t type;
    SizeOf size;
    Set set;
    Get get;
    Free free;

    // The bytes that `set` writes into a zeroed buffer that is larger than any test needs.
    Bytes write(mdm_body_t *body) const;
    // Lets `get` read an exact copy of the bytes; returns how many it consumed.
    size_t read(mdm_body_t *body, const Bytes &bytes) const;
    // What `free` releases, in order.
    std::vector<const void *> release(mdm_body_t *body) const;
};

// Those of a category, for its first message type.
consteval Handlers handlers_of(std::string_view name)
{
    return Handlers(std::ranges::find(category_entries, name, &CategoryEntry::name)->first);
}

}  // namespace mdm::test
