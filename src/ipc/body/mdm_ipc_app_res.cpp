// SPDX-License-Identifier: Apache-2.0
//
// The body of message type 14 (lists of application policies) is the application head and a
// payload:
//
//   type 3, 155, 159, 162,
//        168 to 171, 176, 177   a count, then the package names
//   type 140, 141, 142          a count, then the items: name, value
//   type 172 to 175             a count, then the records: client_id, a count, the package names
//   any other                   data_size raw bytes
//
// Q-BODY-12: a null element ends a list, but not its count.
// Q-BODY-13: no handler logs its entry. The size and free handlers log their exit if there is
// nothing to do.
#include "ipc/body/app_head.hpp"
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_APP_HEAD_FIELDS(app_res);
constexpr auto item_fields = MDM_FIELDS(mdm_app_res_item_t, "app_res.item", name, value);

// Logs one line for an item.
void log_item(const Log &log, int line, const char *text, const mdm_app_res_item_t &item)
{
    log.info(line, text, item.name, item.value);
}

// Q-APP_RES-2: a receiver of 140 and 141 logs the value as a signed number.
constexpr const char *received_item(int32_t type)
{
    return type == MDM_APP_RES_ITEMS_142 ? "%s(%u)" : "%s(%d)";
}

}  // namespace

const char *_validate_app_res(const mdm_body_t &body, Names names)
{
    const mdm_app_res_info_t &info = body.app_res;
    const bool is_announced = info.data_size >= 1;
    return mdm_app_res_form(info.type) == MDM_FORM_APP_RES_DATA
               ? validate_payload(is_announced, info.data, names)
               : validate_list(is_announced, info.data, names);
}

// Q-APP_RES-1: an item without a name is sized, but not written.
uint32_t _size_of_app_res(Lengths &lengths, const Log &log, mdm_body_t *body)
{
    MDM_FAIL_IF(body == nullptr, 0, "p_data is NULL!");
    const mdm_app_res_info_t &info = body->app_res;
    uint32_t size = size_of_fields(&info, head_fields);
    if (info.data_size >= 1) {
        switch (mdm_app_res_form(info.type)) {
        case MDM_FORM_APP_RES_PACKAGES:
            MDM_INFO("len : %d", length_of(info.data));
            // Q-APP_RES-3: no other handler logs these names.
            size += word_size + lengths.measure(info.data, log, MDM_EACH("pkg : %s"));
            break;
        case MDM_FORM_APP_RES_ITEMS:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const auto *item : elements_before_null<mdm_app_res_item_t>(info.data)) {
                log_item(log, __LINE__, "%s(%u)", *item);
                size += size_of_fields(item, item_fields);
            }
            break;
        case MDM_FORM_APP_RES_CONTROLS:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const auto *control : elements_before_null<mdm_app_control_info_t>(info.data)) {
                MDM_INFO("app_control_info->client_id : %d", control->client_id);
                if (control->pkg_list != nullptr) {  // Q-APP_RES-6
                    MDM_INFO("len2 : %d", length_of(control->pkg_list));
                }
                size += word_size + word_size + lengths.measure(control->pkg_list, log);
            }
            break;
        case MDM_FORM_APP_RES_DATA:
        default:
            size += static_cast<uint32_t>(info.data_size);
            break;
        }
    }
    MDM_INFO("size : %d", size);
    return size;
}

