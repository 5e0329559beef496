// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 47 and 48 (containers) is the body head and a payload:
//
//   type 628             num0, str1, str2
//   type 629             num0, str1
//   type 630, 631, 632   data_size raw bytes
//   any other            none
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

// Q-CONTAINER-1: the record of type 629 is a mdm_container_item_t that ends before `str2`.
using ShortItem = mdm_container_short_item_t;
static_assert(sizeof(ShortItem) == offsetof(mdm_container_item_t, str2));
static_assert(offsetof(ShortItem, str1) == offsetof(mdm_container_item_t, str1));

constexpr auto item_fields = MDM_FIELDS(mdm_container_item_t, "container.item", num0, str1, str2);
constexpr auto short_item_fields = MDM_FIELDS(ShortItem, "container.short_item", num0, str1);

}  // namespace

const char *_validate_container(const mdm_body_t &body, Names names)
{
    const mdm_container_info_t &info = body.container;
    switch (mdm_container_form(info.type)) {
    case MDM_FORM_CONTAINER_HEAD:
        return validate_nothing(info.data, names);
    case MDM_FORM_CONTAINER_DATA:
        return validate_bytes(info.data_size, info.data, names);
    case MDM_FORM_CONTAINER_ITEM:
    case MDM_FORM_CONTAINER_SHORT_ITEM:
    default:
        break;
    }
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores the payload's size in `data_size`.
uint32_t _size_of_container(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_container_info_t &info = body->container;
    if (!has_payload(info)) {  // Q-BODY-2, Q-BODY-3
        return MDM_EXIT(body_head_size);
    }
    uint32_t payload_size = 0;
    switch (mdm_container_form(info.type)) {
    case MDM_FORM_CONTAINER_ITEM:
        payload_size = size_of_fields(info.data, item_fields);
        break;
    case MDM_FORM_CONTAINER_SHORT_ITEM:
        payload_size = size_of_fields(info.data, short_item_fields);
        break;
    case MDM_FORM_CONTAINER_DATA:
        payload_size = static_cast<uint32_t>(info.data_size);  // Q-BODY-4: a negative one, too
        break;
    case MDM_FORM_CONTAINER_HEAD:
    default:
        return MDM_EXIT(body_head_size);
    }
    info.data_size = static_cast<int32_t>(payload_size);
    return MDM_EXIT(body_head_size + payload_size);
}

bool _set_container(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_container_info_t &info = body->container;
    out.body_head(info);
    if (!has_payload(info)) {
        return MDM_EXIT(true);
    }
    switch (mdm_container_form(info.type)) {
    case MDM_FORM_CONTAINER_ITEM:
        out.fields(info.data, item_fields);
        break;
    case MDM_FORM_CONTAINER_SHORT_ITEM:
        out.fields(info.data, short_item_fields);
        break;
    case MDM_FORM_CONTAINER_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    case MDM_FORM_CONTAINER_HEAD:
    default:
        break;
    }
    return MDM_EXIT(true);
}

bool _get_container(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_container_info_t &info = body->container;
    in.body_head(info);
    if (info.data_size == 0) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    switch (mdm_container_form(info.type)) {
    case MDM_FORM_CONTAINER_ITEM:
        info.data = in.record(item_fields);
        break;
    case MDM_FORM_CONTAINER_SHORT_ITEM:
        info.data = in.record(short_item_fields);
        break;
    case MDM_FORM_CONTAINER_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    case MDM_FORM_CONTAINER_HEAD:
    default:
        break;  // Q-CONTAINER-2: `data` stays as it was.
    }
    return MDM_EXIT(true);
}

// Q-BODY-7: `data` of an item and `data_size` keep their values.
void _free_container(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    // Q-BODY-5: a payload whose `data_size` is 0 stays allocated.
    if (body == nullptr || !has_payload(body->container)) {
        return MDM_EXIT();
    }
    mdm_container_info_t &info = body->container;
    switch (mdm_container_form(info.type)) {
    case MDM_FORM_CONTAINER_ITEM:
        release_record(info.data, item_fields);
        break;
    case MDM_FORM_CONTAINER_SHORT_ITEM:
        release_record(info.data, short_item_fields);
        break;
    case MDM_FORM_CONTAINER_DATA:
        release_data(info.data);
        break;
    case MDM_FORM_CONTAINER_HEAD:
    default:
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
