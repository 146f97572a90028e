// SPDX-License-Identifier: Apache-2.0

#include "blaster/LpmClientLite.h"

#include <iostream>

#include "orlu/DPrint.h"

using namespace LpmServiceMessages;

namespace TrellanService {

namespace {

constexpr DPrint kLog("LpmClientLite");

constexpr const char* kServiceName = "LpmService";
constexpr std::uint32_t kRetryMs = 1000;

/// The bulk requests carry one type each, so the field for its name is not set.
LPMIpcServicePacket BulkPacket(const BulkNotifyData_t& message, Ipc_Device_t device)
{
    LPMIpcServicePacket packet;
    packet.set_destination(device);
    packet.set_nested_message(message.SerializeAsString());
    return packet;
}

LowPowerSet LowPower(bool on)
{
    LowPowerSet message;
    message.set_lowpower(on);
    return message;
}

EnterNWS NWSMode(bool on)
{
    EnterNWS message;
    message.set_nwsmode(on);
    return message;
}

}  // namespace

LpmClientLite::LpmClientLite(NotifyTargetTaskIF* task)
    : m_task(task), m_listener(IL::CreateClientListener("LpmClientListener", kRetryMs))
{
    m_router = IPCMessageRouterFactory::CreateRouter("LpmClient", task, nullptr);
    // A default, so that there is always a callback to call.
    m_disconnectCallback = AsyncCallback<>([] {}, task);
}

void LpmClientLite::Connect(const Callback<bool>& callback)
{
    // `Connect` may come from any thread, but listener and router belong to the task.
    IL::BreakThread([self = shared_from_this(), callback] { self->ConnectToService(callback); },
                    m_task);
}

void LpmClientLite::ConnectToService(const Callback<bool>& callback)
{
    // A client that was disconnected stays so.
    if (!m_listener) {
        return;
    }
    // Held weakly: the listener belongs to this object and keeps the callback.
    const AsyncCallback<Orlu::SocketPtr> connected(
        [weak = weak_from_this(), callback](const Orlu::SocketPtr& socket) {
            if (const auto self = weak.lock()) {
                self->OnSocketConnected(socket, callback);
            }
        },
        m_task);
    m_listener->Serve(IPCDirectory::Get().Lookup(kServiceName), connected);
}

void LpmClientLite::OnSocketConnected(const Orlu::SocketPtr& socket, const Callback<bool>& callback)
{
    // Held weakly too: others may hold the router after this object is gone.
    // The router stays the same over all connections, so handlers that were added once stay in
    // force.
    m_router->Connect(socket, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->HandleDisconnect();
        }
    });
    if (callback) {
        callback(true);
    }
}

void LpmClientLite::HandleDisconnect()
{
    kLog.Put(3, "Connection lost");
    if (m_disconnectCallback) {
        m_disconnectCallback();
    }
}

void LpmClientLite::Disconnect(const Callback<void>& callback)
{
    std::cout << "virtual void LpmClientLite::Disconnect(const Callback<void>&)" << std::endl;
    IL::BreakThread([self = shared_from_this(), callback] { self->CloseListener(callback); },
                    m_task);
}

void LpmClientLite::CloseListener(const Callback<void>& callback)
{
    m_listener.reset();
    if (callback) {
        callback();
    }
}

void LpmClientLite::EnterLowPower(const Callback<LowPowerSet>& callback)
{
    Request(SET_LOW_POWER, LowPower(true), callback);
}

void LpmClientLite::ExitLowPower(const Callback<LowPowerSet>& callback)
{
    Request(SET_LOW_POWER, LowPower(false), callback);
}

void LpmClientLite::EnterNWSMode(const Callback<EnterNWS>& callback)
{
    Request(ENTER_NWS, NWSMode(true), callback);
}

void LpmClientLite::ExitNWSMode(const Callback<EnterNWS>& callback)
{
    Request(ENTER_NWS, NWSMode(false), callback);
}

void LpmClientLite::SetDisconnectCallback(const std::function<void()>& callback)
{
    m_disconnectCallback = callback;
}

void LpmClientLite::SendBulkFile(const BulkNotifyData_t& message,
                                 const Callback<BulkTransferResponse>& callback,
                                 Ipc_Device_t device)
{
    Request(BULK_TRANSFER_FILE_REQUEST, BulkPacket(message, device), callback);
}

void LpmClientLite::SendBulkFileTimed(const BulkNotifyData_t& message,
                                      const Callback<BulkTransferResponse>& callback,
                                      const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                                      Ipc_Device_t device)
{
    RequestTimed("BulkTransferTimer", BULK_TRANSFER_FILE_REQUEST, BulkPacket(message, device),
                 callback, timedOut, timeoutMs);
}

void LpmClientLite::SendBulkData(const BulkNotifyData_t& message,
                                 const Callback<BulkTransferResponse>& callback,
                                 Ipc_Device_t device)
{
    Request(BULK_TRANSFER_DATA_REQUEST, BulkPacket(message, device), callback);
}

void LpmClientLite::SendBulkDataTimed(const BulkNotifyData_t& message,
                                      const Callback<BulkTransferResponse>& callback,
                                      const LpmTimedOut& timedOut, std::uint32_t timeoutMs,
                                      Ipc_Device_t device)
{
    RequestTimed("BulkTransferDataTimer", BULK_TRANSFER_DATA_REQUEST, BulkPacket(message, device),
                 callback, timedOut, timeoutMs);
}

bool LpmClientLite::Deadline::Pass()
{
    // The answer and the time-out may be due in one wake-up; only the first of them counts.
    timer->Stop();
    return !std::exchange(passed, true);
}

void LpmClientLite::StartDeadline(const std::shared_ptr<Deadline>& deadline, std::uint32_t id,
                                  const LpmTimedOut& timedOut)
{
    deadline->timer->Start([deadline, id, timedOut] {
        // The router drops the request, so a late answer reaches no callback.
        deadline->request.Disconnect();
        if (deadline->Pass() && timedOut) {
            timedOut(id);
        }
    });
}

}  // namespace TrellanService
