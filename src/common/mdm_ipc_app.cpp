// SPDX-License-Identifier: Apache-2.0
//
// Body of message type 13: applications. The application head, then
//
//   type 4, 15      a count and package names
//   type 140, 141   data_size raw bytes, read back as num1, num2
//   type 184, 185   first, second
//   any other       data_size raw bytes
//
// No handler logs its entry; the size and free handlers log their exit where nothing is to be done.
#include "mdm_ipc_app_head.hpp"
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { packages, num_pair, pair, raw };

constexpr Shape shape_of(int32_t type)
{
    switch (type) {
    case 4:
    case 15:
        return Shape::packages;
    case 140:
    case 141:
        return Shape::num_pair;
    case 184:
    case 185:
        return Shape::pair;
    default:
        return Shape::raw;
    }
}

constexpr auto head_fields = MDM_APP_HEAD_FIELDS(app);
constexpr auto num_pair_fields = MDM_FIELDS(mdm_app_num_pair_t, "app.num_pair", num1, num2);
constexpr auto pair_fields = MDM_FIELDS(mdm_app_pair_t, "app.pair", first, second);

// Two numbers are all that a receiver of a pair of them has of it, whatever `data_size` says.
const char *unsound_part(const mdm_app_info_t &info)
{
    constexpr auto paths = MDM_PAYLOAD_PATHS(app);
    const Shape shape = shape_of(info.type);
    const bool is_announced = info.data_size >= 1;
    if (shape == Shape::packages) {
        return unsound_list(is_announced, info.data, paths);
    }
    if (const char *path = unsound_payload(is_announced, info.data, paths)) {
        return path;
    }
    constexpr auto num_pair_size = static_cast<int32_t>(smallest_size(num_pair_fields));
    const bool is_num_pair = is_announced && shape == Shape::num_pair;
    return is_num_pair && info.data_size != num_pair_size ? paths.data_size : nullptr;
}

}  // namespace

// A null package name ends a list here as it does on the wire.
uint32_t _size_of_app(mdm_body_t *body)
{
    if (body == nullptr) {
        MDM_CRITICAL("p_data is NULL!");
        return MDM_EXIT(0);
    }
    const mdm_app_info_t &info = body->app;
    uint32_t size = size_of_fields(info, head_fields);
    if (info.data_size >= 1) {
        switch (shape_of(info.type)) {
        case Shape::packages:
            MDM_INFO("len : %d", length_of(info.data));
            size += word_size;
            for (const char *name : elements_before_null<char>(info.data)) {
                MDM_INFO("pkg_name : %s", name);
                size += size_of_str(name);
            }
            break;
        case Shape::pair:
            if (info.data != nullptr) {
                size += size_of_fields(info.data, pair_fields);
            }
            break;
        case Shape::num_pair:
        case Shape::raw:
            size += static_cast<uint32_t>(info.data_size);
            break;
        }
    }
    MDM_INFO("size : %d", size);
    return size;
}

template <class Out>
static bool _set_app(Out &out, const mdm_app_info_t *info)
{
    MDM_ASSERT(out && info != nullptr, false);

    out.fields(*info, head_fields);
    if (info->data_size < 1) {
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::packages: {
        const uint32_t count = out.count(info->data, "app.packages");
        MDM_INFO("len : %d", count);
        for (const char *name : elements_before_null<char>(info->data)) {
            MDM_INFO("pkg_name : %s", name);
            out.str(name, "app.packages");
        }
        break;
    }
    case Shape::pair:
        if (info->data != nullptr) {
            const auto &pair = payload<mdm_app_pair_t>(*info);
            MDM_INFO("[%s,%s]", pair.first, pair.second);
            out.fields(pair, pair_fields);
        }
        break;
    case Shape::num_pair:  // the receiver reads two numbers, whatever `data_size` says
    case Shape::raw:
        out.bytes(info->data, info->data_size, "app.data");
        break;
    }
    return true;
}

template <class In>
static bool _get_app(In &in, mdm_app_info_t *info)
{
    MDM_ASSERT(in && info != nullptr, false);

    in.fields(*info, head_fields);
    if (info->data_size < 1) {
        info->data = nullptr;
        return true;
    }
    switch (shape_of(info->type)) {
    case Shape::packages: {
        const int32_t count = in.count("app.packages", word_size);
        MDM_INFO("len : %d", count);
        auto names = in.new_list();
        for (int32_t i = 0; in && i < count; ++i) {
            char *name = in.str("app.packages");
            MDM_INFO("pkg_name : %s", name);
            names.append(name);
        }
        info->data = names.head();
        break;
    }
    case Shape::num_pair:
        info->data = in.record(num_pair_fields);
        break;
    case Shape::pair: {
        auto *pair = in.template try_make<mdm_app_pair_t>();
        if (pair == nullptr) {
            MDM_CRITICAL("malloc failed!");
            return true;  // the payload stays unread, and `data` as it was
        }
        in.fields(*pair, pair_fields);
        MDM_INFO("[%s,%s]", pair->first, pair->second);
        info->data = pair;
        break;
    }
    case Shape::raw:
        info->data = in.bytes(info->data_size, "app.data");
        break;
    }
    return true;
}

MDM_HANDLERS(app)

void _free_app(mdm_body_t *body)
{
    if (body == nullptr) {
        return MDM_EXIT();
    }
    mdm_app_info_t &info = body->app;
    release_string(info.pkg);
    if (info.data == nullptr) {
        return MDM_EXIT();
    }
    switch (shape_of(info.type)) {
    case Shape::packages:
        break;  // the list stays allocated, with its strings
    case Shape::pair:
        release_record(info.data, pair_fields);  // `data` keeps its old value
        break;
    case Shape::num_pair:
    case Shape::raw:
        release_data(info);
        break;
    }
}

}  // namespace mdm
