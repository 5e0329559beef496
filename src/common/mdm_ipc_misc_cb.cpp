// SPDX-License-Identifier: Apache-2.0
//
// Body of message type 63: miscellaneous callbacks. The callback head, then for type 0 and 1
// flag6, num7, str8.
#include "mdm_ipc_callback.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_CALLBACK_HEAD_FIELDS(misc_cb);
// One byte comes first, so the number behind it is unaligned.
constexpr auto payload_fields = MDM_FIELDS(mdm_misc_cb_info_t, "misc_cb", flag6, num7, str8);

}  // namespace

MDM_CALLBACK_HANDLERS(misc_cb, (Callback{head_fields, payload_fields, "MISC"}))

}  // namespace mdm
