// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "core/CompositionRoot.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

CompositionRoot& Root()
{
    static CompositionRoot root;
    return root;
}

}  // namespace

Trellan_ServiceManager& Trellan_ServiceManager::GetInstance()
{
    return Root().Manager();
}

Trellan_Server& Trellan_Server::GetInstance(const std::string&)
{
    return Root().Server();
}

Trellan_Server& Trellan_Server::GetInstance()
{
    return GetInstance("127.0.0.1");
}

Trellan_ServiceCodesetHandler& Trellan_ServiceCodesetHandler::getInstance()
{
    return Root().CodesetHandler();
}

Trellan_ServiceKeyHandler& Trellan_ServiceKeyHandler::getInstance()
{
    return Root().KeyHandler();
}

Trellan_ServiceBlasterProxy& Trellan_ServiceBlasterProxy::getInstance(NotifyTargetTaskIF* task)
{
    return Root().BlasterProxy(task);
}

Trellan_ServiceCecIF& Trellan_ServiceCecIF::GetInstance(Trellan_Server* server)
{
    return Root().CecIF(server);
}

Trellan_ServiceCommandLine& Trellan_ServiceCommandLine::GetInstance()
{
    return Root().CommandLine();
}

}  // namespace TrellanService
