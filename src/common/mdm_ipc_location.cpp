// SPDX-License-Identifier: Apache-2.0
//
// Body of message types 49 and 50: location. The body head and nothing else, whatever `data_size`
// says.
#include "mdm_ipc_handlers.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_BODY_HEAD_FIELDS(location);

const char *unsound_part(const mdm_location_info_t &info)
{
    return unsound_nothing(info.data, MDM_PAYLOAD_PATHS(location));
}

}  // namespace

// Each handler checks the pointer that it checks, and no other.
uint32_t _size_of_location(mdm_body_t * /*body*/)
{
    return body_head_size;
}

template <class Out>
static bool _set_location(Out &out, const mdm_location_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(out, false);
    out.body_head(*info, head_fields);
    return MDM_EXIT(true);
}

template <class In>
static bool _get_location(In &in, mdm_location_info_t *info)
{
    MDM_ENTER();
    MDM_ASSERT(info != nullptr, false);
    in.body_head(*info, head_fields);
    return MDM_EXIT(true);
}

MDM_HANDLERS(location)

void _free_location(mdm_body_t * /*body*/)
{
}

}  // namespace mdm
