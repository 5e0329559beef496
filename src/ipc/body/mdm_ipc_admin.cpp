// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 1 and 2 (client registration) has no head. `type` selects its fields:
//
//   type 0      type, pkg, status
//   any other   type, value, pkg, text
#include "ipc/body/handlers.hpp"

namespace mdm {
namespace {

constexpr auto query_fields = MDM_FIELDS(mdm_admin_info_t, "admin", pkg, status);
constexpr auto general_fields = MDM_FIELDS(mdm_admin_info_t, "admin", value, pkg, text);
constexpr auto owned_fields = MDM_FIELDS(mdm_admin_info_t, "admin", pkg, text);

bool is_query(const mdm_admin_info_t &info)
{
    return mdm_admin_form(info.type) == MDM_FORM_ADMIN_QUERY;
}

Fields fields_of(const mdm_admin_info_t &info)
{
    return is_query(info) ? Fields(query_fields) : Fields(general_fields);
}

}  // namespace

uint32_t _size_of_admin(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    const mdm_admin_info_t &info = body->admin;
    return MDM_EXIT(word_size + size_of_fields(&info, fields_of(info)));
}

bool _set_admin(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    const mdm_admin_info_t &info = body->admin;
    MDM_DEBUG("info->type: %d", static_cast<int>(info.type));  // Q-ADMIN-2
    out.u32(info.type, "admin.type");
    if (is_query(info)) {
        MDM_DEBUG("Processing IS_CLIENT_REGISTERED, pkg: '%s', status: %d", info.pkg, info.status);
    }
    out.fields(&info, fields_of(info));
    return MDM_EXIT(true);
}

// Q-ADMIN-1: the fields of the other form stay as they were.
bool _get_admin(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    mdm_admin_info_t &info = body->admin;
    info.type = in.u32("admin.type");
    MDM_DEBUG("info->type: %d", static_cast<int>(info.type));
    in.fields(&info, fields_of(info));
    if (is_query(info)) {
        MDM_DEBUG("Processed IS_CLIENT_REGISTERED, pkg: '%s', status: %d", info.pkg, info.status);
    }
    return MDM_EXIT(true);
}

void _free_admin(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body != nullptr) {
        release_strings(&body->admin, owned_fields);
    }
    return MDM_EXIT();
}

}  // namespace mdm
