// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "blaster/LpmClientIF.h"
#include "blaster/LpmClientLite.h"

namespace TrellanService {

/// The client on a product without an LPM. It reports a connection at once and sends nothing. Each
/// of the other functions logs that it is not implemented; no callback but that of `Connect` is
/// ever called.
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
