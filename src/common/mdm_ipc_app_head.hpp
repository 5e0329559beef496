// SPDX-License-Identifier: Apache-2.0
//
// The head of the application bodies, app and app_res: a string travels between `param` and
// `data_size`. The payload follows when `data_size` is 1 or more.
#pragma once

#include "mdm_wire.hpp"

namespace mdm {

template <class Info>
inline constexpr auto app_head_fields = MDM_FIELDS(Info, type, param, pkg, data_size);

}  // namespace mdm
