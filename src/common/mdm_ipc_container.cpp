// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 47 and 48: containers. The body head, then
//
//   type 628             num0, str1, str2
//   type 629             num0, str1
//   type 630, 631, 632   data_size raw bytes
//   any other            nothing
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { item, short_item, raw, nothing };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 628:
        return Shape::item;
    case 629:
        return Shape::short_item;
    case 630:
    case 631:
    case 632:
        return Shape::raw;
    default:
        return Shape::nothing;
    }
}

// A mdm_container_item_t that ends before `str2`: all that there is of the record of type 629.
struct ShortItem {
    uint32_t num0;
    char *str1;
};
static_assert(sizeof(ShortItem) == offsetof(mdm_container_item_t, str2));
static_assert(offsetof(ShortItem, str1) == offsetof(mdm_container_item_t, str1));

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(container);
constexpr auto item_fields = MDM_FIELDS(mdm_container_item_t, "container.item", num0, str1, str2);
constexpr auto short_item_fields = MDM_FIELDS(ShortItem, "container.short_item", num0, str1);

const char *unsound_part(const mdm_container_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(container);
    switch (shape_of(info.type)) {
    case Shape::nothing:
        return unsound_nothing(info.data, paths);
    case Shape::raw:
        return unsound_bytes(info.data_size, info.data, paths);
    case Shape::item:
    case Shape::short_item:
        break;
    }
    return unsound_payload(info.data_size != 0, info.data, paths);
}

}  // namespace

// Stores an item's payload size in `data_size`.
uint32_t _size_of_container(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    mdm_container_info_t &info = body->container;
    if (!has_payload(info)) {
        return MDM_EXIT(body_head_size);
    }
    uint32_t payload_size = 0;
    switch (shape_of(info.type)) {
    case Shape::item:
        payload_size = size_of_fields(info.data, item_fields);
        break;
    case Shape::short_item:
        payload_size = size_of_fields(info.data, short_item_fields);
        break;
    case Shape::raw:
        payload_size = static_cast<uint32_t>(info.data_size);
        break;
    case Shape::nothing:
        return MDM_EXIT(body_head_size);
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return MDM_EXIT(body_head_size + payload_size);
}

template <class Out>
static bool _set_container(Out &out, const mdm_container_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out && info != nullptr, false);

    out.body_head(*info, head_fields);
    if (!has_payload(*info)) {
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::item:
        out.record(info->data, item_fields);
        break;
    case Shape::short_item:
        out.record(info->data, short_item_fields);
        break;
    case Shape::raw:
        out.bytes(info->data, info->data_size, "container.data");
        break;
    case Shape::nothing:
        break;
    }
    return MDM_EXIT(true);
}

template <class In>
static bool _get_container(In &in, mdm_container_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(in && info != nullptr, false);

    in.body_head(*info, head_fields);
    if (info->data_size == 0) {
        info->data = nullptr;
        return MDM_EXIT(true);
    }
    switch (shape_of(info->type)) {
    case Shape::item:
        info->data = in.record(item_fields);
        break;
    case Shape::short_item:
        info->data = in.record(short_item_fields);
        break;
    case Shape::raw:
        info->data = in.bytes(info->data_size, "container.data");
        break;
    case Shape::nothing:
        break;  // `data` stays as it was
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(container)

// Logs its entry and its exit even where there is nothing to release. For an item `data` keeps its
// old value.
void _free_container(mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || !has_payload(body->container)) {
        return MDM_EXIT();
    }
    mdm_container_info_t &info = body->container;
    switch (shape_of(info.type)) {
    case Shape::item:
        release_record(info.data, item_fields);
        break;
    case Shape::short_item:
        release_record(info.data, short_item_fields);
        break;
    case Shape::raw:
        release_data(info);
        break;
    case Shape::nothing:
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
