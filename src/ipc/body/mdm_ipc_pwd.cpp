// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 3 and 4 (password policies) is the body head and a payload:
//
//   type 40     num0 to num8, str9, str10
//   any other   data_size raw bytes
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto policy_fields = MDM_FIELDS(mdm_pwd_policy_t, "pwd.policy", num0, num1, num2, num3,
                                          num4, num5, num6, num7, num8, str9, str10);

// Q-BODY-3: a sender looks at `data` as well.
bool sends_payload(const mdm_pwd_info_t &info)
{
    return info.data != nullptr && info.data_size >= 1;
}

}  // namespace

const char *_validate_pwd(const mdm_body_t &body, Names names)
{
    const mdm_pwd_info_t &info = body.pwd;
    return validate_payload(info.data_size >= 1, info.data, names);
}

// Q-PWD-1: `data_size` of a policy only says that there is one. It is never stored.
uint32_t _size_of_pwd(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    const mdm_pwd_info_t &info = body->pwd;
    uint32_t size = body_head_size;
    if (sends_payload(info)) {
        size += mdm_pwd_form(info.type) == MDM_FORM_PWD_POLICY
                    ? size_of_fields(info.data, policy_fields)
                    : static_cast<uint32_t>(info.data_size);
    }
    return MDM_EXIT(size);
}

bool _set_pwd(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_pwd_info_t &info = body->pwd;
    out.body_head(info);
    if (!sends_payload(info)) {
        return MDM_EXIT(true);
    }
    if (mdm_pwd_form(info.type) == MDM_FORM_PWD_POLICY) {
        out.fields(info.data, policy_fields);
    } else {
        out.raw_bytes(info.data, info.data_size);
    }
    return MDM_EXIT(true);
}

bool _get_pwd(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_pwd_info_t &info = body->pwd;
    in.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);  // Q-BODY-6: `data` stays as it was.
    }
    if (mdm_pwd_form(info.type) == MDM_FORM_PWD_POLICY) {
        info.data = in.record(policy_fields);
    } else {
        info.data = in.raw_bytes(info.data_size);
    }
    return MDM_EXIT(true);
}

void _free_pwd(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    mdm_pwd_info_t &info = body->pwd;
    if (info.data == nullptr) {  // Q-BODY-5: `data_size` is not looked at.
        return MDM_EXIT();
    }
    if (mdm_pwd_form(info.type) == MDM_FORM_PWD_POLICY) {
        release_record(info.data, policy_fields);  // Q-BODY-7: `data` keeps its value.
    } else {
        release_data(info.data);
    }
    return MDM_EXIT();
}

}  // namespace mdm
