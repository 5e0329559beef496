// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 39 and 40: e-mail. The body head, then
//
//   type 359    an account: num0, num1, num2, num4, num6, num3, num5, str13 to str21
//   type 362    str16, str15, str14 of an account
//   type 363    a count and accounts: num0 to num8, str9 to str21
//   any other   num0, str1
#include "mdm_ipc_handlers.hpp"
#include "mdm_ipc_mail.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

constexpr MailShape shape_of(uint32_t type)
{
    switch (type) {
    case 359:
        return MailShape::account;
    case 362:
        return MailShape::settings;
    case 363:
        return MailShape::accounts;
    default:
        return MailShape::value;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(email);

// An account on its own has fewer fields than one in a list, and an order of its own.
constexpr auto account_fields =
    MDM_FIELDS(mdm_email_account_t, "email.account", num0, num1, num2, num4, num6, num3, num5,
               str13, str14, str15, str16, str17, str18, str19, str20, str21);
constexpr auto element_fields = MDM_FIELDS(
    mdm_email_account_t, "email.account", num0, num1, num2, num3, num4, num5, num6, num7, num8,
    str9, str10, str11, str12, str13, str14, str15, str16, str17, str18, str19, str20, str21);
constexpr auto settings_fields =
    MDM_FIELDS(mdm_email_account_t, "email.settings", str16, str15, str14);
constexpr auto value_fields = MDM_FIELDS(mdm_email_value_t, "email.value", num0, str1);
constexpr auto forms =
    MailForms{"email.accounts", account_fields, settings_fields, element_fields, value_fields};

const char *unsound_part(const mdm_email_info_t &info)
{
    return unsound_payload(info.data_size != 0, info.data, MDM_PAYLOAD_PATHS(email));
}

}  // namespace

// Stores `data_size`: the payload of a record, but the whole body of a list. The size of a list
// ends at its first null element, while the accounts behind it are written: past the counted size.
uint32_t _size_of_email(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    mdm_email_info_t &info = body->email;
    if (!has_payload(info)) {
        return MDM_EXIT(body_head_size);
    }
    uint32_t payload_size = 0;
    switch (shape_of(info.type)) {
    case MailShape::account:
        payload_size = size_of_fields(info.data, account_fields);
        break;
    case MailShape::settings:
        payload_size = size_of_fields(info.data, settings_fields);
        break;
    case MailShape::accounts: {
        uint32_t size = empty_list_size;
        for (const auto *account : elements_before_null<mdm_email_account_t>(info.data)) {
            size += size_of_fields(*account, element_fields);
        }
        info.data_size = static_cast<int32_t>(size);
        return MDM_EXIT(size);
    }
    case MailShape::value:
        payload_size = size_of_fields(info.data, value_fields);
        break;
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return MDM_EXIT(body_head_size + payload_size);
}

template <class Out>
static bool _set_email(Out &out, const mdm_email_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (has_payload(*info)) {
        write_mail(out, shape_of(info->type), info->data, forms);
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_email(In &in, mdm_email_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    info->data = info->data_size == 0 ? nullptr : read_mail(in, shape_of(info->type), forms);
    return MDM_EXIT(true);
}

MDM_HANDLERS(email)

// Leaves `data` and `data_size` as they were.
void _free_email(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || !has_payload(body->email)) {
        return MDM_EXIT();
    }
    const mdm_email_info_t &info = body->email;
    switch (shape_of(info.type)) {
    case MailShape::account:
        // str9 to str12 do not travel in this form, and are not released.
        release_record(info.data, account_fields);
        break;
    case MailShape::settings:
        // The record itself stays allocated.
        release_strings(payload<mdm_email_account_t>(info), settings_fields);
        break;
    case MailShape::accounts:
        release_records(info.data, element_fields);
        break;
    case MailShape::value:
        release_record(info.data, value_fields);
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
