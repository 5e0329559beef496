// SPDX-License-Identifier: Apache-2.0
//
// The callback bodies, app_cb and misc_cb: a head of four words and, for the callback types 0 and
// 1, a payload of the category's own.
#pragma once

#include "mdm_ipc_handlers.hpp"

namespace mdm {

// What tells the callback categories apart.
struct Callback {
    Fields head;
    Fields payload;
    const char *title;  // what the log calls the category
};

uint32_t size_of_callback(const Log &log, mdm_body_t *body, const Callback &callback);
bool set_callback(Writer &out, mdm_body_t *body, const Callback &callback);
bool get_callback(Reader &in, mdm_body_t *body, const Callback &callback);
void free_callback(const Log &log, mdm_body_t *body, const Callback &callback);

// In the head `data_size` travels second, and counts the whole body.
#define MDM_CALLBACK_HEAD_FIELDS(category) \
    MDM_FIELDS(mdm_##category##_info_t, #category, type, data_size, param, param2)

// Defines the handlers of a callback category.
#define MDM_CALLBACK_HANDLERS(category, callback)                  \
    uint32_t _size_of_##category(const Log &log, mdm_body_t *body) \
    {                                                              \
        return size_of_callback(log, body, callback);              \
    }                                                              \
    bool _set_##category(Writer &out, mdm_body_t *body)            \
    {                                                              \
        return set_callback(out, body, callback);                  \
    }                                                              \
    bool _get_##category(Reader &in, mdm_body_t *body)             \
    {                                                              \
        return get_callback(in, body, callback);                   \
    }                                                              \
    void _free_##category(const Log &log, mdm_body_t *body)        \
    {                                                              \
        free_callback(log, body, callback);                        \
    }

}  // namespace mdm
