// SPDX-License-Identifier: Apache-2.0

#include "blaster/LpmClient.h"

#include "blaster/MockLpmClient.h"
#include "orlu/MfgData.h"
#include "orlu/SystemUtils.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

/// Valid until the next packet of the same thread. It is reused so that its strings keep their
/// memory from key to key.
const LPMIpcServicePacket& Packet(const google::protobuf::Message& message, Ipc_Device_t device)
{
    thread_local LPMIpcServicePacket packet;
    packet.set_destination(device);
    message.SerializeToString(packet.mutable_nested_message());
    packet.set_msg_typename(message.GetDescriptor()->name());
    return packet;
}

}  // namespace

CallbackConnection LpmClient::TRS_SendToBlaster(const TRS_BlasterMsg_t& message,
                                                Callback<TRS_BlasterMsg_t> callback,
                                                Ipc_Device_t device)
{
    return Request(IPC_SEND_TO_BLASTER, Packet(message, device), std::move(callback));
}

void LpmClient::TRS_SendToBlasterTimeout(const TRS_BlasterMsg_t& message,
                                         const Callback<TRS_BlasterMsg_t>& callback,
                                         const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                                         Ipc_Device_t device)
{
    RequestTimed("AutoLpmTimer", IPC_SEND_TO_BLASTER, Packet(message, device), callback, timedOut,
                 timeoutMs);
}

void LpmClient::TRS_SendKeyToBlaster(const TRS_BlasterMsg_t& message, Ipc_Device_t device)
{
    Notify(IPC_SEND_BLASTER_KEY, message, device);
}

void LpmClient::TRS_SendBlasterKeyMapRqst(const TRS_BlasterMsg_t& message, Ipc_Device_t device)
{
    Notify(IPC_BLASTER_KEY_MAP_RQST, message, device);
}

void LpmClient::SendCecKey(const IpcCecKey_t& message, Ipc_Device_t device)
{
    Notify(IPC_CEC_KEY, message, device);
}

void LpmClient::Notify(std::uint32_t id, const google::protobuf::Message& message,
                       Ipc_Device_t device)
{
    if (m_router) {
        m_router->SendMessage(id, Packet(message, device));
    }
}

bool IsMockLpm()
{
    const auto value = MfgData::Get("mockLPM");
    return value && StringUtils::ToLower(*value) == "true";
}

std::shared_ptr<LpmClientIF> CreateLpmClient(const std::string& /*name*/, NotifyTargetTaskIF* task)
{
    if (IsMockLpm()) {
        return std::make_shared<MockLpmClient>(task);
    }
    return std::make_shared<LpmClient>(task);
}

}  // namespace TrellanService
