// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 5 and 6: device security. The body head, then
//
//   type 56, 76   num0, str1, str4, str3 of an item
//   type 68, 69   a count and strings
//   type 70, 71   a count and accounts: num0 to num3, str4 to str25
//   any other     data_size raw bytes
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { item, strings, accounts, raw };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 56:
    case 76:
        return Shape::item;
    case 68:
    case 69:
        return Shape::strings;
    case 70:
    case 71:
        return Shape::accounts;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(security);

// An item or a list that is there travels, whatever `data_size` says.
const char *unsound_part(const mdm_security_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(security);
    switch (shape_of(info.type)) {
    case Shape::item:
        return nullptr;
    case Shape::strings:
        break;
    case Shape::accounts:
        if (has_null_element(info.data)) {
            return "security.accounts";
        }
        break;
    case Shape::raw:
        return unsound_bytes(info.data_size, info.data, paths);
    }
    return info.data == nullptr && info.data_size >= 1 ? paths.data : nullptr;
}

// The fifth field travels before the fourth; word2 does not travel.
constexpr auto item_fields =
    MDM_FIELDS(mdm_security_item_t, "security.item", num0, str1, str4, str3);
constexpr auto account_fields =
    MDM_FIELDS(mdm_security_account_t, "security.account", num0, num1, num2, num3, str4, str5, str6,
               str7, str8, str9, str10, str11, str12, str13, str14, str15, str16, str17, str18,
               str19, str20, str21, str22, str23, str24, str25);

}  // namespace

// Stores `data_size`: an item's payload alone, but the whole body of a list. What was there before
// decides nothing, except the length of raw bytes.
uint32_t _size_of_security(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    mdm_security_info_t &info = body->security;
    uint32_t size = body_head_size;
    switch (shape_of(info.type)) {
    case Shape::item:
        if (info.data != nullptr) {
            size += size_of_fields(info.data, item_fields);
        }
        info.data_size = static_cast<int32_t>(size - body_head_size);
        break;
    case Shape::strings:
        size = empty_list_size;
        if (info.data != nullptr) {
            size += size_of_strings_before_null(info.data);
            info.data_size = static_cast<int32_t>(size);
        }
        break;
    case Shape::accounts:
        size = empty_list_size;
        if (info.data != nullptr) {
            const auto accounts = size_of_records(info.data, account_fields);
            if (!accounts) {
                MDM_CRITICAL("acconts is NULL");
                return MDM_EXIT(no_room);
            }
            size += *accounts;
            info.data_size = static_cast<int32_t>(size);
        }
        break;
    case Shape::raw:
        size += static_cast<uint32_t>(info.data_size);
        break;
    }
    return MDM_EXIT(size);
}

template <class Out>
static bool _set_security(Out &out, const mdm_security_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::item:
        if (info->data != nullptr) {
            out.record(info->data, item_fields);
        } else {
            out.skip(info->data_size, "security.item");
        }
        break;
    case Shape::strings:
        MDM_ASSERT(info->data != nullptr, false);
        out.count(info->data, "security.strings");
        out.strings_before_null(info->data, "security.strings");
        break;
    case Shape::accounts:
        MDM_ASSERT(info->data != nullptr, false);
        out.records(info->data, "security.accounts", account_fields);
        break;
    case Shape::raw:
        out.bytes(info->data, info->data_size, "security.data");
        break;
    }
    return MDM_EXIT(true);
}

// Empty strings are not appended, and of every other one a second copy is: the first stays
// allocated, with nothing pointing at it.
template <class In>
static GList *read_strings(In &in)
{
    auto strings = in.new_list();
    const int32_t count = in.count("security.strings", word_size);
    for (int32_t i = 0; in && i < count; ++i) {
        char *text = in.str("security.strings");
        if (text != nullptr) {
            strings.append(in.copy(text));  // NOLINT(clang-analyzer-unix.Malloc): see above
        }
    }
    return strings.head();
}

template <class In>
static bool _get_security(In &in, mdm_security_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return MDM_EXIT(true);  // `data` stays as it was
    }
    switch (shape_of(info->type)) {
    case Shape::item:
        info->data = in.record(item_fields);
        break;
    case Shape::strings:
        info->data = read_strings(in);
        break;
    case Shape::accounts:
        info->data = in.records("security.accounts", account_fields);
        break;
    case Shape::raw:
        info->data = in.bytes(info->data_size, "security.data");
        break;
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(security)

// A list's `data` and `data_size` keep their values.
void _free_security(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_security_info_t &info = body->security;
    switch (shape_of(info.type)) {
    case Shape::item:
        if (info.data == nullptr) {
            return MDM_EXIT();
        }
        release_record(info.data, item_fields);
        break;
    case Shape::strings:
        release_elements(info.data);
        return MDM_EXIT();
    case Shape::accounts:
        // All strings of all accounts go first.
        for (auto *account : elements<mdm_security_account_t>(info.data)) {
            if (account != nullptr) {
                release_strings(*account, account_fields);
            }
        }
        release_elements(info.data);
        return MDM_EXIT();
    case Shape::raw:
        g_free(info.data);
        break;
    }
    info.data = nullptr;
    info.data_size = 0;
    return MDM_EXIT();
}

}  // namespace mdm
