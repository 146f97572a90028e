// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "core/House.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

House& TheHouse()
{
    static House house;
    return house;
}

}  // namespace

Trellan_ServiceManager& Trellan_ServiceManager::GetInstance()
{
    return TheHouse().Manager();
}

Trellan_Server& Trellan_Server::GetInstance(const std::string&)
{
    return TheHouse().Server();
}

Trellan_Server& Trellan_Server::GetInstance()
{
    return GetInstance("127.0.0.1");
}

Trellan_ServiceCodesetHandler& Trellan_ServiceCodesetHandler::getInstance()
{
    return TheHouse().CodesetHandler();
}

Trellan_ServiceKeyHandler& Trellan_ServiceKeyHandler::getInstance()
{
    return TheHouse().KeyHandler();
}

Trellan_ServiceBlasterProxy& Trellan_ServiceBlasterProxy::getInstance(NotifyTargetTaskIF* task)
{
    return TheHouse().BlasterProxy(task);
}

Trellan_ServiceCecIF& Trellan_ServiceCecIF::GetInstance(Trellan_Server* server)
{
    return TheHouse().CecIF(server);
}

Trellan_ServiceCommandLine& Trellan_ServiceCommandLine::GetInstance()
{
    return TheHouse().CommandLine();
}

}  // namespace TrellanService
