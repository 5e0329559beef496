// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 35 and 36: the phone's resources. The body head, then
//
//   type 394 to 455   str0, str2 of an item, with these exceptions:
//   type 422          str0, num0, num1, str2 of a detail
//   type 439, 440     data_size raw bytes, sized and released as an item
//   type 450, 451,
//   and any other     data_size raw bytes
//
// No handler logs its entry, and only the free handler its exit, for a null body.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { item, ext, raw };

// What the size and free handlers take the payload for.
constexpr Shape shape_of(int32_t type)
{
    if (type < 394 || type > 455 || type == 450 || type == 451) {
        return Shape::raw;
    }
    return type == 422 ? Shape::ext : Shape::item;
}

// What travels: raw bytes for two values that are sized and released as items.
constexpr Shape wire_shape_of(int32_t type)
{
    return type == 439 || type == 440 ? Shape::raw : shape_of(type);
}

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(phone_res);
constexpr auto item_fields = MDM_FIELDS(mdm_phone_res_item_t, "phone_res.item", str0, str2);
constexpr auto ext_fields = MDM_FIELDS(mdm_phone_res_ext_t, "phone_res.ext", str0);
constexpr auto detail_fields =
    MDM_FIELDS(mdm_phone_res_detail_t, "phone_res.ext.detail", num0, num1, str2);

// The receiver's `data_size` of a record: three 32-bit words.
constexpr int32_t record_data_size = 12;

// What is sized as an item but travels as raw bytes cannot be sized safely: the pointers in it may
// be bytes that somebody has sent.
const char *unsound_part(const mdm_phone_res_info_t &info)
{
    const bool is_announced = info.data_size >= 1;
    const char *path = unsound_payload(is_announced, info.data, MDM_PAYLOAD_PATHS(phone_res));
    if (path != nullptr || !is_announced) {
        return path;
    }
    if (shape_of(info.type) != wire_shape_of(info.type)) {
        return "phone_res.type";
    }
    const bool is_ext = shape_of(info.type) == Shape::ext;
    return is_ext && payload<mdm_phone_res_ext_t>(info).detail == nullptr ? "phone_res.ext.detail"
                                                                          : nullptr;
}

}  // namespace

// A negative `data_size` is sized like a positive one, although the head travels alone.
uint32_t _size_of_phone_res(mdm_body_t *body)
{
    MDM_ASSERT(body != nullptr, 0);

    const mdm_phone_res_info_t &info = body->phone_res;
    if (!has_payload(info)) {
        return body_head_size;
    }
    switch (shape_of(info.type)) {
    case Shape::item:
        return body_head_size + size_of_fields(info.data, item_fields);
    case Shape::ext: {
        const auto &ext = payload<mdm_phone_res_ext_t>(info);
        return body_head_size + size_of_fields(ext, ext_fields) +
               size_of_fields(*ext.detail, detail_fields);
    }
    case Shape::raw:
        break;
    }
    return body_head_size + static_cast<uint32_t>(info.data_size);
}

template <class Out>
static bool _set_phone_res(Out &out, const mdm_phone_res_info_t *info)
{
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (info->data_size < 1) {
        return true;
    }
    switch (wire_shape_of(info->type)) {
    case Shape::item:
        MDM_ASSERT(info->data != nullptr, false);
        out.record(info->data, item_fields);
        break;
    case Shape::ext: {
        MDM_ASSERT(info->data != nullptr, false);
        const auto &ext = payload<mdm_phone_res_ext_t>(*info);
        MDM_ASSERT(ext.detail != nullptr, false);
        out.fields(ext, ext_fields);
        out.fields(*ext.detail, detail_fields);
        break;
    }
    case Shape::raw:
        out.bytes(info->data, info->data_size, "phone_res.data");
        break;
    }
    return true;
}

template <class In>
static bool _get_phone_res(In &in, mdm_phone_res_info_t *info)
{
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size < 1) {
        info->data = nullptr;
        return true;
    }
    switch (wire_shape_of(info->type)) {
    case Shape::item:
        info->data = in.record(item_fields);
        info->data_size = record_data_size;
        break;
    case Shape::ext: {
        auto *ext = in.template make<mdm_phone_res_ext_t>();
        ext->detail = in.template make<mdm_phone_res_detail_t>();
        in.fields(*ext, ext_fields);
        in.fields(*ext->detail, detail_fields);
        info->data = ext;
        info->data_size = record_data_size;
        break;
    }
    case Shape::raw:
        info->data = in.bytes(info->data_size, "phone_res.data");
        break;
    }
    return true;
}

MDM_HANDLERS(phone_res)

// For a record `data` and `data_size` keep their values.
void _free_phone_res(mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_phone_res_info_t &info = body->phone_res;
    if (!has_payload(info)) {
        return;
    }
    switch (shape_of(info.type)) {
    case Shape::item: {
        auto &item = payload<mdm_phone_res_item_t>(info);
        release_strings(item, item_fields);
        item.word1 = 0;
        g_free(&item);
        break;
    }
    case Shape::ext: {
        auto &ext = payload<mdm_phone_res_ext_t>(info);
        release_strings(ext, ext_fields);
        release_record(ext.detail, detail_fields);
        ext.detail = nullptr;
        ext.word1 = 0;
        g_free(&ext);
        break;
    }
    case Shape::raw:
        info.data_size = 0;
        release_data(info);
        break;
    }
}

}  // namespace mdm
