// SPDX-License-Identifier: Apache-2.0
//
// The head of app and app_res: `type`, `param`, the string `pkg` and `data_size`. The payload
// follows if `data_size` is 1 or more.
#pragma once

#include "wire/fields.hpp"

#define MDM_APP_HEAD_FIELDS(category) \
    MDM_FIELDS(mdm_##category##_info_t, #category, type, param, pkg, data_size)
