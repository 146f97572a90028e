// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <utility>

#include "blaster/LpmClientLiteIF.h"
#include "orlu/Network.h"
#include "orlu/Timer.h"

namespace TrellanService {

/// Keeps the link to "LpmService": tries each second in the background, takes every socket that the
/// listener brings, and reports the loss of one. Held by shared pointers only; bound to one task.
class LpmClientLite : public virtual LpmClientLiteIF,
                      public std::enable_shared_from_this<LpmClientLite> {
public:
    /// `task` runs everything that the client does by itself; not owned. The constructor connects
    /// to nothing.
    explicit LpmClientLite(NotifyTargetTaskIF* task);

    void Connect(const Callback<bool>& callback) override;
    void Disconnect(const Callback<void>& callback) override;
    void EnterLowPower(const Callback<LpmServiceMessages::LowPowerSet>& callback) override;
    void ExitLowPower(const Callback<LpmServiceMessages::LowPowerSet>& callback) override;
    void EnterNWSMode(const Callback<LpmServiceMessages::EnterNWS>& callback) override;
    void ExitNWSMode(const Callback<LpmServiceMessages::EnterNWS>& callback) override;
    void SetDisconnectCallback(const std::function<void()>& callback) override;
    void SendBulkFile(const LpmServiceMessages::BulkNotifyData_t& message,
                      const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                      LpmServiceMessages::Ipc_Device_t device) override;
    void SendBulkFileTimed(const LpmServiceMessages::BulkNotifyData_t& message,
                           const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                           const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                           LpmServiceMessages::Ipc_Device_t device) override;
    void SendBulkData(const LpmServiceMessages::BulkNotifyData_t& message,
                      const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                      LpmServiceMessages::Ipc_Device_t device) override;
    void SendBulkDataTimed(const LpmServiceMessages::BulkNotifyData_t& message,
                           const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                           const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                           LpmServiceMessages::Ipc_Device_t device) override;

protected:
    /// Without a router, or while it is not connected, nothing is sent and the connection is empty.
    template <class Response>
    CallbackConnection Request(std::uint32_t id, const google::protobuf::Message& message,
                               Callback<Response> callback)
    {
        if (!m_router) {
            return {};
        }
        return m_router->SendRequestMessage<Response>(id, message, std::move(callback));
    }

    /// Calls either `callback` with the answer or, after `timeoutMs`, `timedOut` with `id`. To be
    /// called on the client's task.
    template <class Response>
    void RequestTimed(const char* timerName, std::uint32_t id,
                      const google::protobuf::Message& message, Callback<Response> callback,
                      const LpmTimedOut& timedOut, std::uint32_t timeoutMs)
    {
        auto deadline = std::make_shared<Deadline>();
        deadline->timer = APTimer::Create(m_task, timerName);
        const AsyncCallback<Response> answered(
            [deadline, callback = std::move(callback)](const Response& response) {
                if (deadline->Pass() && callback) {
                    callback(response);
                }
            },
            m_task);
        deadline->timer->SetTimeouts(timeoutMs, 0);
        deadline->request = Request(id, message, Callback<Response>(answered));
        StartDeadline(deadline, id, timedOut);
    }

private:
    /// The end of a timed request: its answer or its time-out, whichever is first.
    struct Deadline {
        std::shared_ptr<APTimer> timer;
        CallbackConnection request;
        bool passed = false;

        /// Stops the timer. True at the first call only.
        bool Pass();
    };

    static void StartDeadline(const std::shared_ptr<Deadline>& deadline, std::uint32_t id,
                              const LpmTimedOut& timedOut);

    // On the client's task.
    void ConnectToService(const Callback<bool>& callback);
    void OnSocketConnected(const Orlu::SocketPtr& socket, const Callback<bool>& callback);
    void HandleDisconnect();
    void CloseListener(const Callback<void>& callback);

    NotifyTargetTaskIF* m_task;
    std::shared_ptr<APClientSocketListenerIF> m_listener;
    std::function<void()> m_disconnectCallback;
};

}  // namespace TrellanService
