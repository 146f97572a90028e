// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "ProtoBufs/AutoLpmServiceMessages.pb.h"
#include "blaster/LpmClientLiteIF.h"

namespace TrellanService {

/// The LPM's functions that this service uses, in the order in which the LPM side lists them among
/// its many others.
class LpmClientIF : public virtual LpmClientLiteIF {
public:
    ~LpmClientIF() override = default;

    /// Sends a blaster frame as a request; `callback` gets the blaster's reply, or is never called.
    /// Dropping the connection does not cancel the request.
    virtual CallbackConnection TRS_SendToBlaster(
        const LpmServiceMessages::TRS_BlasterMsg_t& message,
        Callback<LpmServiceMessages::TRS_BlasterMsg_t> callback,
        LpmServiceMessages::Ipc_Device_t device) = 0;

    /// The same; `timedOut` is called in place of `callback` after `timeoutMs` without an answer.
    virtual void TRS_SendToBlasterTimeout(
        const LpmServiceMessages::TRS_BlasterMsg_t& message,
        const Callback<LpmServiceMessages::TRS_BlasterMsg_t>& callback, const LpmTimedOut& timedOut,
        std::uint32_t timeoutMs, LpmServiceMessages::Ipc_Device_t device) = 0;

    /// Sends a key frame without waiting for the blaster.
    virtual void TRS_SendKeyToBlaster(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                      LpmServiceMessages::Ipc_Device_t device) = 0;

    /// Asks for a key map, which comes as an event of its own.
    virtual void TRS_SendBlasterKeyMapRqst(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                           LpmServiceMessages::Ipc_Device_t device) = 0;

    virtual void SendCecKey(const LpmServiceMessages::IpcCecKey_t& message,
                            LpmServiceMessages::Ipc_Device_t device) = 0;
};

/// Whether the manufacturing data's "mockLPM" is the word true, in any mix of cases.
bool IsMockLpm();

/// A client, not yet connected: the real one, or on a product without an LPM the mock. The name is
/// for the caller's own record.
std::shared_ptr<LpmClientIF> CreateLpmClient(const std::string& name, NotifyTargetTaskIF* task);

}  // namespace TrellanService
