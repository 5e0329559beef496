// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 21 and 22 (access points) is the body head and a payload:
//
//   type 387, 393        one profile: num0, num1, profile_name, str3 to str14
//   type 389, 390, 391   a count, then the profiles
//   any other            data_size raw bytes
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto profile_fields =
    MDM_FIELDS(mdm_apn_account_t, "apn.profile", num0, num1, profile_name, str3, str4, str5, str6,
               str7, str8, str9, str10, str11, str12, str13, str14);

}  // namespace

const char *_validate_apn(const mdm_body_t &body, Names names)
{
    const mdm_apn_info_t &info = body.apn;
    switch (mdm_apn_form(info.type)) {
    case MDM_FORM_APN_PROFILE:
        if (!is_padding(info.data_size)) {
            return names.data_size();
        }
        break;
    case MDM_FORM_APN_PROFILES:
        if (info.data_size != 0 && has_null_element(info.data)) {
            return "apn.profiles";
        }
        break;
    case MDM_FORM_APN_DATA:
    default:
        return validate_bytes(info.data_size, info.data, names);
    }
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores `data_size` of a profile and of a list.
uint32_t _size_of_apn(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_apn_info_t &info = body->apn;
    uint32_t size = body_head_size;
    if (!has_payload(info)) {  // Q-BODY-2, Q-BODY-3
        return MDM_EXIT(size);
    }
    switch (mdm_apn_form(info.type)) {
    case MDM_FORM_APN_PROFILE:
        // Q-APN-1: the profile's size is added to what `data_size` held.
        info.data_size = static_cast<int32_t>(static_cast<uint32_t>(info.data_size) +
                                              size_of_fields(info.data, profile_fields));
        size += static_cast<uint32_t>(info.data_size);
        break;
    case MDM_FORM_APN_PROFILES:
        MDM_FAIL_IF(has_null_element(info.data), no_size, "acconts is NULL");  // Q-BODY-9
        // Q-BODY-8: the head and the count are part of the stored size.
        size = empty_list_size + size_of_records_before_null(info.data, profile_fields);
        info.data_size = static_cast<int32_t>(size);
        break;
    case MDM_FORM_APN_DATA:
    default:
        size += static_cast<uint32_t>(info.data_size);  // Q-BODY-4: a negative one, too
        break;
    }
    MDM_INFO("size [%d]", size);
    return MDM_EXIT(size);
}

bool _set_apn(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_apn_info_t &info = body->apn;
    out.body_head(info);
    if (!has_payload(info)) {
        return MDM_EXIT(true);
    }
    switch (mdm_apn_form(info.type)) {
    case MDM_FORM_APN_PROFILE:
        out.fields(info.data, profile_fields);
        break;
    case MDM_FORM_APN_PROFILES:
        out.count(info.data, "apn.profiles");
        for (const auto *profile : elements<mdm_apn_account_t>(info.data)) {
            if (profile != nullptr) {  // Q-BODY-9: a null profile is counted, but not written.
                MDM_INFO("ProfileName [%s]", profile->profile_name);  // Q-APN-2
                out.fields(profile, profile_fields);
            }
        }
        break;
    case MDM_FORM_APN_DATA:
    default:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

bool _get_apn(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_apn_info_t &info = body->apn;
    in.body_head(info);
    if (info.data_size == 0) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    switch (mdm_apn_form(info.type)) {
    case MDM_FORM_APN_PROFILE:
        info.data = in.record(profile_fields);
        break;
    case MDM_FORM_APN_PROFILES:
    default: {
        Reader::List profiles(in, in.count("apn.profiles", smallest_size(profile_fields)));
        while (profiles.next()) {
            auto *profile = in.record(profile_fields);
            MDM_INFO("ProfileName [%s]", profile->profile_name);
            profiles.append(profile);
        }
        info.data = profiles.head();
        break;
    }
    case MDM_FORM_APN_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

// Q-BODY-7: `data` and `data_size` of a profile and of a list keep their values.
void _free_apn(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || !has_payload(body->apn)) {
        return MDM_EXIT();
    }
    mdm_apn_info_t &info = body->apn;
    switch (mdm_apn_form(info.type)) {
    case MDM_FORM_APN_PROFILE:
        release_record(info.data, profile_fields);
        break;
    case MDM_FORM_APN_PROFILES:
        release_records(info.data, profile_fields);
        break;
    case MDM_FORM_APN_DATA:
    default:
        release_data(info.data);
        info.data_size = 0;
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
