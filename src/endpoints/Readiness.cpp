// SPDX-License-Identifier: Apache-2.0

#include "endpoints/Trellan_ServiceManager.h"
#include "orlu/Callback.h"
#include "orlu/DPrint.h"

using DeviceManagerPb::DeviceInfo;
using NetManager::Protobuf::NetworkStatus;

namespace TrellanService {

namespace {

constexpr DPrint kLog("Trellan_ServiceManager");

}  // namespace

void Trellan_ServiceManager::AssumeProduct()
{
    IL::BreakThread(
        [this] {
            NetworkStatus up;
            up.set_isprimaryup(true);
            HandleNetworkStatus(up);
            HandleSysInfo(DeviceInfo());
        },
        m_serverTask);
}

void Trellan_ServiceManager::HandleSysInfo(const DeviceInfo& information)
{
    kLog.Put(3, "HandleSysInfo");
    m_deviceInfo = information;
    if (!m_networkStatus || !m_networkStatus->isprimaryup() || m_server.IsCloudConnected()) {
        return;
    }
    StartEngine();
}

void Trellan_ServiceManager::HandleNetworkStatus(const NetworkStatus& status)
{
    kLog.Log(3, "HandleNetworkStatus: N/w status- ({})", status.DebugString());
    if (status.has_isprimaryup() && m_networkStatus &&
        m_networkStatus->isprimaryup() == status.isprimaryup()) {
        return;
    }
    m_networkStatus = status;
    if (status.isprimaryup()) {
        if (m_deviceInfo.has_serialnumber() && !m_server.IsCloudConnected()) {
            kLog.Put(3, "HandleNetworkStatus:  activated");
            StartEngine();
        }
    } else if (m_server.IsCloudConnected()) {
        m_server.setCloudConnected(false);
        kLog.Put(3, "HandleNetworkStatus:  not activated s");
    }
}

void Trellan_ServiceManager::StartEngine()
{
    // A start that failed shows in what is asked of the engine later.
    m_engine.Init(m_serverTask, m_deviceInfo);
    m_server.setCloudConnected(true);
}

}  // namespace TrellanService
