// SPDX-License-Identifier: Apache-2.0
//
// The handlers of the categories as functions of a body and of a position in a buffer.
#pragma once

#include <cstdint>

#include "mdm/ipc.h"

namespace mdm::test {

// The handlers of a message type.
class Handlers {
public:
    explicit Handlers(uint8_t type) : type_(type) {}

    // Writes the body with no end in sight, and gaps not at all; returns the position after it, or
    // null on failure.
    uint8_t *set(uint8_t *position, mdm_body_t *body) const;
    // Reads the body; returns the position after it, or null on failure.
    const uint8_t *get(mdm_body_t *body, const uint8_t *position) const;
    uint32_t size(mdm_body_t *body) const;
    void free(mdm_body_t *body) const;

private:
    uint8_t type_;
};

// Handlers by their names.
#define MDM_NAMED_HANDLERS(category, type)                                           \
    inline uint8_t *_set_##category(uint8_t *position, mdm_body_t *body)             \
    {                                                                                \
        return Handlers(type).set(position, body);                                   \
    }                                                                                \
    inline const uint8_t *_get_##category(mdm_body_t *body, const uint8_t *position) \
    {                                                                                \
        return Handlers(type).get(body, position);                                   \
    }                                                                                \
    inline uint32_t _size_of_##category(mdm_body_t *body)                            \
    {                                                                                \
        return Handlers(type).size(body);                                            \
    }                                                                                \
    inline void _free_##category(mdm_body_t *body)                                   \
    {                                                                                \
        Handlers(type).free(body);                                                   \
    }

MDM_NAMED_HANDLERS(admin, 1)
MDM_NAMED_HANDLERS(pwd, 3)
MDM_NAMED_HANDLERS(security, 5)
MDM_NAMED_HANDLERS(wifi, 7)
MDM_NAMED_HANDLERS(bluetooth, 9)
MDM_NAMED_HANDLERS(eas, 11)
MDM_NAMED_HANDLERS(app, 13)
MDM_NAMED_HANDLERS(app_res, 14)
MDM_NAMED_HANDLERS(roaming, 15)
MDM_NAMED_HANDLERS(roaming_res, 16)
MDM_NAMED_HANDLERS(misc, 17)
MDM_NAMED_HANDLERS(apn, 21)
MDM_NAMED_HANDLERS(phone_res, 35)
MDM_NAMED_HANDLERS(email, 39)
MDM_NAMED_HANDLERS(kiosk, 45)
MDM_NAMED_HANDLERS(container, 47)
MDM_NAMED_HANDLERS(location, 49)
MDM_NAMED_HANDLERS(log_manager, 51)
MDM_NAMED_HANDLERS(platform, 53)
MDM_NAMED_HANDLERS(app_cb, 61)
MDM_NAMED_HANDLERS(misc_cb, 63)

}  // namespace mdm::test
