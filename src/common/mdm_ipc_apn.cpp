// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 21 and 22: access points. The body head, then
//
//   type 387, 393   a profile: num0, num1, profile_name, str3 to str14
//   type 389, 390,
//        391        a count and profiles
//   any other       data_size raw bytes
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { profile, profiles, raw };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 387:
    case 393:
        return Shape::profile;
    case 389:
    case 390:
    case 391:
        return Shape::profiles;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(apn);
constexpr auto profile_fields =
    MDM_FIELDS(mdm_apn_account_t, "apn.profile", num0, num1, profile_name, str3, str4, str5, str6,
               str7, str8, str9, str10, str11, str12, str13, str14);

const char *unsound_part(const mdm_apn_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(apn);
    switch (shape_of(info.type)) {
    case Shape::profile:
        if (!is_padding(info.data_size)) {
            return paths.data_size;
        }
        break;
    case Shape::profiles:
        if (info.data_size != 0 && has_null_element(info.data)) {
            return "apn.profiles";
        }
        break;
    case Shape::raw:
        return unsound_bytes(info.data_size, info.data, paths);
    }
    return unsound_payload(info.data_size != 0, info.data, paths);
}

}  // namespace

// Stores `data_size`: of a list the whole body's size. A single profile's size is added to what
// was there, with every call anew: the sum is sent and sized, and as many bytes as there were
// before stay zero at the end of the body.
uint32_t _size_of_apn(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    mdm_apn_info_t &info = body->apn;
    uint32_t size = body_head_size;
    if (!has_payload(info)) {
        return MDM_EXIT(size);
    }
    switch (shape_of(info.type)) {
    case Shape::profile:
        info.data_size = static_cast<int32_t>(static_cast<uint32_t>(info.data_size) +
                                              size_of_fields(info.data, profile_fields));
        size += static_cast<uint32_t>(info.data_size);
        break;
    case Shape::profiles: {
        const auto profiles = size_of_records(info.data, profile_fields);
        if (!profiles) {
            MDM_CRITICAL("acconts is NULL");
            return MDM_EXIT(no_room);  // the line with the size is for a body that has one
        }
        size = empty_list_size + *profiles;
        info.data_size = static_cast<int32_t>(size);
        break;
    }
    case Shape::raw:
        size += static_cast<uint32_t>(info.data_size);
        break;
    }
    MDM_INFO("size [%d]", size);
    return MDM_EXIT(size);
}

template <class Out>
static bool _set_apn(Out &out, const mdm_apn_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (!has_payload(*info)) {
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::profile:
        out.record(info->data, profile_fields);
        break;
    case Shape::profiles:
        out.count(info->data, "apn.profiles");
        for (const auto *profile : elements<mdm_apn_account_t>(info->data)) {
            if (profile != nullptr) {  // counted all the same
                MDM_INFO("ProfileName [%s]", profile->profile_name);
                out.fields(*profile, profile_fields);
            }
        }
        break;
    case Shape::raw:
        out.bytes(info->data, info->data_size, "apn.data");
        break;
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_apn(In &in, mdm_apn_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size == 0) {
        info->data = nullptr;
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::profile:
        info->data = in.record(profile_fields);
        break;
    case Shape::profiles: {
        const int32_t count = in.count("apn.profiles", smallest_size(profile_fields));
        auto profiles = in.new_list();
        for (int32_t i = 0; in && i < count; ++i) {
            auto *profile = in.record(profile_fields);
            MDM_INFO("ProfileName [%s]", profile->profile_name);
            profiles.append(profile);
        }
        info->data = profiles.head();
        break;
    }
    case Shape::raw:
        info->data = in.bytes(info->data_size, "apn.data");
        break;
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(apn)

// For a profile and a list `data` keeps its old value.
void _free_apn(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || !has_payload(body->apn)) {
        return MDM_EXIT();
    }
    mdm_apn_info_t &info = body->apn;
    switch (shape_of(info.type)) {
    case Shape::profile:
        release_record(info.data, profile_fields);
        break;
    case Shape::profiles:
        release_records(info.data, profile_fields);
        break;
    case Shape::raw:
        release_data(info);
        info.data_size = 0;
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
