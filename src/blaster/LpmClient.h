// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "blaster/LpmClientIF.h"
#include "blaster/LpmClientLite.h"

namespace TrellanService {

/// The client of the LPM service. The send operations touch only the router; call them on the task
/// that owns the client.
class LpmClient : public LpmClientIF, public LpmClientLite {
public:
    using LpmClientLite::LpmClientLite;

    CallbackConnection TRS_SendToBlaster(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                         Callback<LpmServiceMessages::TRS_BlasterMsg_t> callback,
                                         LpmServiceMessages::Ipc_Device_t device) override;
    void TRS_SendToBlasterTimeout(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                  const Callback<LpmServiceMessages::TRS_BlasterMsg_t>& callback,
                                  const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                                  LpmServiceMessages::Ipc_Device_t device) override;
    void TRS_SendKeyToBlaster(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                              LpmServiceMessages::Ipc_Device_t device) override;
    void TRS_SendBlasterKeyMapRqst(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                   LpmServiceMessages::Ipc_Device_t device) override;
    void SendCecKey(const LpmServiceMessages::IpcCecKey_t& message,
                    LpmServiceMessages::Ipc_Device_t device) override;

private:
    void Notify(std::uint32_t id, const google::protobuf::Message& message,
                LpmServiceMessages::Ipc_Device_t device);
};

}  // namespace TrellanService
