// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 11 and 12 (Exchange ActiveSync) is the body head and a payload:
//
//   type 98     one account: num0 to num5, str6 to str14
//   type 104    str8, str10 and str13 of one account
//   type 106    a count, then the accounts
//   any other   num0, str1
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto account_fields =
    MDM_FIELDS(mdm_eas_account_t, "eas.account", num0, num1, num2, num3, num4, num5, str6, str7,
               str8, str9, str10, str11, str12, str13, str14);
constexpr auto settings_fields = MDM_FIELDS(mdm_eas_account_t, "eas.settings", str8, str10, str13);
constexpr auto value_fields = MDM_FIELDS(mdm_eas_value_t, "eas.value", num0, str1);

// The fields of a form's record. The record of a list is its element.
constexpr Fields fields_of(mdm_form_t form)
{
    switch (form) {
    case MDM_FORM_EAS_ACCOUNT:
        return account_fields;
    case MDM_FORM_EAS_SETTINGS:
        return settings_fields;
    case MDM_FORM_EAS_ACCOUNTS:
        return account_fields;
    case MDM_FORM_EAS_VALUE:
    default:
        break;
    }
    return value_fields;
}

}  // namespace

const char *_validate_eas(const mdm_body_t &body, Names names)
{
    const mdm_eas_info_t &info = body.eas;
    switch (mdm_eas_form(info.type)) {
    case MDM_FORM_EAS_SETTINGS:
        if (!is_padding(info.data_size)) {
            return names.data_size();
        }
        break;
    case MDM_FORM_EAS_ACCOUNTS:
        if (info.data_size != 0 && has_null_element(info.data)) {
            return "eas.accounts";
        }
        break;
    case MDM_FORM_EAS_ACCOUNT:
    case MDM_FORM_EAS_VALUE:
    default:
        break;
    }
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores `data_size`.
uint32_t _size_of_eas(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {  // Q-BODY-2, Q-BODY-3
        return MDM_EXIT(body_head_size);
    }
    const mdm_form_t form = mdm_eas_form(info.type);
    if (form == MDM_FORM_EAS_ACCOUNTS) {
        MDM_FAIL_IF(has_null_element(info.data), no_size, "acconts is NULL");  // Q-BODY-9
        // Q-BODY-8: the head and the count are part of the stored size.
        const uint32_t size =
            empty_list_size + size_of_records_before_null(info.data, account_fields);
        info.data_size = static_cast<int32_t>(size);
        return MDM_EXIT(size);
    }
    uint32_t payload_size = size_of_fields(info.data, fields_of(form));
    if (form == MDM_FORM_EAS_SETTINGS) {
        // Q-EAS-1: the strings' size is added to what `data_size` held.
        // Q-EAS-2: if the sum is 0, the head travels alone.
        payload_size += static_cast<uint32_t>(info.data_size);
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return MDM_EXIT(body_head_size + payload_size);
}

bool _set_eas(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_eas_info_t &info = body->eas;
    out.body_head(info);
    if (!has_payload(info)) {
        return MDM_EXIT(true);
    }
    const mdm_form_t form = mdm_eas_form(info.type);
    if (form == MDM_FORM_EAS_ACCOUNTS) {
        // Q-BODY-9: a null account is counted, but not written.
        out.records(info.data, "eas.accounts", fields_of(form));
    } else {
        out.fields(info.data, fields_of(form));
    }
    return MDM_EXIT(true);
}

bool _get_eas(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_eas_info_t &info = body->eas;
    in.body_head(info);
    if (info.data_size == 0) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    const mdm_form_t form = mdm_eas_form(info.type);
    info.data = form == MDM_FORM_EAS_ACCOUNTS ? in.records("eas.accounts", fields_of(form))
                                              : in.record(fields_of(form));
    return MDM_EXIT(true);
}

// Q-EAS-3: this handler logs nothing.
// Q-BODY-7: `data` and `data_size` keep their values.
void _free_eas(const Log & /*log*/, mdm_body_t *body)
{
    const mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {  // Q-BODY-5
        return;
    }
    const mdm_form_t form = mdm_eas_form(info.type);
    if (form == MDM_FORM_EAS_ACCOUNTS) {
        release_records(info.data, fields_of(form));
    } else {
        release_record(info.data, fields_of(form));  // Q-EAS-4
    }
}

}  // namespace mdm
