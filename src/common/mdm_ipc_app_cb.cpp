// SPDX-License-Identifier: Apache-2.0
//
// Body of message type 61: application callbacks. The callback head, then for type 0 and 1 num6,
// str8, str7.
#include "mdm_ipc_callback.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_CALLBACK_HEAD_FIELDS(app_cb);
constexpr auto payload_fields = MDM_FIELDS(mdm_app_cb_info_t, "app_cb", num6, str8, str7);

}  // namespace

MDM_CALLBACK_HANDLERS(app_cb, (Callback{head_fields, payload_fields, "APP"}))

}  // namespace mdm
