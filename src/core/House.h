// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "core/Trellan_Server.h"
#include "endpoints/Trellan_ServiceManager.h"

namespace TrellanService {

class UEIInterface;

/// All of the service's single instances, each built at its first use and given its neighbours. The
/// process has one house, which lives until it ends; a test builds as many as it likes.
class House {
public:
    House();
    ~House();
    House(const House&) = delete;
    House& operator=(const House&) = delete;

    Trellan_ServiceManager& Manager();
    Trellan_Server& Server();
    Trellan_ServiceCodesetHandler& CodesetHandler();
    UEIInterface& Engine() { return *m_engine; }
    Trellan_ServiceKeyHandler& KeyHandler();
    /// The task counts at the first call only.
    Trellan_ServiceBlasterProxy& BlasterProxy(NotifyTargetTaskIF* task);
    /// The server counts at the first call only.
    Trellan_ServiceCecIF& CecIF(Trellan_Server* server);
    Trellan_ServiceCommandLine& CommandLine();

    /// Ends a burst of infrared, if there has been a key at all.
    void EndBurst();

private:
    struct Adapters;

    std::unique_ptr<Adapters> m_adapters;
    // Its end waits for callbacks that any of the others may hold, so they go first.
    std::unique_ptr<Trellan_ServiceCommandLine> m_commandLine;
    // Built in the order of the process start, so the ones behind may use the ones before.
    std::unique_ptr<UEIInterface> m_engine;
    std::unique_ptr<Trellan_ServiceManager> m_manager;
    std::unique_ptr<Trellan_ServiceCecIF> m_cecIF;
    std::unique_ptr<Trellan_Server> m_server;
    std::unique_ptr<Trellan_ServiceBlasterProxy> m_blasterProxy;
    std::unique_ptr<Trellan_ServiceCodesetHandler> m_codesetHandler;
    std::unique_ptr<Trellan_ServiceKeyHandler> m_keyHandler;
};

}  // namespace TrellanService
