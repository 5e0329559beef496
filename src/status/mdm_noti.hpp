// SPDX-License-Identifier: Apache-2.0
//
// The status store below its exported functions. The directory, with its trailing slash, is a
// parameter. The log lines carry the names of the exported functions.
#pragma once

#include <cstdint>

namespace mdm {

int32_t mdm_read_noti(const char *directory, const char *p_key, int32_t *p_status);
int32_t mdm_write_noti(const char *directory, const char *noti, int32_t status);

}  // namespace mdm
