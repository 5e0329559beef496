// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 53 and 54 (platform) has no head. `type` selects its fields:
//
//   type 439    type, text, number, flag
//   type 440    type, text, number
//   any other   type, text
//
// Q-PLATFORM-1: no handler checks its arguments, and only the set handler logs.
#include "ipc/body/handlers.hpp"

namespace mdm {
namespace {

constexpr auto text_fields = MDM_FIELDS(mdm_platform_info_t, "platform", text);
constexpr auto number_fields = MDM_FIELDS(mdm_platform_info_t, "platform", text, number);
constexpr auto flag_fields = MDM_FIELDS(mdm_platform_info_t, "platform", text, number, flag);

Fields fields_of(uint32_t type)
{
    switch (mdm_platform_form(type)) {
    case MDM_FORM_PLATFORM_FLAG:
        return flag_fields;
    case MDM_FORM_PLATFORM_NUMBER:
        return number_fields;
    case MDM_FORM_PLATFORM_TEXT:
    default:
        break;
    }
    return text_fields;
}

}  // namespace

uint32_t _size_of_platform(Lengths & /*lengths*/, const Log & /*log*/, mdm_body_t *body)
{
    const mdm_platform_info_t &info = body->platform;
    return word_size + size_of_fields(&info, fields_of(info.type));
}

bool _set_platform(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    const mdm_platform_info_t &info = body->platform;
    out.u32(info.type, "platform.type");
    out.fields(&info, fields_of(info.type));
    return MDM_EXIT(true);
}

// Q-PLATFORM-2: fields that do not travel stay as they were.
bool _get_platform(Reader &in, const Log & /*log*/, mdm_body_t *body)
{
    mdm_platform_info_t &info = body->platform;
    info.type = in.u32("platform.type");
    in.fields(&info, fields_of(info.type));
    return true;
}

// Q-BODY-7: the pointer keeps its value.
void _free_platform(const Log & /*log*/, mdm_body_t *body)
{
    g_free(body->platform.text);
}

}  // namespace mdm
