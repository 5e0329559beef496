// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 49 and 50 (location) is the body head alone.
// Q-LOCATION-1: `data_size` announces no payload.
#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {

const char *_validate_location(const mdm_body_t &body, Names names)
{
    return validate_nothing(body.location.data, names);
}

// Q-LOCATION-2: each handler checks a pointer of its own or none. The size and free handlers log
// nothing.
uint32_t _size_of_location(Lengths & /*lengths*/, const Log & /*log*/, mdm_body_t * /*body*/)
{
    return body_head_size;
}

bool _set_location(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out, false);
    out.body_head(body->location);
    return MDM_EXIT(true);
}

bool _get_location(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, false);
    in.body_head(body->location);
    return MDM_EXIT(true);
}

void _free_location(const Log & /*log*/, mdm_body_t * /*body*/)
{
}

}  // namespace mdm
