// SPDX-License-Identifier: Apache-2.0
//
// The bodies of message types 23 to 34, 37 and 38 are the body head and data_size raw bytes. Seven
// categories share this source.
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {

// All seven bodies have the same layout, so the handlers use `res`.
static_assert(sizeof(mdm_browser_info_t) == sizeof(mdm_res_info_t));
static_assert(sizeof(mdm_date_time_info_t) == sizeof(mdm_res_info_t));
static_assert(sizeof(mdm_remote_info_t) == sizeof(mdm_res_info_t));
static_assert(sizeof(mdm_vpn_info_t) == sizeof(mdm_res_info_t));
static_assert(sizeof(mdm_firewall_info_t) == sizeof(mdm_res_info_t));
static_assert(sizeof(mdm_enterprise_info_t) == sizeof(mdm_res_info_t));

const char *_validate_single_list(const mdm_body_t &body, Names names)
{
    return validate_bytes(body.res.data_size, body.res.data, names);
}

// Q-SINGLE_LIST-2: a negative `data_size` counts fewer bytes than the head that is written.
uint32_t _size_of_single_list(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);
    return MDM_EXIT(body_head_size + static_cast<uint32_t>(body->res.data_size));
}

bool _set_single_list(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_res_info_t &info = body->res;
    out.body_head(info);
    if (info.data_size >= 1) {
        out.raw_bytes(info.data, info.data_size);
    }
    return MDM_EXIT(true);
}

bool _get_single_list(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_res_info_t &info = body->res;
    in.body_head(info);
    info.data = info.data_size >= 1 ? in.raw_bytes(info.data_size) : nullptr;
    return MDM_EXIT(true);
}

// Q-SINGLE_LIST-1: browser and enterprise leave the payload unread, and `data` as it was.
bool _get_unread_list(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_res_info_t &info = body->res;
    in.body_head(info);
    if (info.data_size < 1) {
        info.data = nullptr;
    }
    return MDM_EXIT(true);
}

// Q-BODY-13: the exit is logged for a null body only, and the entry never.
void _free_single_list(const Log &log, mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    body->res.data_size = 0;
    release_data(body->res.data);
}

}  // namespace mdm
