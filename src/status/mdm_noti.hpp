// SPDX-License-Identifier: Apache-2.0
//
// The status store below its exported functions, under whose names it logs: the directory, with its
// trailing slash, is a parameter.
#pragma once

#include <cstdint>

namespace mdm {

int32_t mdm_read_noti(const char *directory, const char *p_key, int32_t *p_status);
int32_t mdm_write_noti(const char *directory, const char *noti, int32_t status);

}  // namespace mdm
