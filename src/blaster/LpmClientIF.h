// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "ProtoBufs/AutoLpmServiceMessages.pb.h"
#include "blaster/LpmClientLiteIF.h"

namespace TrellanService {

/// The functions of the LPM that this service uses.
class LpmClientIF : public virtual LpmClientLiteIF {
public:
    ~LpmClientIF() override = default;

    /// Sends a blaster frame as a request. `callback` gets the blaster's reply; it is never called
    /// if the reply is lost. Dropping the connection object does not cancel the request.
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

    /// Asks for a key map, which comes as a separate event.
    virtual void TRS_SendBlasterKeyMapRqst(const LpmServiceMessages::TRS_BlasterMsg_t& message,
                                           LpmServiceMessages::Ipc_Device_t device) = 0;

    virtual void SendCecKey(const LpmServiceMessages::IpcCecKey_t& message,
                            LpmServiceMessages::Ipc_Device_t device) = 0;
};

/// Whether the manufacturing data's "mockLPM" is the word true, in any mix of cases.
bool IsMockLpm();

/// A client that is not connected yet: the real one, or the mock on a product without an LPM. The
/// name has no effect.
std::shared_ptr<LpmClientIF> CreateLpmClient(const std::string& name, NotifyTargetTaskIF* task);

}  // namespace TrellanService
