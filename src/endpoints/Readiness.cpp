// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/PayloadCfg.pb.h"
#include "endpoints/ManagerLog.h"
#include "endpoints/Resources.h"
#include "endpoints/Trellan_ServiceManager.h"
#include "uei/UEIInterface.h"

using DeviceManagerPb::DeviceInfo;
using NetManager::Protobuf::NetworkStatus;
using Paths = PorticoClientIF::Paths;

namespace TrellanService {

namespace {

constexpr double kVersion = 1.0;
constexpr double kStagingVersion = 2.0;

}  // namespace

void Trellan_ServiceManager::RegisterForProduct()
{
    m_porticoClient->RegisterEndpointsOfInterest(
        {kSystemInfoResource},
        {[this](const Paths& paths) { RequestSystemInfo(paths); }, m_serverTask}, {});
    m_porticoClient->RegisterEndpointsOfInterest(
        {kStagingResource}, {[this](const Paths& paths) { RequestStaging(paths); }, m_serverTask},
        {});
}

void Trellan_ServiceManager::RequestSystemInfo(const Paths& paths)
{
    // Asked at each readiness: a product that restarts may have other values.
    if (paths.empty()) {
        kManagerLog.Put(1, "Endpoint not ready");
        return;
    }
    kManagerLog.Log(3, "Registering for {}", kSystemInfoResource);
    m_porticoClient->SendGet<DeviceInfo>(
        kSystemInfoResource,
        {[this](const DeviceInfo& information) { HandleSysInfo(information); }, m_serverTask},
        {[](const Portico::Error& error) {
             kManagerLog.Log(1, "Error {} {} while retrieving system info", error.code(),
                             error.subcode());
         },
         m_serverTask},
        kVersion);
}

void Trellan_ServiceManager::RequestStaging(const Paths& paths)
{
    if (paths.empty()) {
        kManagerLog.Put(1, "Payload endpoint not ready");
        return;
    }
    kManagerLog.Log(3, "Registering for {}", kStagingResource);
    m_porticoClient->SendGet<Portico::PayloadCfg>(
        kStagingResource,
        {[this](const Portico::PayloadCfg& config) {
             m_stagingDirectory = config.stagingdirectory();
             kManagerLog.Log(3, "staging directory {}", m_stagingDirectory);
         },
         m_serverTask},
        {[](const Portico::Error& error) {
             kManagerLog.Log(1, "PayloadCfg Error {} {}", error.code(), error.subcode());
         },
         m_serverTask},
        kStagingVersion);
}

void Trellan_ServiceManager::RegisterForNetworkServiceReadiness()
{
    kManagerLog.Put(3, "RegisterForNetworkServiceReadiness");
    m_porticoClient->RegisterEndpointsOfInterest(
        {kNetworkResource},
        {[this](const Paths&) {
             kManagerLog.Put(3, "HandleNetworkCapabilityReady");
             HandleNetworkModuleReady(true);
         },
         m_serverTask},
        {[this](const Paths&) {
             kManagerLog.Put(3, "HandleNetworkCapabilityNotReady");
             HandleNetworkModuleReady(false);
         },
         m_serverTask});
}

void Trellan_ServiceManager::HandleNetworkModuleReady(bool ready)
{
    kManagerLog.Log(3, "HandleNetworkModuleReady: networkModuleReady={:d}", ready);
    m_networkModuleReady = ready;
    if (!ready) {
        return;
    }
    const AsyncCallback<NetworkStatus> statusArrived(
        [this](const NetworkStatus& status) { HandleNetworkStatus(status); }, m_serverTask);
    const AsyncCallback<Portico::Error> failed(
        [](const Portico::Error& error) {
            kManagerLog.Log(1, "operator(): Error = ({}-{}) {}", error.code(), error.subcode(),
                            error.message());
        },
        m_serverTask);
    // Registered at each readiness; a later registration replaces the earlier one. Notifications
    // tell only changes, so the current status is asked for as well.
    m_porticoClient->RegisterNotification(kNetworkResource, statusArrived,
                                          Portico::EndpointScope::kLocal, kVersion);
    m_networkStatusRequest =
        m_porticoClient->SendGet(kNetworkResource, statusArrived, failed, kVersion);
}

void Trellan_ServiceManager::HandleSysInfo(const DeviceInfo& information)
{
    kManagerLog.Put(3, "HandleSysInfo");
    m_deviceInfo = information;
    // Engine start needs product and network. What is missing here starts the engine when it
    // arrives.
    if (!m_networkStatus || !m_networkStatus->isprimaryup() || m_neighbours.IsCloudConnected()) {
        return;
    }
    StartEngine();
}

void Trellan_ServiceManager::HandleNetworkStatus(const NetworkStatus& status)
{
    kManagerLog.Log(3, "HandleNetworkStatus: N/w status- ({})", status.DebugString());
    // A repeated status must not start the engine again, which would end its session.
    if (status.has_isprimaryup() && m_networkStatus &&
        m_networkStatus->isprimaryup() == status.isprimaryup()) {
        return;
    }
    m_networkStatus = status;
    if (status.isprimaryup()) {
        if (m_deviceInfo.has_serialnumber() && !m_neighbours.IsCloudConnected()) {
            kManagerLog.Put(3, "HandleNetworkStatus:  activated");
            StartEngine();
        }
    } else if (m_neighbours.IsCloudConnected()) {
        m_neighbours.setCloudConnected(false);
        kManagerLog.Put(3, "HandleNetworkStatus:  not activated s");
    }
}

void Trellan_ServiceManager::StartEngine()
{
    // A failed start is not handled here: every later call to the engine fails with a log line.
    m_neighbours.Engine().Init(m_serverTask, m_deviceInfo);
    m_neighbours.setCloudConnected(true);
}

}  // namespace TrellanService
