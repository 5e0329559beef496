// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 1 and 2: client registration.
//
//   type 0      type, pkg, status
//   any other   type, value, pkg, text
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { registration_query, general };

constexpr Shape shape_of(uint32_t type)
{
    return type == IS_CLIENT_REGISTERED ? Shape::registration_query : Shape::general;
}

constexpr auto query_fields = MDM_FIELDS(mdm_admin_info_t, "admin", pkg, status);
constexpr auto general_fields = MDM_FIELDS(mdm_admin_info_t, "admin", value, pkg, text);
constexpr auto owned_fields = MDM_FIELDS(mdm_admin_info_t, "admin", pkg, text);

// There is nothing in it that could be missing.
const char *unsound_part(const mdm_admin_info_t & /*info*/)
{
    return nullptr;
}

}  // namespace

uint32_t _size_of_admin(mdm_body_t *body)
{
    MDM_ENTER();
    MDM_ASSERT(body != nullptr, 0);

    const mdm_admin_info_t &info = body->admin;
    const uint32_t fields_size = shape_of(info.type) == Shape::registration_query
                                     ? size_of_fields(info, query_fields)
                                     : size_of_fields(info, general_fields);
    return MDM_EXIT(word_size + fields_size);
}

template <class Out>
static bool _set_admin(Out &out, const mdm_admin_info_t *info)
{
    MDM_ENTER();
    MDM_DEBUG("info->type: %d", static_cast<int>(info->type));
    out.u32(info->type, "admin.type");
    if (shape_of(info->type) == Shape::registration_query) {
        MDM_DEBUG("Processing IS_CLIENT_REGISTERED, pkg: '%s', status: %d", info->pkg,
                  info->status);
        out.fields(*info, query_fields);
    } else {
        out.fields(*info, general_fields);
    }
    return MDM_EXIT(true);
}

// The fields of the form that did not travel stay as they were.
template <class In>
static bool _get_admin(In &in, mdm_admin_info_t *info)
{
    MDM_ENTER();
    info->type = in.u32("admin.type");
    MDM_DEBUG("info->type: %d", static_cast<int>(info->type));
    if (shape_of(info->type) == Shape::registration_query) {
        in.fields(*info, query_fields);
        MDM_DEBUG("Processed IS_CLIENT_REGISTERED, pkg: '%s', status: %d", info->pkg, info->status);
    } else {
        in.fields(*info, general_fields);
    }
    return MDM_EXIT(true);
}

MDM_HANDLERS(admin)

void _free_admin(mdm_body_t *body)
{
    MDM_ENTER();
    if (body != nullptr) {
        release_strings(body->admin, owned_fields);
    }
    return MDM_EXIT();
}

}  // namespace mdm
