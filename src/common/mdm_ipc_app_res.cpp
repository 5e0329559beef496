// SPDX-License-Identifier: Apache-2.0
//
// Body of message type 14: lists of application policies. The application head, then
//
//   package-name lists   a count and strings
//   type 140, 141, 142   a count and items: name, value
//   type 172 to 175      a count and records: client_id, a count, package names
//   any other            data_size raw bytes
//
// A null element ends a list, although the count counts it and what is behind it. No handler logs
// its entry; the size and free handlers log their exit where nothing is to be done.
#include "mdm_ipc_app_head.hpp"
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { packages, items, controls, raw };

constexpr Shape shape_of(int32_t type)
{
    switch (type) {
    case 3:
    case 155:
    case 159:
    case 162:
    case 168:
    case 169:
    case 170:
    case 171:
    case 176:
    case 177:
        return Shape::packages;
    case 140:
    case 141:
    case 142:
        return Shape::items;
    case 172:
    case 173:
    case 174:
    case 175:
        return Shape::controls;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_APP_HEAD_FIELDS(app_res);
constexpr auto item_fields = MDM_FIELDS(mdm_app_res_item_t, "app_res.item", name, value);

const char *unsound_part(const mdm_app_res_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(app_res);
    const bool is_announced = info.data_size >= 1;
    return shape_of(info.type) == Shape::raw ? unsound_payload(is_announced, info.data, paths)
                                             : unsound_list(is_announced, info.data, paths);
}

// One line an item. Discriminator 142 has a conversion of its own; the receiver has another one
// for the other two. A macro, so that the line carries the handler's name.
#define LOG_ITEM(type, conversion, item)                                                        \
    ((type) == 142 ? MDM_INFO("%s(%lu)", (item).name, static_cast<unsigned long>((item).value)) \
                   : MDM_INFO("%s(" conversion ")", (item).name, (item).value))

}  // namespace

// An item without a name is sized, but not written: 8 bytes stay zero at the end of the body.
uint32_t _size_of_app_res(mdm_body_t *body)
{
    if (body == nullptr) {
        MDM_CRITICAL("p_data is NULL!");
        return MDM_EXIT(0);
    }
    const mdm_app_res_info_t &info = body->app_res;
    uint32_t size = size_of_fields(info, head_fields);
    if (info.data_size >= 1) {
        switch (shape_of(info.type)) {
        case Shape::packages:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const char *name : elements_before_null<char>(info.data)) {
                MDM_INFO("pkg : %s", name);
                size += size_of_str(name);
            }
            break;
        case Shape::items:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const auto *item : elements_before_null<mdm_app_res_item_t>(info.data)) {
                LOG_ITEM(info.type, "%u", *item);
                size += size_of_fields(*item, item_fields);
            }
            break;
        case Shape::controls:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const auto *control : elements_before_null<mdm_app_control_info_t>(info.data)) {
                MDM_INFO("app_control_info->client_id : %d", control->client_id);
                if (control->pkg_list != nullptr) {
                    MDM_INFO("len2 : %d", length_of(control->pkg_list));
                }
                size += word_size + word_size + size_of_strings_before_null(control->pkg_list);
            }
            break;
        case Shape::raw:
            size += static_cast<uint32_t>(info.data_size);
            break;
        }
    }
    MDM_INFO("size : %d", size);
    return size;
}

