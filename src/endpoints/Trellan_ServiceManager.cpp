// SPDX-License-Identifier: Apache-2.0

#include "endpoints/Trellan_ServiceManager.h"

#include <json/value.h>

#include "datacollection/DataCollectionService.h"
#include "endpoints/ManagerLog.h"
#include "endpoints/Resources.h"
#include "portico/PorticoClient.h"
#include "uei/UEIInterface.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint16_t kPorticoPort = 8084;
constexpr double kVersion = 1.0;
constexpr int kNumber = 0;
constexpr std::uint32_t kOnlineKind = 2;

}  // namespace

Trellan_ServiceManager::Trellan_ServiceManager(ManagerNeighboursIF& neighbours)
    : m_porticoClient(PorticoClient::Create("TrellanService", "localhost", kPorticoPort, "meridia",
                                            "", {}, {}, Portico::CommonClientCreationInfo())),
      m_neighbours(neighbours)
{
}

bool Trellan_ServiceManager::CreateAllTasks()
{
    return CreateAllTasks("localhost");
}

bool Trellan_ServiceManager::CreateAllTasks(const std::string& address)
{
    m_serverTask = &m_neighbours.GetServerTask(address);
    AddTask(m_serverTask);
    // The first registration decides where the link to the local API runs: on the server task, so
    // that a request needs no change of thread.
    RegisterResources();
    RegisterForProduct();
    // On the first thread, but before the task starts, so nothing runs at the same time.
    m_osmTimer = APTimer::Create(m_serverTask, "OSMTimer");
    m_dataCollection = DataCollection::CreateUDCService(m_serverTask, nullptr);
    RegisterForNetworkServiceReadiness();
    return true;
}

void Trellan_ServiceManager::RegisterResources()
{
    using OnError = PorticoClientIF::OnError;
    constexpr auto kScope = Portico::EndpointScope::kLocal;
    m_porticoClient->RegisterGet<OSMControlResp_t>(
        kControlResource,
        {[this](const OSMAnswer& answer, const OnError&) { HandleTRGet(answer); }, m_serverTask},
        kScope, kVersion, kResourceLabel, kNumber);
    m_porticoClient->RegisterPut<OSMControlMsg_t, OSMControlResp_t>(
        kControlResource,
        {[this](const OSMControlMsg_t& message, const OSMAnswer& answer, const OnError&) {
             HandleTRPut(message, answer);
         },
         m_serverTask},
        kScope, kVersion, kResourceLabel, kNumber);
    m_porticoClient->RegisterPost<BrandListReq_t, Portico::PayloadPublishResponse>(
        kBrandListResource,
        {[this](const BrandListReq_t& request, const PublishAnswer& answer, const OnError&) {
             HandleBrandListPost(request, answer);
         },
         m_serverTask},
        kScope, kVersion, kResourceLabel, kNumber);
    m_porticoClient->RegisterPut<DirectEntryReq_t, DirectEntryResp_t>(
        kDirectEntryResource,
        {[this](const DirectEntryReq_t& request, const DirectEntryAnswer& answer, const OnError&) {
             HandleDirectEntryPut(request, answer);
         },
         m_serverTask},
        kScope, kVersion, kResourceLabel, kNumber);
}

void Trellan_ServiceManager::GetTRDatabaseVer(const AsyncCallback<std::string>& callback)
{
    Json::Value version;
    if (m_neighbours.Engine().GetVersion(version, kOnlineKind) != 0) {
        callback("Get version error");
        return;
    }
    const std::string text = version["TRVersion"].asString();
    kManagerLog.Log(3, "DB version {}", text);
    callback(text);
}

}  // namespace TrellanService
