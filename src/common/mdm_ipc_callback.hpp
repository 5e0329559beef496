// SPDX-License-Identifier: Apache-2.0
//
// The callback bodies, app_cb and misc_cb: a head of four words and, for the callback types 0 and
// 1, a payload of the category's own.
#pragma once

#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {

// Of any other type the head travels alone.
constexpr bool is_known_callback(uint32_t type)
{
    return type < 2;
}

}  // namespace mdm

// Defines the handlers of a callback category. In its head `data_size` travels second, and counts
// the whole body. `payload_fields` lists what follows the head;
// `NAME` is what the log calls the category. A line of these handlers carries the line of the
// category's invocation; apart from the exit line no two lines of one handler read the same.
//
// The size handler stores the body's size in `data_size`, which the set handler sends: a receiver
// that finds 0 there reads no payload.
#define MDM_CALLBACK_HANDLERS(category, NAME, payload_fields)                           \
    static constexpr auto category##_head_fields =                                      \
        MDM_FIELDS(mdm_##category##_info_t, #category, type, data_size, param, param2); \
                                                                                        \
    uint32_t _size_of_##category(mdm_body_t *body)                                      \
    {                                                                                   \
        MDM_ENTER();                                                                    \
        if (body == nullptr) {                                                          \
            MDM_CRITICAL("info is NULL");                                               \
            return MDM_EXIT(0);                                                         \
        }                                                                               \
        mdm_##category##_info_t &info = body->category;                                 \
        MDM_INFO("Callback detail request [%d]", info.type);                            \
        info.data_size = size_of_fields(info, category##_head_fields);                  \
        if (is_known_callback(info.type)) {                                             \
            info.data_size += size_of_fields(info, payload_fields);                     \
        } else {                                                                        \
            MDM_CRITICAL("Unknown " NAME " callback type [%d]", info.type);             \
        }                                                                               \
        MDM_INFO("Size = %d", info.data_size);                                          \
        return MDM_EXIT(info.data_size);                                                \
    }                                                                                   \
                                                                                        \
    template <class Out>                                                                \
    static bool _set_##category(Out &out, const mdm_##category##_info_t *info)          \
    {                                                                                   \
        MDM_ENTER();                                                                    \
        if (!out) {                                                                     \
            MDM_CRITICAL("p_msg is NULL");                                              \
            return MDM_EXIT(false);                                                     \
        }                                                                               \
        if (info == nullptr) {                                                          \
            MDM_CRITICAL("p_data is NULL");                                             \
            return MDM_EXIT(false);                                                     \
        }                                                                               \
        out.fields(*info, category##_head_fields);                                      \
        MDM_INFO("Callback detail request [%d]", info->type);                           \
        if (is_known_callback(info->type)) {                                            \
            out.fields(*info, payload_fields);                                          \
        } else {                                                                        \
            MDM_CRITICAL("Unknown " NAME " callback type [%d]", info->type);            \
        }                                                                               \
        return MDM_EXIT(true);                                                          \
    }                                                                                   \
                                                                                        \
    template <class In>                                                                 \
    static bool _get_##category(In &in, mdm_##category##_info_t *info)                  \
    {                                                                                   \
        MDM_ENTER();                                                                    \
        if (!in) {                                                                      \
            MDM_CRITICAL("p_msg is NULL");                                              \
            return MDM_EXIT(false);                                                     \
        }                                                                               \
        if (info == nullptr) {                                                          \
            MDM_CRITICAL("p_data is NULL");                                             \
            return MDM_EXIT(false);                                                     \
        }                                                                               \
        in.fields(*info, category##_head_fields);                                       \
        if (!in || info->data_size == 0) {                                              \
            return MDM_EXIT(true);                                                      \
        }                                                                               \
        MDM_INFO("Callback detail request [%d]", info->type);                           \
        if (is_known_callback(info->type)) {                                            \
            in.fields(*info, payload_fields);                                           \
        } else {                                                                        \
            MDM_CRITICAL("Unknown " NAME " callback type [%d]", info->type);            \
        }                                                                               \
        return MDM_EXIT(true);                                                          \
    }                                                                                   \
                                                                                        \
    static const char *unsound_part(const mdm_##category##_info_t & /*info*/)           \
    {                                                                                   \
        return nullptr;                                                                 \
    }                                                                                   \
                                                                                        \
    MDM_HANDLERS(category)                                                              \
                                                                                        \
    void _free_##category(mdm_body_t *body)                                             \
    {                                                                                   \
        MDM_ENTER();                                                                    \
        if (body == nullptr) {                                                          \
            MDM_CRITICAL("info is NULL");                                               \
            return MDM_EXIT();                                                          \
        }                                                                               \
        mdm_##category##_info_t &info = body->category;                                 \
        MDM_INFO("Callback detail request [%d]", info.type);                            \
        if (is_known_callback(info.type)) {                                             \
            release_strings(info, payload_fields);                                      \
        } else {                                                                        \
            MDM_CRITICAL("Unknown " NAME " callback type [%d]", info.type);             \
        }                                                                               \
        return MDM_EXIT();                                                              \
    }
