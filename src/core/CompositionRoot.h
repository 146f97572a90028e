// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "blaster/UEIResponsesIF.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/BlasterSyncIF.h"
#include "codesets/CodesetServerIF.h"
#include "core/Trellan_Server.h"
#include "endpoints/Trellan_ServiceManager.h"
#include "uei/UEIInterface.h"

namespace TrellanService {

/// Owns the service's single instances, builds each at its first use and gives each its neighbours.
/// It implements the interfaces of the lower modules on behalf of the server task and of the
/// engine, whose base classes are fixed. The process has one root, which lives until it ends; a
/// test builds as many as it needs.
class CompositionRoot final : public ServerNeighboursIF,
                              public ManagerNeighboursIF,
                              public CommandLineNeighboursIF,
                              public UEINeighboursIF,
                              public CodesetServerIF,
                              public BlasterSyncIF,
                              public UEIResponsesIF {
public:
    CompositionRoot();
    ~CompositionRoot() override;
    CompositionRoot(const CompositionRoot&) = delete;
    CompositionRoot& operator=(const CompositionRoot&) = delete;

    Trellan_ServiceManager& Manager() override;
    Trellan_Server& Server();
    Trellan_ServiceCodesetHandler& CodesetHandler() override;
    UEIInterface& Engine() override { return *m_engine; }
    Trellan_ServiceKeyHandler& KeyHandler() override;
    /// The task counts at the first call only.
    Trellan_ServiceBlasterProxy& BlasterProxy(NotifyTargetTaskIF* task) override;
    Trellan_ServiceBlasterProxy& BlasterProxy() override { return BlasterProxy(nullptr); }
    /// The server counts at the first call only.
    Trellan_ServiceCecIF& CecIF(Trellan_Server* server) override;
    Trellan_ServiceCommandLine& CommandLine() override;

private:
    // On behalf of the server task.
    NotifyTargetTaskIF& ServerTask() override { return Server(); }
    APTask& GetServerTask(const std::string& /*address*/) override { return Server(); }
    bool IsCloudConnected() override { return Server().IsCloudConnected(); }
    void setCloudConnected(bool connected) override { Server().setCloudConnected(connected); }
    void NotifyState(std::uint32_t state) override { Server().NotifyState(state); }
    void NotifyBlasterSyncComplete(bool done) override;

    // On behalf of the manager.
    std::string StagingDirectory() override { return Manager().StagingDirectory(); }
    std::string BrandListFileName() override { return Manager().BrandListFileName(); }

    // On behalf of the key handler; nothing if it was not built yet.
    void EndBurst() override;

    // On behalf of the engine.
    bool TestConnection() override { return m_engine->TestConnection(); }
    void LoadCodeset(const std::string& name,
                     const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                     std::uint32_t kind) override;
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response) override;
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response) override;

    // On behalf of the blaster proxy.
    void ResetBlaster(const AsyncCallback<std::string>& callback) override;
    void GetBlasterKeyMap(const std::string& name,
                          const AsyncCallback<std::string>& callback) override;
    NotifyTargetTaskIF* BlasterTask() override;

    // First, so destroyed last: its destructor waits for a command whose callback any of the others
    // may hold.
    std::unique_ptr<Trellan_ServiceCommandLine> m_commandLine;
    // In the order in which the process builds them, so that a later one may use an earlier one
    // until its end.
    std::unique_ptr<UEIInterface> m_engine;
    std::unique_ptr<Trellan_ServiceManager> m_manager;
    std::unique_ptr<Trellan_ServiceCecIF> m_cecIF;
    std::unique_ptr<Trellan_Server> m_server;
    std::unique_ptr<Trellan_ServiceBlasterProxy> m_blasterProxy;
    std::unique_ptr<Trellan_ServiceCodesetHandler> m_codesetHandler;
    std::unique_ptr<Trellan_ServiceKeyHandler> m_keyHandler;
};

}  // namespace TrellanService