template <class Out>
static bool _set_app_res(Out &out, const mdm_app_res_info_t *info)
{
    MDM_ASSERT(out && info != nullptr, false);

    out.fields(*info, head_fields);
    if (info->data_size < 1) {
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::packages: {
        const uint32_t count = out.count(info->data, "app_res.packages");
        MDM_INFO("len : %d", count);
        out.strings_before_null(info->data, "app_res.packages");
        break;
    }
    case Shape::items: {
        const uint32_t count = out.count(info->data, "app_res.items");
        MDM_INFO("len : %d", count);
        for (const auto *item : elements_before_null<mdm_app_res_item_t>(info->data)) {
            LOG_ITEM(info->type, "%u", *item);
            if (item->name != nullptr) {
                out.fields(*item, item_fields);
            } else {
                out.omit("app_res.item.name");
            }
        }
        break;
    }
    case Shape::controls: {
        const uint32_t count = out.count(info->data, "app_res.controls");
        MDM_INFO("len : %d", count);
        for (const auto *control : elements_before_null<mdm_app_control_info_t>(info->data)) {
            out.i32(control->client_id, "app_res.control.client_id");
            MDM_INFO("app_control_info->client_id : %d", control->client_id);
            const uint32_t package_count = out.count(control->pkg_list, "app_res.control.pkg_list");
            MDM_INFO("len2 : %d", package_count);
            out.strings_before_null(control->pkg_list, "app_res.control.pkg_list");
        }
        break;
    }
    case Shape::raw:
        out.bytes(info->data, info->data_size, "app_res.data");
        break;
    }
    return true;
}

template <class In>
static bool _get_app_res(In &in, mdm_app_res_info_t *info)
{
    MDM_ASSERT(in && info != nullptr, false);

    in.fields(*info, head_fields);
    if (info->data_size < 1) {
        info->data = nullptr;
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::packages: {
        const int32_t count = in.count("app_res.packages", word_size);
        MDM_INFO("len : %d", count);
        info->data = in.strings(count, "app_res.packages");
        break;
    }
    case Shape::items: {
        const int32_t count = in.count("app_res.items", smallest_size(item_fields));
        MDM_INFO("len : %d", count);
        auto items = in.new_list();
        for (int32_t i = 0; in && i < count; ++i) {
            auto *item = in.record(item_fields);
            LOG_ITEM(info->type, "%d", *item);
            items.append(item);
        }
        info->data = items.head();
        break;
    }
    case Shape::controls: {
        const int32_t count = in.count("app_res.controls", word_size + word_size);
        MDM_INFO("len : %d", count);
        auto controls = in.new_list();
        for (int32_t i = 0; in && i < count; ++i) {
            auto *control = in.template make<mdm_app_control_info_t>();
            control->client_id = in.i32("app_res.control.client_id");
            MDM_INFO("client_id : %d", control->client_id);
            const int32_t package_count = in.count("app_res.control.pkg_list", word_size);
            MDM_INFO("len2 : %d", package_count);
            auto names = in.new_list();
            for (int32_t j = 0; in && j < package_count; ++j) {
                char *name = in.str("app_res.control.pkg_list");
                MDM_INFO("name : %s", name);
                names.append(name);
            }
            control->pkg_list = names.head();
            controls.append(control);
        }
        info->data = controls.head();
        break;
    }
    case Shape::raw:
        info->data = in.bytes(info->data_size, "app_res.data");
        break;
    }
    return true;
}

MDM_HANDLERS(app_res)

void _free_app_res(mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_app_res_info_t &info = body->app_res;
    if (info.data_size < 1) {
        return release_string(info.pkg);
    }
    if (info.data == nullptr) {
        return MDM_EXIT();  // `pkg` stays allocated
    }
    switch (shape_of(info.type)) {
    case Shape::packages:
        release_elements(info.data);
        info.data = nullptr;
        break;
    case Shape::items:
        for (auto *item : elements_before_null<mdm_app_res_item_t>(info.data)) {
            LOG_ITEM(info.type, "%u", *item);
            release_record(item, item_fields);
        }
        release_cells(info.data);  // `data` keeps its old value
        break;
    case Shape::controls:
        // The records themselves stay allocated.
        for (const auto *control : elements_before_null<mdm_app_control_info_t>(info.data)) {
            release_elements(control->pkg_list);
        }
        release_cells(info.data);
        info.data = nullptr;
        break;
    case Shape::raw:
        release_data(info);
        break;
    }
    release_string(info.pkg);
}

}  // namespace mdm
