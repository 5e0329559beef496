// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 35 and 36 (the phone's resources) is the body head and a payload:
//
//   type 422                  str0, then num0, num1 and str2 of the detail
//   type 439, 440             data_size raw bytes
//   type 394 to 449,
//        452 to 455           str0, str2, except for the types above
//   any other                 data_size raw bytes
//
// Q-BODY-13: no handler logs its entry. Only the free handler logs its exit, for a null body.
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto item_fields = MDM_FIELDS(mdm_phone_res_item_t, "phone_res.item", str0, str2);
constexpr auto ext_fields = MDM_FIELDS(mdm_phone_res_ext_t, "phone_res.ext", str0);
constexpr auto detail_fields =
    MDM_FIELDS(mdm_phone_res_detail_t, "phone_res.ext.detail", num0, num1, str2);

// Q-PHONE_RES-1: the receiver's `data_size` of a record. It is the size of three 32-bit words.
constexpr int32_t record_data_size = 12;

}  // namespace

// A payload that is sized as an item but travels as raw bytes is refused: its pointers may be bytes
// that somebody has sent.
const char *_validate_phone_res(const mdm_body_t &body, Names names)
{
    const mdm_phone_res_info_t &info = body.phone_res;
    const bool is_announced = info.data_size >= 1;
    const char *path = validate_payload(is_announced, info.data, names);
    if (path != nullptr || !is_announced) {
        return path;
    }
    const mdm_form_t form = mdm_phone_res_form(info.type);
    if (form == MDM_FORM_PHONE_RES_RAW_ITEM) {  // Q-PHONE_RES-2
        return "phone_res.type";
    }
    return form == MDM_FORM_PHONE_RES_EXT && payload<mdm_phone_res_ext_t>(info).detail == nullptr
               ? "phone_res.ext.detail"
               : nullptr;
}

// Q-PHONE_RES-3: a negative `data_size` announces a payload here, but not to the set and get
// handlers.
// Q-PHONE_RES-4: a missing record is sized as the head alone, and the set handler fails.
uint32_t _size_of_phone_res(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(body != nullptr, 0);

    const mdm_phone_res_info_t &info = body->phone_res;
    if (!has_payload(info)) {
        return body_head_size;
    }
    switch (mdm_phone_res_form(info.type)) {
    case MDM_FORM_PHONE_RES_ITEM:
    case MDM_FORM_PHONE_RES_RAW_ITEM:  // Q-PHONE_RES-2
        return body_head_size + size_of_fields(info.data, item_fields);
    case MDM_FORM_PHONE_RES_EXT:
    default: {
        const auto &ext = payload<mdm_phone_res_ext_t>(info);
        return body_head_size + size_of_fields(&ext, ext_fields) +
               size_of_fields(ext.detail, detail_fields);
    }
    case MDM_FORM_PHONE_RES_DATA:
        break;
    }
    return body_head_size + static_cast<uint32_t>(info.data_size);
}

bool _set_phone_res(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(out && body != nullptr, false);

    const mdm_phone_res_info_t &info = body->phone_res;
    out.body_head(info);
    if (info.data_size < 1) {
        return true;
    }
    switch (mdm_phone_res_form(info.type)) {
    case MDM_FORM_PHONE_RES_ITEM:
        MDM_ASSERT(info.data != nullptr, false);
        out.fields(info.data, item_fields);
        break;
    case MDM_FORM_PHONE_RES_EXT:
    default: {
        MDM_ASSERT(info.data != nullptr, false);
        const auto &ext = payload<mdm_phone_res_ext_t>(info);
        MDM_ASSERT(ext.detail != nullptr, false);
        out.fields(&ext, ext_fields);
        out.fields(ext.detail, detail_fields);
        break;
    }
    case MDM_FORM_PHONE_RES_RAW_ITEM:  // Q-PHONE_RES-2
    case MDM_FORM_PHONE_RES_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return true;
}

bool _get_phone_res(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(in && body != nullptr, false);

    mdm_phone_res_info_t &info = body->phone_res;
    in.body_head(info);
    if (info.data_size < 1) {
        info.data = nullptr;
        return true;
    }
    switch (mdm_phone_res_form(info.type)) {
    case MDM_FORM_PHONE_RES_ITEM:
        info.data = in.record(item_fields);
        info.data_size = record_data_size;
        break;
    case MDM_FORM_PHONE_RES_EXT:
    default: {
        auto *ext = in.make<mdm_phone_res_ext_t>();
        ext->detail = in.make<mdm_phone_res_detail_t>();
        in.fields(ext, ext_fields);
        in.fields(ext->detail, detail_fields);
        info.data = ext;
        info.data_size = record_data_size;
        break;
    }
    case MDM_FORM_PHONE_RES_RAW_ITEM:  // Q-PHONE_RES-2
    case MDM_FORM_PHONE_RES_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return true;
}

// Q-BODY-7: `data` and `data_size` of a record keep their values.
void _free_phone_res(const Log &log, mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_phone_res_info_t &info = body->phone_res;
    if (!has_payload(info)) {  // Q-BODY-5
        return;
    }
    switch (mdm_phone_res_form(info.type)) {
    case MDM_FORM_PHONE_RES_ITEM:
    case MDM_FORM_PHONE_RES_RAW_ITEM:
    default: {
        auto &item = payload<mdm_phone_res_item_t>(info);
        release_strings(&item, item_fields);
        item.word1 = 0;  // Q-PHONE_RES-5: released memory holds no word.
        g_free(&item);
        break;
    }
    case MDM_FORM_PHONE_RES_EXT: {
        auto &ext = payload<mdm_phone_res_ext_t>(info);
        release_strings(&ext, ext_fields);
        release_record(ext.detail, detail_fields);
        ext.detail = nullptr;
        ext.word1 = 0;
        g_free(&ext);
        break;
    }
    case MDM_FORM_PHONE_RES_DATA:
        info.data_size = 0;
        release_data(info.data);
        break;
    }
}

}  // namespace mdm
