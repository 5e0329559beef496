// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 3 and 4: password policies. The body head, then
//
//   type 40     num0 to num8, str9, str10
//   any other   data_size raw bytes
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { policy, raw };

constexpr Shape shape_of(uint32_t type)
{
    return type == 40 ? Shape::policy : Shape::raw;
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(pwd);
constexpr auto policy_fields = MDM_FIELDS(mdm_pwd_policy_t, "pwd.policy", num0, num1, num2, num3,
                                          num4, num5, num6, num7, num8, str9, str10);

// The sender looks at `data` too; the receiver has only `data_size` to go by.
bool sends_payload(const mdm_pwd_info_t &info)
{
    return info.data != nullptr && info.data_size >= 1;
}

const char *unsound_part(const mdm_pwd_info_t &info)
{
    return unsound_payload(info.data_size >= 1, info.data, MDM_PAYLOAD_PATHS(pwd));
}

}  // namespace

// For a policy `data_size` only switches the payload on: it is sent as it stands, and the
// record's length follows from its fields.
uint32_t _size_of_pwd(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    const mdm_pwd_info_t &info = body->pwd;
    uint32_t size = body_head_size;
    if (sends_payload(info)) {
        size += shape_of(info.type) == Shape::policy ? size_of_fields(info.data, policy_fields)
                                                     : static_cast<uint32_t>(info.data_size);
    }
    return MDM_EXIT(size);
}

template <class Out>
static bool _set_pwd(Out &out, const mdm_pwd_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (!sends_payload(*info)) {
        return MDM_EXIT(true);
    }
    if (shape_of(info->type) == Shape::policy) {
        out.record(info->data, policy_fields);
    } else {
        out.bytes(info->data, info->data_size, "pwd.data");
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_pwd(In &in, mdm_pwd_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);  // `data` stays as it was
    }
    if (shape_of(info->type) == Shape::policy) {
        info->data = in.record(policy_fields);
    } else {
        info->data = in.bytes(info->data_size, "pwd.data");
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(pwd)

void _free_pwd(mdm_body_t *body)
{
    MDM_ENTER();
    mdm_pwd_info_t &info = body->pwd;
    if (info.data == nullptr) {
        return MDM_EXIT();
    }
    if (shape_of(info.type) == Shape::policy) {
        release_record(info.data, policy_fields);  // `data` keeps its old value
    } else {
        release_data(info);
    }
    return MDM_EXIT();
}

}  // namespace mdm
