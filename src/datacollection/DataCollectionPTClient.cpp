// SPDX-License-Identifier: Apache-2.0

#include "datacollection/DataCollectionPTClient.h"

#include <atomic>

#include <unistd.h>

#include "orlu/DPrint.h"
#include "orlu/Task.h"
#include "portico/PorticoClient.h"

namespace DataCollection {

namespace {

constexpr DPrint kLog("DataCollectionPTClient");
constexpr double kVersion = 1.0;
constexpr std::uint16_t kPort = 8084;

DataCollectionPTClient::ClientPtr CreateClient()
{
    // Each client has its own name at the local API; clients may be made on several threads.
    static std::atomic<unsigned> counter = 0;
    return PorticoClient::Create(fmt::format("datacollection{}-{}", getpid(), counter++),
                                 "localhost", kPort, "meridia", "", {}, {}, {});
}

}  // namespace

DataCollectionPTClient::DataCollectionPTClient(std::string dataType, NotifyTargetTaskIF* task,
                                               ClientPtr client)
    : m_dataType(std::move(dataType)), m_task(task), m_client(std::move(client))
{
    kLog.Log(3, "DataCollectionPTClient({})", m_dataType);
    if (m_task == nullptr) {
        m_ownTask = IL::CreateTask("taskDataCollectionPTClient", "");
        m_task = m_ownTask.get();
    }
    if (m_task == nullptr) {
        kLog.Put(1, "No Task handle passed by the client, failed creating its own task");
        return;
    }
    if (!m_client) {
        m_client = CreateClient();
    }
    if (!m_client) {
        kLog.Put(1,
                 "No porticoclient handle passed by the client, failed creating its own "
                 "porticoclient");
        return;
    }
    const auto found = FindDataType(m_dataType);
    if (!found) {
        kLog.Put(1, "Key not found in MAP");
        return;
    }
    m_endpoint = found->endpoint;
    m_stateEndpoint = m_endpoint + "/state";
    RegisterEndPointofService();
}

void DataCollectionPTClient::RegisterEndPointofService()
{
    kLog.Log(3, "RegisterEndPointofService({})", m_dataType);
    using Paths = PorticoClientIF::Paths;
    // Notifications tell only changes, so the state is asked for each time the resource becomes
    // ready.
    m_client->RegisterEndpointsOfInterest(
        {m_stateEndpoint},
        AsyncCallback<Paths>([this](const Paths&) { HandleDataCollectionServiceAvailable(); },
                             m_task),
        AsyncCallback<Paths>([this](const Paths&) { HandleDataCollectionServiceUnavailable(); },
                             m_task));
    m_client->RegisterNotification(
        m_stateEndpoint,
        AsyncCallback<State>([this](const State& state) { DataCollectionStateCb(state); }, m_task),
        Portico::EndpointScope::kLocal, kVersion);
}

void DataCollectionPTClient::HandleDataCollectionServiceAvailable()
{
    kLog.Log(3, "HandleDataCollectionServiceAvailable({})", m_dataType);
    m_client->SendGet(
        m_stateEndpoint,
        AsyncCallback<State>([this](const State& state) { DataCollectionStateCb(state); }, m_task),
        AsyncCallback<Portico::Error>(
            [this](const Portico::Error& error) { HandleStateFailure(error.message()); }, m_task),
        kVersion);
}

void DataCollectionPTClient::HandleDataCollectionServiceUnavailable()
{
    SetState(State::DATACOLLECTION_DISABLE);
    kLog.Put(1, "PorticoClient - RegisterEndpointsOfInterest not ready");
}

void DataCollectionPTClient::HandleStateFailure(const std::string& why)
{
    // A state that cannot be read must not lose events: each one still reports its own failure.
    SetState(State::DATACOLLECTION_ENABLE);
    kLog.Log(1, "Get State Failure: ({}), Setting DataCollectionService State to Enable", why);
    SendEnabledNotification();
}

bool DataCollectionPTClient::SendData(const MessagePtr& message, const std::string& type)
{
    return SendData(message, type, LogDelivery(kLog, type));
}

bool DataCollectionPTClient::SendData(const MessagePtr& message, const std::string& type,
                                      const Callback<bool>& callback)
{
    if (!IsDataCollectionServiceUp()) {
        kLog.Put(4,
                 "DataCollectionPTClient:SendData DataCollectionServiceUp is false, event not "
                 "sent.");
        return false;
    }
    kLog.Put(4, "SendData DataCollectionServiceUp is true.");
    const Event event = BuildData(message, type);
    kLog.Log(4, "Protobuf Client data: {}", event.DebugString());
    if (!IsComplete(event)) {
        kLog.Put(4, "SendData badly formatted event, event not sent.");
        return false;
    }
    const auto report = [callback](bool delivered) {
        if (callback) {
            callback(delivered);
        }
    };
    m_client->SendPost(m_endpoint, event,
                       AsyncCallback<EventStatus>(
                           [report](const EventStatus& status) {
                               kLog.Log(4, "PTClient Client callback delivery status: {}",
                                        status.delivered() ? "success" : "failed");
                               report(status.delivered());
                           },
                           m_task),
                       AsyncCallback<Portico::Error>(
                           [report](const Portico::Error& error) {
                               kLog.Log(4, "PTClient Client callback error: {}", error.message());
                               report(false);
                           },
                           m_task),
                       kVersion);
    kLog.Put(4, "SendData Event sent.");
    return true;
}

}  // namespace DataCollection
