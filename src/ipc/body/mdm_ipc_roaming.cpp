// SPDX-License-Identifier: Apache-2.0
//
// The bodies of message types 15 (roaming) and 16 (roaming_res):
//
//   roaming       the body head, then name
//   roaming_res   the body head alone
//
// They share one free handler.
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto data_fields = MDM_FIELDS(mdm_roaming_data_t, "roaming.data", name);

}  // namespace

const char *_validate_roaming(const mdm_body_t &body, Names names)
{
    return body.roaming.data == nullptr ? names.data() : nullptr;
}

// Q-ROAMING-1: `data_size` is neither stored nor looked at.
// Q-ROAMING-2: a body without its record has no size, although its head is written.
uint32_t _size_of_roaming(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);
    MDM_ASSERT(body->roaming.data != nullptr, 0);
    return MDM_EXIT(body_head_size + size_of_fields(body->roaming.data, data_fields));
}

bool _set_roaming(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_roaming_info_t &info = body->roaming;
    out.body_head(info);
    if (info.data != nullptr) {
        out.fields(info.data, data_fields);
    }
    return MDM_EXIT(true);
}

bool _get_roaming(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_roaming_info_t &info = body->roaming;
    in.body_head(info);
    info.data = in.record(data_fields);
    return MDM_EXIT(true);
}

const char *_validate_roaming_res(const mdm_body_t &body, Names names)
{
    return validate_nothing(body.roaming_res.data, names);
}

uint32_t _size_of_roaming_res(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);
    return MDM_EXIT(body_head_size);
}

bool _set_roaming_res(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);
    out.body_head(body->roaming_res);
    return MDM_EXIT(true);
}

// Q-ROAMING-5: `data` stays as it was.
bool _get_roaming_res(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);
    in.body_head(body->roaming_res);
    return MDM_EXIT(true);
}

// Q-ROAMING-3: the record stays allocated, `data` keeps its value, and nothing is logged.
// Q-ROAMING-4: `data` of roaming_res is followed, too.
void _free_roaming(const Log & /*log*/, mdm_body_t *body)
{
    if (body->roaming.data != nullptr) {
        release_strings(body->roaming.data, data_fields);
    }
}

}  // namespace mdm
