// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 11 and 12: Exchange ActiveSync. The body head, then
//
//   type 98     an account: num0 to num5, str6 to str14
//   type 104    str8, str10, str13 of an account
//   type 106    a count and accounts
//   any other   num0, str1
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

enum class Form { account, settings, accounts, value };

constexpr Form form_of(uint32_t type)
{
    switch (type) {
    case 98:
        return Form::account;
    case 104:
        return Form::settings;
    case 106:
        return Form::accounts;
    default:
        return Form::value;
    }
}

constexpr auto account_fields =
    MDM_FIELDS(mdm_eas_account_t, "eas.account", num0, num1, num2, num3, num4, num5, str6, str7,
               str8, str9, str10, str11, str12, str13, str14);
constexpr auto settings_fields = MDM_FIELDS(mdm_eas_account_t, "eas.settings", str8, str10, str13);
constexpr auto value_fields = MDM_FIELDS(mdm_eas_value_t, "eas.value", num0, str1);

// The record of each form; of a list, that of its elements.
constexpr Fields fields_of(Form form)
{
    switch (form) {
    case Form::account:
        return account_fields;
    case Form::settings:
        return settings_fields;
    case Form::accounts:
        return account_fields;
    case Form::value:
        break;
    }
    return value_fields;
}

}  // namespace

const char *_validate_eas(const mdm_body_t &body, Names names)
{
    const mdm_eas_info_t &info = body.eas;
    switch (form_of(info.type)) {
    case Form::settings:
        if (!is_padding(info.data_size)) {
            return names.data_size();
        }
        break;
    case Form::accounts:
        if (info.data_size != 0 && has_null_element(info.data)) {
            return "eas.accounts";
        }
        break;
    case Form::account:
    case Form::value:
        break;
    }
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores `data_size`: the payload of a record, but the whole body of a list. For settings the
// strings are added to what was there, with every call anew; the sum is sent and sized.
uint32_t _size_of_eas(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {
        return MDM_EXIT(body_head_size);
    }
    const Form form = form_of(info.type);
    if (form == Form::accounts) {
        MDM_FAIL_IF(has_null_element(info.data), no_size, "acconts is NULL");
        const uint32_t size =
            empty_list_size + size_of_records_before_null(info.data, account_fields);
        info.data_size = static_cast<int32_t>(size);
        return MDM_EXIT(size);
    }
    uint32_t payload_size = size_of_fields(info.data, fields_of(form));
    if (form == Form::settings) {
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
    const Form form = form_of(info.type);
    if (form == Form::accounts) {
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
    const Form form = form_of(info.type);
    info.data = form == Form::accounts ? in.records("eas.accounts", fields_of(form))
                                       : in.record(fields_of(form));
    return MDM_EXIT(true);
}

// Logs nothing, and leaves `data` and `data_size` as they were.
void _free_eas(const Log & /*log*/, mdm_body_t *body)
{
    const mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {
        return;
    }
    const Form form = form_of(info.type);
    if (form == Form::accounts) {
        release_records(info.data, fields_of(form));
    } else {
        release_record(info.data, fields_of(form));
    }
}

}  // namespace mdm
