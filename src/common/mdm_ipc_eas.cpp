// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 11 and 12: Exchange ActiveSync. The body head, then
//
//   type 98     an account: num0 to num5, str6 to str14
//   type 104    str8, str10, str13 of an account
//   type 106    a count and accounts
//   any other   num0, str1
#include "mdm_ipc_handlers.hpp"
#include "mdm_ipc_mail.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

constexpr MailShape shape_of(uint32_t type)
{
    switch (type) {
    case 98:
        return MailShape::account;
    case 104:
        return MailShape::settings;
    case 106:
        return MailShape::accounts;
    default:
        return MailShape::value;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(eas);
constexpr auto account_fields =
    MDM_FIELDS(mdm_eas_account_t, "eas.account", num0, num1, num2, num3, num4, num5, str6, str7,
               str8, str9, str10, str11, str12, str13, str14);
constexpr auto settings_fields = MDM_FIELDS(mdm_eas_account_t, "eas.settings", str8, str10, str13);
constexpr auto value_fields = MDM_FIELDS(mdm_eas_value_t, "eas.value", num0, str1);
constexpr auto forms =
    MailForms{"eas.accounts", account_fields, settings_fields, account_fields, value_fields};

const char *unsound_part(const mdm_eas_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(eas);
    switch (shape_of(info.type)) {
    case MailShape::settings:
        if (!is_padding(info.data_size)) {
            return paths.data_size;
        }
        break;
    case MailShape::accounts:
        if (info.data_size != 0 && has_null_element(info.data)) {
            return "eas.accounts";
        }
        break;
    case MailShape::account:
    case MailShape::value:
        break;
    }
    return unsound_payload(info.data_size != 0, info.data, paths);
}

}  // namespace

// Stores `data_size`: the payload of a record, but the whole body of a list. For settings the
// strings are added to what was there, with every call anew; the sum is sent and sized.
uint32_t _size_of_eas(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {
        return MDM_EXIT(body_head_size);
    }
    uint32_t payload_size = 0;
    switch (shape_of(info.type)) {
    case MailShape::account:
        payload_size = size_of_fields(info.data, account_fields);
        break;
    case MailShape::settings:
        payload_size =
            static_cast<uint32_t>(info.data_size) + size_of_fields(info.data, settings_fields);
        break;
    case MailShape::accounts: {
        const auto accounts = size_of_records(info.data, account_fields);
        if (!accounts) {
            MDM_CRITICAL("acconts is NULL");
            return MDM_EXIT(no_room);
        }
        const uint32_t size = empty_list_size + *accounts;
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
static bool _set_eas(Out &out, const mdm_eas_info_t *info)
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
static bool _get_eas(In &in, mdm_eas_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    info->data = info->data_size == 0 ? nullptr : read_mail(in, shape_of(info->type), forms);
    return MDM_EXIT(true);
}

MDM_HANDLERS(eas)

// Logs nothing, and leaves `data` and `data_size` as they were.
void _free_eas(mdm_body_t *body)
{
    const mdm_eas_info_t &info = body->eas;
    if (!has_payload(info)) {
        return;
    }
    switch (shape_of(info.type)) {
    case MailShape::account:
        return release_record(info.data, account_fields);
    case MailShape::settings:
        return release_record(info.data, settings_fields);
    case MailShape::accounts:
        return release_records(info.data, account_fields);
    case MailShape::value:
        return release_record(info.data, value_fields);
    }
}

}  // namespace mdm
