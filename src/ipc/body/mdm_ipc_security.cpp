// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 5 and 6 (device security) is the body head and a payload:
//
//   type 56, 76   one item: num0, str1, str4, str3
//   type 68, 69   a count, then the strings
//   type 70, 71   a count, then the accounts: num0 to num3, str4 to str25
//   any other     data_size raw bytes
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

// Q-SECURITY-1: `str4` travels before `str3`.
constexpr auto item_fields =
    MDM_FIELDS(mdm_security_item_t, "security.item", num0, str1, str4, str3);
constexpr auto account_fields =
    MDM_FIELDS(mdm_security_account_t, "security.account", num0, num1, num2, num3, str4, str5, str6,
               str7, str8, str9, str10, str11, str12, str13, str14, str15, str16, str17, str18,
               str19, str20, str21, str22, str23, str24, str25);

}  // namespace

// Q-GUARDED-4: an item is never refused. A list that is there travels, whatever `data_size` is.
const char *_validate_security(const mdm_body_t &body, Names names)
{
    const mdm_security_info_t &info = body.security;
    switch (mdm_security_form(info.type)) {
    case MDM_FORM_SECURITY_ITEM:
        return nullptr;
    case MDM_FORM_SECURITY_STRINGS:
        break;
    case MDM_FORM_SECURITY_ACCOUNTS:
        if (has_null_element(info.data)) {
            return "security.accounts";
        }
        break;
    case MDM_FORM_SECURITY_DATA:
    default:
        return validate_bytes(info.data_size, info.data, names);
    }
    return info.data == nullptr && info.data_size >= 1 ? names.data() : nullptr;
}

// Stores `data_size` of an item and of a list.
// Q-BODY-8: the head and the count are part of a list's stored size.
// Q-SECURITY-2: what `data_size` held matters to raw bytes only.
uint32_t _size_of_security(Lengths &lengths, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_security_info_t &info = body->security;
    uint32_t size = body_head_size;
    switch (mdm_security_form(info.type)) {
    case MDM_FORM_SECURITY_ITEM:
        if (info.data != nullptr) {
            size += size_of_fields(info.data, item_fields);
        }
        // Q-SECURITY-5: the stored size of a missing item is 0.
        info.data_size = static_cast<int32_t>(size - body_head_size);
        break;
    case MDM_FORM_SECURITY_STRINGS:
        // Q-SECURITY-3: an empty list is counted with 16 bytes, but the head travels alone.
        // Q-SECURITY-4: its `data_size` is not stored.
        size = empty_list_size;
        if (info.data != nullptr) {
            size += lengths.measure(info.data, log);
            info.data_size = static_cast<int32_t>(size);
        }
        break;
    case MDM_FORM_SECURITY_ACCOUNTS:
        size = empty_list_size;
        if (info.data != nullptr) {
            // Q-BODY-9: a list with a null account has no size.
            MDM_FAIL_IF(has_null_element(info.data), no_size, "acconts is NULL");
            size += size_of_records_before_null(info.data, account_fields);
            info.data_size = static_cast<int32_t>(size);
        }
        break;
    case MDM_FORM_SECURITY_DATA:
    default:
        size += static_cast<uint32_t>(info.data_size);  // Q-SECURITY-9: a negative one, too
        break;
    }
    return MDM_EXIT(size);
}

bool _set_security(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_security_info_t &info = body->security;
    out.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);
    }
    switch (mdm_security_form(info.type)) {
    case MDM_FORM_SECURITY_ITEM:
        if (info.data != nullptr) {
            out.fields(info.data, item_fields);
        } else {
            out.gap(info.data_size, "security.item");  // Q-SECURITY-6
        }
        break;
    case MDM_FORM_SECURITY_STRINGS:
        MDM_ASSERT(info.data != nullptr, false);  // Q-SECURITY-4
        // Q-BODY-12: the count counts what stands behind a null string, too.
        out.count(info.data, "security.strings");
        out.strings_before_null(info.data, "security.strings");
        break;
    case MDM_FORM_SECURITY_ACCOUNTS:
        MDM_ASSERT(info.data != nullptr, false);
        // Q-BODY-9: a null account is counted, but not written.
        out.records(info.data, "security.accounts", account_fields);
        break;
    case MDM_FORM_SECURITY_DATA:
    default:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

// Q-SECURITY-7: empty strings are dropped.
// Q-SECURITY-8: a second copy of each string is appended, and the first one stays allocated.
static GList *read_strings(Reader &in)
{
    Reader::List strings(in, in.count("security.strings", word_size));
    while (strings.next()) {
        char *text = in.str("security.strings");
        if (text != nullptr) {
            strings.append(in.copy(text));  // NOLINT(clang-analyzer-unix.Malloc): see above
        }
    }
    return strings.head();
}

bool _get_security(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_security_info_t &info = body->security;
    in.body_head(info);
    if (info.data_size < 1) {
        return MDM_EXIT(true);  // Q-BODY-6: `data` stays as it was.
    }
    switch (mdm_security_form(info.type)) {
    case MDM_FORM_SECURITY_ITEM:
        info.data = in.record(item_fields);
        break;
    case MDM_FORM_SECURITY_STRINGS:
        info.data = read_strings(in);
        break;
    case MDM_FORM_SECURITY_ACCOUNTS:
        info.data = in.records("security.accounts", account_fields);
        break;
    case MDM_FORM_SECURITY_DATA:
    default:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

// Q-BODY-7: `data` and `data_size` of a list keep their values.
void _free_security(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_security_info_t &info = body->security;
    switch (mdm_security_form(info.type)) {
    case MDM_FORM_SECURITY_ITEM:
        if (info.data == nullptr) {
            return MDM_EXIT();  // Q-SECURITY-10: `data_size` keeps its value.
        }
        release_record(info.data, item_fields);
        break;
    case MDM_FORM_SECURITY_STRINGS:
        release_elements(info.data);
        return MDM_EXIT();
    case MDM_FORM_SECURITY_ACCOUNTS:
        // Q-SECURITY-11: the strings of all accounts are released before the first record.
        for (auto *account : elements<mdm_security_account_t>(info.data)) {
            if (account != nullptr) {
                release_strings(account, account_fields);
            }
        }
        release_elements(info.data);
        return MDM_EXIT();
    case MDM_FORM_SECURITY_DATA:
    default:
        g_free(info.data);
        break;
    }
    info.data = nullptr;
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
