// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <mdm/device_policy_manager.hpp>
#include <mdm/ipc.h>

int main()
{
    std::string payload = "ok";
    mdm_msg_t sent{};
    sent.type = 31;
    sent.body.firewall.data_size = static_cast<int32_t>(payload.size());
    sent.body.firewall.data = payload.data();

    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize(&sent, &length);
    mdm_msg_t received{};
    const int32_t result = ipc_deserialize(&received, buffer, length);
    g_free(buffer);
    const bool same = result == MDM_RESULT_SUCCESS &&
                      static_cast<const char *>(received.body.firewall.data) == payload;
    ipc_free(&received);

    DevicePolicyManager::DeviceInventoryCallHistoryEvent event;
    event.str5.value = DevicePolicyManager::ServerInfo::IMAP4_PROTOCOL;
    const DevicePolicyManager::DeviceInventoryCallHistoryEvent copy = event;
    return same && copy.str5.value == "imap4" ? 0 : 1;
}
