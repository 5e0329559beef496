// SPDX-License-Identifier: Apache-2.0
//
// The body of message type 13 (applications) is the application head and a payload:
//
//   type 4, 15      a count, then the package names
//   type 140, 141   data_size raw bytes, which are read as num1 and num2
//   type 184, 185   first, second
//   any other       data_size raw bytes
//
// Q-BODY-13: no handler logs its entry. The size and free handlers log their exit if there is
// nothing to do.
#include <bit>

#include "ipc/body/app_head.hpp"
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_APP_HEAD_FIELDS(app);
constexpr auto num_pair_fields = MDM_FIELDS(mdm_app_num_pair_t, "app.num_pair", num1, num2);
constexpr auto num_pair_size = static_cast<int32_t>(smallest_size(num_pair_fields));
constexpr auto pair_fields = MDM_FIELDS(mdm_app_pair_t, "app.pair", first, second);

}  // namespace

// A receiver of 140 and 141 holds two numbers, so no other `data_size` than theirs can be sealed.
const char *_validate_app(const mdm_body_t &body, Names names)
{
    const mdm_app_info_t &info = body.app;
    const mdm_form_t form = mdm_app_form(info.type);
    const bool is_announced = info.data_size >= 1;
    if (form == MDM_FORM_APP_PACKAGES) {
        return validate_list(is_announced, info.data, names);
    }
    if (const char *path = validate_payload(is_announced, info.data, names)) {
        return path;
    }
    const bool is_num_pair = is_announced && form == MDM_FORM_APP_NUM_PAIR;
    return is_num_pair && info.data_size != num_pair_size ? names.data_size() : nullptr;
}

// Q-BODY-12: a null package name ends the size and the written list, but not the count.
uint32_t _size_of_app(Lengths &lengths, const Log &log, mdm_body_t *body)
{
    MDM_FAIL_IF(body == nullptr, 0, "p_data is NULL!");
    const mdm_app_info_t &info = body->app;
    uint32_t size = size_of_fields(&info, head_fields);
    if (info.data_size >= 1) {
        switch (mdm_app_form(info.type)) {
        case MDM_FORM_APP_PACKAGES:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size + lengths.measure(info.data, log, MDM_EACH("pkg_name : %s"));
            break;
        case MDM_FORM_APP_PAIR:
            if (info.data != nullptr) {  // Q-APP-2
                size += size_of_fields(info.data, pair_fields);
            }
            break;
        case MDM_FORM_APP_NUM_PAIR:
        case MDM_FORM_APP_DATA:
        default:
            size += static_cast<uint32_t>(info.data_size);
            break;
        }
    }
    MDM_INFO("size : %d", size);
    return size;
}

bool _set_app(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(out && body != nullptr, false);

    const mdm_app_info_t &info = body->app;
    out.fields(&info, head_fields);
    if (info.data_size < 1) {
        return true;
    }
    switch (mdm_app_form(info.type)) {
    case MDM_FORM_APP_PACKAGES:
    default: {
        const uint32_t count = out.count(info.data, "app.packages");
        MDM_INFO("len : %d", count);
        // Q-BODY-12
        out.strings_before_null(info.data, "app.packages", MDM_EACH("pkg_name : %s"));
        break;
    }
    case MDM_FORM_APP_PAIR:
        if (info.data != nullptr) {  // Q-APP-2: without its pair, the head travels alone.
            const auto &pair = payload<mdm_app_pair_t>(info);
            MDM_INFO("[%s,%s]", pair.first, pair.second);
            out.fields(&pair, pair_fields);
        }
        break;
    case MDM_FORM_APP_NUM_PAIR:  // Q-APP-1: a receiver reads 8 bytes, whatever `data_size` is.
        if constexpr (std::endian::native == std::endian::big) {
            if (info.data != nullptr && info.data_size == num_pair_size) {
                out.fields(info.data, num_pair_fields);
                break;
            }
        }
        [[fallthrough]];  // the numbers travel as they are in little-endian memory
    case MDM_FORM_APP_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return true;
}

bool _get_app(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ASSERT(in && body != nullptr, false);

    mdm_app_info_t &info = body->app;
    in.fields(&info, head_fields);
    if (info.data_size < 1) {
        info.data = nullptr;
        return true;
    }
    switch (mdm_app_form(info.type)) {
    case MDM_FORM_APP_PACKAGES:
    default: {
        const int32_t count = in.count("app.packages", word_size);
        MDM_INFO("len : %d", count);
        info.data = in.strings(count, "app.packages", MDM_EACH("pkg_name : %s"));
        break;
    }
    case MDM_FORM_APP_NUM_PAIR:
        info.data = in.record(num_pair_fields);
        break;
    case MDM_FORM_APP_PAIR: {
        auto *pair = in.try_record(pair_fields);
        if (pair == nullptr) {
            MDM_CRITICAL("malloc failed!");
            return true;  // Q-APP-3: the payload stays unread, and `data` as it was.
        }
        MDM_INFO("[%s,%s]", pair->first, pair->second);
        info.data = pair;
        break;
    }
    case MDM_FORM_APP_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return true;
}

void _free_app(const Log &log, mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_app_info_t &info = body->app;
    release_string(info.pkg);
    if (info.data == nullptr) {  // Q-BODY-5: `data_size` is not looked at.
        return MDM_EXIT();
    }
    switch (mdm_app_form(info.type)) {
    case MDM_FORM_APP_PACKAGES:
        break;  // Q-APP-4: the list and its strings stay allocated.
    case MDM_FORM_APP_PAIR:
        release_record(info.data, pair_fields);  // Q-BODY-7: `data` keeps its value.
        break;
    case MDM_FORM_APP_NUM_PAIR:
    case MDM_FORM_APP_DATA:
    default:
        release_data(info.data);
        break;
    }
}

}  // namespace mdm
