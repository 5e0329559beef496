// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <mdm/device_policy_manager.hpp>
#include <mdm/ipc.h>

int main()
{
    mdm_msg_t sent{};
    const bool filled = mdm_firewall_set_data(&sent, 1, "ok", 2);

    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize(&sent, &length);
    mdm_msg_t received{};
    const int32_t result = ipc_deserialize(&received, buffer, length);
    g_free(buffer);
    const bool same = filled && result == MDM_RESULT_SUCCESS &&
                      mdm_firewall_data(&received, nullptr) == std::string("ok");
    ipc_free(&received);

    DevicePolicyManager::DeviceInventoryCallHistoryEvent event;
    event.str5.value = DevicePolicyManager::ServerInfo::IMAP4_PROTOCOL;
    const DevicePolicyManager::DeviceInventoryCallHistoryEvent copy = event;
    return same && copy.str5.value == "imap4" ? 0 : 1;
}
