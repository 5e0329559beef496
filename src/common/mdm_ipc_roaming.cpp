// SPDX-License-Identifier: Apache-2.0
//
// Bodies of message types 15, roaming, and 16, roaming_res:
//
//   roaming       the body head, then name
//   roaming_res   the body head
//
// They share one free handler.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(roaming);
constexpr auto res_head_fields = MDM_BODY_HEAD_FIELDS(roaming_res);
constexpr auto data_fields = MDM_FIELDS(mdm_roaming_data_t, "roaming.data", name);

const char *unsound_part(const mdm_roaming_info_t &info)
{
    return info.data == nullptr ? "roaming.data" : nullptr;
}

const char *unsound_part(const mdm_roaming_res_info_t &info)
{
    return unsound_nothing(info.data, MDM_PAYLOAD_PATHS(roaming_res));
}

}  // namespace

// `data_size` is neither computed nor looked at: the record travels whatever it says.
uint32_t _size_of_roaming(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);
    MDM_ASSERT(body->roaming.data != nullptr, 0);

    return MDM_EXIT(body_head_size + size_of_fields(body->roaming.data, data_fields));
}

template <class Out>
static bool _set_roaming(Out &out, const mdm_roaming_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (info->data != nullptr) {
        out.record(info->data, data_fields);
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_roaming(In &in, mdm_roaming_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    info->data = in.record(data_fields);
    return MDM_EXIT(true);
}

MDM_HANDLERS(roaming)

uint32_t _size_of_roaming_res(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);
    return MDM_EXIT(body_head_size);
}

template <class Out>
static bool _set_roaming_res(Out &out, const mdm_roaming_res_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);
    out.body_head(*info, res_head_fields);
    return MDM_EXIT(true);
}

// `data` stays as it was.
template <class In>
static bool _get_roaming_res(In &in, mdm_roaming_res_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);
    in.body_head(*info, res_head_fields);
    return MDM_EXIT(true);
}

MDM_HANDLERS(roaming_res)

// Both message types. The record stays allocated, and `data` keeps pointing at it. Logs nothing.
void _free_roaming(mdm_body_t *body)
{
    const mdm_roaming_info_t &info = body->roaming;
    if (info.data != nullptr) {
        release_strings(payload<mdm_roaming_data_t>(info), data_fields);
    }
}

}  // namespace mdm