bool _set_app_res(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(out && body != nullptr, false);

    const mdm_app_res_info_t &info = body->app_res;
    out.fields(&info, head_fields);
    if (info.data_size < 1) {
        return true;
    }
    switch (mdm_app_res_form(info.type)) {
    case MDM_FORM_APP_RES_PACKAGES:
    default: {
        const uint32_t count = out.count(info.data, "app_res.packages");
        MDM_INFO("len : %d", count);
        out.strings_before_null(info.data, "app_res.packages");
        break;
    }
    case MDM_FORM_APP_RES_ITEMS: {
        const uint32_t count = out.count(info.data, "app_res.items");
        MDM_INFO("len : %d", count);
        for (const auto *item : elements_before_null<mdm_app_res_item_t>(info.data)) {
            log_item(log, __LINE__, "%s(%u)", *item);
            if (item->name != nullptr) {  // Q-APP_RES-1
                out.fields(item, item_fields);
            } else {
                out.refuse("app_res.item.name");
            }
        }
        break;
    }
    case MDM_FORM_APP_RES_CONTROLS: {
        const uint32_t count = out.count(info.data, "app_res.controls");
        MDM_INFO("len : %d", count);
        for (const auto *control : elements_before_null<mdm_app_control_info_t>(info.data)) {
            out.i32(control->client_id, "app_res.control.client_id");
            MDM_INFO("app_control_info->client_id : %d", control->client_id);
            const uint32_t package_count = out.count(control->pkg_list, "app_res.control.pkg_list");
            MDM_INFO("len2 : %d", package_count);
            out.strings_before_null(control->pkg_list, "app_res.control.pkg_list");
        }
        break;
    }
    case MDM_FORM_APP_RES_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return true;
}

bool _get_app_res(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(in && body != nullptr, false);

    mdm_app_res_info_t &info = body->app_res;
    in.fields(&info, head_fields);
    if (info.data_size < 1) {
        info.data = nullptr;
        return true;
    }
    switch (mdm_app_res_form(info.type)) {
    case MDM_FORM_APP_RES_PACKAGES:
    default: {
        const int32_t count = in.count("app_res.packages", word_size);
        MDM_INFO("len : %d", count);
        info.data = in.strings(count, "app_res.packages");
        break;
    }
    case MDM_FORM_APP_RES_ITEMS: {
        const int32_t count = in.count("app_res.items", smallest_size(item_fields));
        MDM_INFO("len : %d", count);
        Reader::List items(in, count);
        while (items.next()) {
            auto *item = in.record(item_fields);
            log_item(log, __LINE__, received_item(info.type), *item);
            items.append(item);
        }
        info.data = items.head();
        break;
    }
    case MDM_FORM_APP_RES_CONTROLS: {
        const int32_t count = in.count("app_res.controls", word_size + word_size);
        MDM_INFO("len : %d", count);
        Reader::List controls(in, count);
        while (controls.next()) {
            auto *control = in.make<mdm_app_control_info_t>();
            control->client_id = in.i32("app_res.control.client_id");
            MDM_INFO("client_id : %d", control->client_id);
            const int32_t package_count = in.count("app_res.control.pkg_list", word_size);
            MDM_INFO("len2 : %d", package_count);
            // Q-APP_RES-3: no other handler logs these names.
            control->pkg_list =
                in.strings(package_count, "app_res.control.pkg_list", MDM_EACH("name : %s"));
            controls.append(control);
        }
        info.data = controls.head();
        break;
    }
    case MDM_FORM_APP_RES_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return true;
}

void _free_app_res(const Log &log, mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_app_res_info_t &info = body->app_res;
    if (info.data_size < 1) {  // Q-BODY-5: `data` is not released.
        return release_string(info.pkg);
    }
    if (info.data == nullptr) {
        return MDM_EXIT();  // Q-APP_RES-4: `pkg` stays allocated.
    }
    switch (mdm_app_res_form(info.type)) {
    case MDM_FORM_APP_RES_PACKAGES:
        release_elements(info.data);
        info.data = nullptr;
        break;
    case MDM_FORM_APP_RES_ITEMS:
        for (auto *item : elements_before_null<mdm_app_res_item_t>(info.data)) {
            log_item(log, __LINE__, "%s(%u)", *item);
            release_record(item, item_fields);
        }
        release_cells(info.data);  // Q-BODY-7: `data` keeps its value.
        break;
    case MDM_FORM_APP_RES_CONTROLS:
        // Q-APP_RES-5: the records stay allocated.
        for (const auto *control : elements_before_null<mdm_app_control_info_t>(info.data)) {
            release_elements(control->pkg_list);
        }
        release_cells(info.data);
        info.data = nullptr;
        break;
    case MDM_FORM_APP_RES_DATA:
    default:
        release_data(info.data);
        break;
    }
    release_string(info.pkg);
}

}  // namespace mdm
