// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/Callback.h"
#include "orlu/IPCMessageRouter.h"

namespace TrellanService {

/// Called with the id of a request that got no answer in time.
using LpmTimedOut = std::function<void(std::uint32_t id)>;

/// The link to the LPM service and the requests that all its clients share. Inherited virtually, so
/// that a client has one router, whichever of its interfaces is used.
///
/// Callbacks run on the client's task. Without a link nothing is sent and no callback is called;
/// only the timed requests end, by their time-out.
class LpmClientLiteIF {
public:
    virtual ~LpmClientLiteIF() = default;

    /// From any thread; returns at once. `callback` is called with true each time a link is
    /// established, never with false.
    virtual void Connect(const Callback<bool>& callback) = 0;

    /// From any thread: makes no further connection; `callback` follows on the client's task.
    virtual void Disconnect(const Callback<void>& callback) = 0;

    virtual void EnterLowPower(const Callback<LpmServiceMessages::LowPowerSet>& callback) = 0;
    virtual void ExitLowPower(const Callback<LpmServiceMessages::LowPowerSet>& callback) = 0;
    virtual void EnterNWSMode(const Callback<LpmServiceMessages::EnterNWS>& callback) = 0;
    virtual void ExitNWSMode(const Callback<LpmServiceMessages::EnterNWS>& callback) = 0;

    /// Called on the client's task each time the link is lost.
    virtual void SetDisconnectCallback(const std::function<void()>& callback) = 0;

    /// The bulk requests: a file of the LPM's, or the bytes in the message. The timed ones call
    /// either `callback`, or `timedOut` after `timeoutMs`; the others wait without limit.
    virtual void SendBulkFile(const LpmServiceMessages::BulkNotifyData_t& message,
                              const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                              LpmServiceMessages::Ipc_Device_t device) = 0;
    virtual void SendBulkFileTimed(
        const LpmServiceMessages::BulkNotifyData_t& message,
        const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
        const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
        LpmServiceMessages::Ipc_Device_t device) = 0;
    virtual void SendBulkData(const LpmServiceMessages::BulkNotifyData_t& message,
                              const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                              LpmServiceMessages::Ipc_Device_t device) = 0;
    virtual void SendBulkDataTimed(
        const LpmServiceMessages::BulkNotifyData_t& message,
        const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
        const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
        LpmServiceMessages::Ipc_Device_t device) = 0;

    /// For `AddHandler`; usable from construction on, link or not.
    const IPCMessageRouterPtr& Router() const { return m_router; }

protected:
    IPCMessageRouterPtr m_router;
};

}  // namespace TrellanService
