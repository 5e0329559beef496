// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 39 and 40 (e-mail) is the body head and a payload:
//
//   type 359    one account: num0, num1, num2, num4, num6, num3, num5, str13 to str21
//   type 362    str16, str15 and str14 of one account
//   type 363    a count, then the accounts: num0 to num8, str9 to str21
//   any other   num0, str1
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

// Q-EMAIL-1: a single account has fewer fields than one in a list, and another order.
constexpr auto account_fields =
    MDM_FIELDS(mdm_email_account_t, "email.account", num0, num1, num2, num4, num6, num3, num5,
               str13, str14, str15, str16, str17, str18, str19, str20, str21);
constexpr auto element_fields = MDM_FIELDS(
    mdm_email_account_t, "email.account", num0, num1, num2, num3, num4, num5, num6, num7, num8,
    str9, str10, str11, str12, str13, str14, str15, str16, str17, str18, str19, str20, str21);
// Q-EMAIL-2: the strings of settings travel from the last to the first.
constexpr auto settings_fields =
    MDM_FIELDS(mdm_email_account_t, "email.settings", str16, str15, str14);
constexpr auto value_fields = MDM_FIELDS(mdm_email_value_t, "email.value", num0, str1);

// The fields of a form's record. The record of a list is its element.
constexpr Fields fields_of(mdm_form_t form)
{
    switch (form) {
    case MDM_FORM_EMAIL_ACCOUNT:
        return account_fields;
    case MDM_FORM_EMAIL_SETTINGS:
        return settings_fields;
    case MDM_FORM_EMAIL_ACCOUNTS:
        return element_fields;
    case MDM_FORM_EMAIL_VALUE:
    default:
        break;
    }
    return value_fields;
}

}  // namespace

const char *_validate_email(const mdm_body_t &body, Names names)
{
    const mdm_email_info_t &info = body.email;
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores `data_size`.
uint32_t _size_of_email(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_email_info_t &info = body->email;
    if (!has_payload(info)) {  // Q-BODY-2, Q-BODY-3
        return MDM_EXIT(body_head_size);
    }
    const mdm_form_t form = mdm_email_form(info.type);
    if (form == MDM_FORM_EMAIL_ACCOUNTS) {
        // Q-BODY-8: the head and the count are part of the stored size.
        // Q-EMAIL-3: the size ends at the first null account, and the written list does not.
        const uint32_t size =
            empty_list_size + size_of_records_before_null(info.data, element_fields);
        info.data_size = static_cast<int32_t>(size);
        return MDM_EXIT(size);
    }
    const uint32_t payload_size = size_of_fields(info.data, fields_of(form));
    info.data_size = static_cast<int32_t>(payload_size);
    return MDM_EXIT(body_head_size + payload_size);
}

bool _set_email(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_email_info_t &info = body->email;
    out.body_head(info);
    if (!has_payload(info)) {
        return MDM_EXIT(true);
    }
    const mdm_form_t form = mdm_email_form(info.type);
    if (form == MDM_FORM_EMAIL_ACCOUNTS) {
        out.records(info.data, "email.accounts", fields_of(form));
    } else {
        out.fields(info.data, fields_of(form));
    }
    return MDM_EXIT(true);
}

bool _get_email(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_email_info_t &info = body->email;
    in.body_head(info);
    if (info.data_size == 0) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    const mdm_form_t form = mdm_email_form(info.type);
    info.data = form == MDM_FORM_EMAIL_ACCOUNTS ? in.records("email.accounts", fields_of(form))
                                                : in.record(fields_of(form));
    return MDM_EXIT(true);
}

// Q-BODY-7: `data` and `data_size` keep their values.
void _free_email(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || !has_payload(body->email)) {  // Q-BODY-5
        return MDM_EXIT();
    }
    const mdm_email_info_t &info = body->email;
    const mdm_form_t form = mdm_email_form(info.type);
    if (form == MDM_FORM_EMAIL_ACCOUNTS) {
        release_records(info.data, fields_of(form));
    } else if (form == MDM_FORM_EMAIL_SETTINGS) {
        release_strings(info.data, fields_of(form));  // Q-EMAIL-4: the record stays allocated.
    } else {
        // Q-EMAIL-5: `str9` to `str12` of an account are not released.
        release_record(info.data, fields_of(form));
    }
    return MDM_EXIT();
}

}  // namespace mdm
