// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 53 and 54: platform.
//
//   type 439    type, text, number, flag
//   type 440    type, text, number
//   any other   type, text
//
// No handler checks its arguments, and only the set handler logs.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

enum class Shape { number_and_flag, number, text };

constexpr Shape shape_of(uint32_t type)
{
    switch (type) {
    case 439:
        return Shape::number_and_flag;
    case 440:
        return Shape::number;
    default:
        return Shape::text;
    }
}

constexpr auto text_fields = MDM_FIELDS(mdm_platform_info_t, "platform", text);
constexpr auto number_fields = MDM_FIELDS(mdm_platform_info_t, "platform", text, number);
constexpr auto number_and_flag_fields =
    MDM_FIELDS(mdm_platform_info_t, "platform", text, number, flag);

// There is nothing in it that could be missing.
const char *unsound_part(const mdm_platform_info_t & /*info*/)
{
    return nullptr;
}

}  // namespace

uint32_t _size_of_platform(mdm_body_t *body)
{
    const mdm_platform_info_t &info = body->platform;
    switch (shape_of(info.type)) {
    case Shape::number_and_flag:
        return word_size + size_of_fields(info, number_and_flag_fields);
    case Shape::number:
        return word_size + size_of_fields(info, number_fields);
    case Shape::text:
        break;
    }
    return word_size + size_of_fields(info, text_fields);
}

template <class Out>
static bool _set_platform(Out &out, const mdm_platform_info_t *info)
{
    MDM_ENTER();
    out.u32(info->type, "platform.type");
    switch (shape_of(info->type)) {
    case Shape::number_and_flag:
        out.fields(*info, number_and_flag_fields);
        break;
    case Shape::number:
        out.fields(*info, number_fields);
        break;
    case Shape::text:
        out.fields(*info, text_fields);
        break;
    }
    return MDM_EXIT(true);
}

// Fields that do not travel stay as they were.
template <class In>
static bool _get_platform(In &in, mdm_platform_info_t *info)
{
    info->type = in.u32("platform.type");
    switch (shape_of(info->type)) {
    case Shape::number_and_flag:
        in.fields(*info, number_and_flag_fields);
        break;
    case Shape::number:
        in.fields(*info, number_fields);
        break;
    case Shape::text:
        in.fields(*info, text_fields);
        break;
    }
    return true;
}

MDM_HANDLERS(platform)

// The pointer keeps its old value.
void _free_platform(mdm_body_t *body)
{
    g_free(body->platform.text);
}

}  // namespace mdm
