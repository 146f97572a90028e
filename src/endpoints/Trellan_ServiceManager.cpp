// SPDX-License-Identifier: Apache-2.0

#include "endpoints/Trellan_ServiceManager.h"

namespace TrellanService {

bool Trellan_ServiceManager::CreateAllTasks()
{
    return CreateAllTasks("localhost");
}

bool Trellan_ServiceManager::CreateAllTasks(const std::string& address)
{
    m_serverTask = &m_server.GetServerTask(address);
    AddTask(m_serverTask);
    return true;
}

}  // namespace TrellanService
