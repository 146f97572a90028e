// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "blaster/LpmClientIF.h"
#include "blaster/LpmClientLite.h"

namespace TrellanService {

/// The client on a product without an LPM: it counts as connected at once and has no connection.
/// Each function says in the log that it is not there; no callback but `Connect`'s is ever called.
class MockLpmClient : public LpmClientIF, public LpmClientLite {
public:
    using LpmClientLite::LpmClientLite;

    /// Calls `callback` with true before it returns.
    void Connect(const Callback<bool>& callback) override;

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
};

}  // namespace TrellanService
