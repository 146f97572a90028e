// SPDX-License-Identifier: Apache-2.0

#include "datacollection/DataCollectionIPCClient.h"

#include "orlu/DPrint.h"

namespace DataCollection {

namespace {

constexpr DPrint kLog("DataCollectionIPCClient");
constexpr std::uint32_t kEventRequest = 1;
constexpr std::uint32_t kStateNotification = 2;
constexpr std::uint32_t kRetryMs = 100;

}  // namespace

DataCollectionIPCClient::DataCollectionIPCClient(std::string dataType, NotifyTargetTaskIF* task)
    : m_dataType(std::move(dataType)), m_task(task)
{
    kLog.Put(3, "DataCollectionIPCClient ");
    if (m_task == nullptr) {
        m_ownTask = IL::CreateTask("DataCollectionIPCClient", "");
        m_task = m_ownTask.get();
    }
    if (m_task == nullptr) {
        kLog.Put(1, "No Task handle passed by the client, failed creating its own task");
        return;
    }
    const auto found = FindDataType(m_dataType);
    if (!found) {
        kLog.Put(1, "Cannot find value in map : ERROR");
        return;
    }
    m_ipcAddress = found->ipcAddress;
    m_listener = IL::CreateClientListener(m_dataType, kRetryMs);
    Initialize();
}

void DataCollectionIPCClient::Initialize()
{
    kLog.Put(3, "DataCollectionIPCClient::Initialize()");
    const AsyncCallback<Orlu::SocketPtr> connected(
        [this](const Orlu::SocketPtr& socket) { Connected(socket); }, m_task);
    if (!m_listener->Serve(IPCDirectory::Get().Lookup(m_ipcAddress), connected)) {
        kLog.Log(1, "no address of a service for {}: {}", m_dataType, m_ipcAddress);
    }
}

void DataCollectionIPCClient::Connected(const Orlu::SocketPtr& socket)
{
    kLog.Put(4, "Connected callback - DataCollectionIPCClient::Connected");
    m_router = IPCMessageRouterFactory::CreateRouter("DataCollectionIPCClient", m_task, nullptr);
    if (!m_router) {
        kLog.Put(4, "failed to create valid m_router");
        return;
    }
    kLog.Put(4, "Attaching to DataCollectionClient::DataCollectionStateCb");
    m_router->AddHandler<State>(kStateNotification, [this](const State& state, std::uint32_t) {
        DataCollectionStateCb(state);
    });
    m_router->Connect(socket, [this] { HandleDisconnect(); });
}

void DataCollectionIPCClient::HandleDisconnect()
{
    kLog.Put(4, "DataCollectionIPCClient::HandleDisconnect");
    // Queued, because the router itself is the caller. Bound to this router: until the work runs,
    // `m_router` may be the one of a new connection.
    IL::BreakThread(
        [router = m_router] {
            kLog.Put(4, "Disconnecting...");
            router->Disconnect();
        },
        m_task);
}

bool DataCollectionIPCClient::SendData(const MessagePtr& message, const std::string& type)
{
    return SendData(message, type, LogDelivery(kLog, type));
}

bool DataCollectionIPCClient::SendData(const MessagePtr& message, const std::string& type,
                                       const Callback<bool>& callback)
{
    if (!IsDataCollectionServiceUp()) {
        kLog.Put(4, "SendData DataCollectionServiceUp is false, event not sent.");
        return false;
    }
    kLog.Put(4, "SendData DataCollectionServiceUp is true.");
    const Event event = BuildData(message, type);
    if (!IsComplete(event)) {
        kLog.Put(4, "SendData badly formatted event, event not sent.");
        return false;
    }
    const auto request = m_router->SendRequestMessage<EventStatus>(
        kEventRequest, event, [callback](const EventStatus& status) {
            kLog.Log(4, "SendData event response From DataCollectionService : {}",
                     status.delivered() ? "success" : "failed");
            if (callback) {
                callback(status.delivered());
            }
        });
    // The state may be left from a connection that was lost.
    if (!request) {
        kLog.Put(4, "SendData is not connected, event not sent.");
        return false;
    }
    return true;
}

}  // namespace DataCollection
