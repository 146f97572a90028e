// SPDX-License-Identifier: Apache-2.0

#include "core/House.h"

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "uei/UEIInterface.h"

namespace TrellanService {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

namespace {

/// The server task's neighbours are the house's own.
class ServerNeighbours : public ServerNeighboursIF {
public:
    ServerNeighbours(House& house, DeviceLookupIF& lookup) : m_house(house), m_lookup(lookup) {}

    Trellan_ServiceKeyHandler& KeyHandler() override { return m_house.KeyHandler(); }
    Trellan_ServiceCodesetHandler& CodesetHandler() override { return m_house.CodesetHandler(); }
    Trellan_ServiceBlasterProxy& BlasterProxy(NotifyTargetTaskIF* task) override
    {
        return m_house.BlasterProxy(task);
    }
    Trellan_ServiceCecIF& CecIF(Trellan_Server* server) override { return m_house.CecIF(server); }
    Trellan_ServiceCommandLine& CommandLine() override { return m_house.CommandLine(); }
    DeviceLookupIF& DeviceLookup() override { return m_lookup; }

private:
    House& m_house;
    DeviceLookupIF& m_lookup;
};

class ManagerNeighbours : public ManagerNeighboursIF {
public:
    explicit ManagerNeighbours(House& house) : m_house(house) {}
    UEIInterface& Engine() override { return m_house.Engine(); }
    Trellan_ServiceCodesetHandler& CodesetHandler() override { return m_house.CodesetHandler(); }
    APTask& GetServerTask(const std::string&) override { return m_house.Server(); }
    bool IsCloudConnected() override { return m_house.Server().IsCloudConnected(); }
    void setCloudConnected(bool connected) override
    {
        m_house.Server().setCloudConnected(connected);
    }
    void NotifyState(std::uint32_t state) override { m_house.Server().NotifyState(state); }

private:
    House& m_house;
};

/// What the code set handler asks the server task, whose bases are its own.
class CodesetServer : public CodesetServerIF {
public:
    explicit CodesetServer(House& house) : m_house(house) {}
    bool IsCloudConnected() override { return m_house.Server().IsCloudConnected(); }
    void NotifyBlasterSyncComplete(bool done) override
    {
        m_house.Server().NotifyBlasterSyncComplete(done);
    }

private:
    House& m_house;
};

/// What a sync asks of its neighbours.
class BlasterSync : public BlasterSyncIF {
public:
    explicit BlasterSync(House& house) : m_house(house) {}
    bool TestConnection() override { return m_house.Engine().TestConnection(); }
    void LoadCodeset(const std::string& name,
                     const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
                     std::uint32_t kind) override
    {
        m_house.Engine().LoadCodeset(name, callback, kind);
    }
    void ResetBlaster(const AsyncCallback<std::string>& callback) override
    {
        m_house.BlasterProxy(nullptr).ResetBlaster(callback);
    }
    void GetBlasterKeyMap(const std::string& name,
                          const AsyncCallback<std::string>& callback) override
    {
        m_house.BlasterProxy(nullptr).GetBlasterKeyMap(name, callback);
    }
    NotifyTargetTaskIF* BlasterTask() override { return m_house.BlasterProxy(nullptr).m_task; }

private:
    House& m_house;
};

class UEINeighbours : public UEINeighboursIF {
public:
    explicit UEINeighbours(House& house) : m_house(house) {}
    Trellan_ServiceCodesetHandler& CodesetHandler() override { return m_house.CodesetHandler(); }
    Trellan_ServiceBlasterProxy& BlasterProxy() override { return m_house.BlasterProxy(nullptr); }
    std::string StagingDirectory() override { return m_house.Manager().StagingDirectory(); }
    std::string BrandListFileName() override { return m_house.Manager().BrandListFileName(); }
    void EndBurst() override { m_house.EndBurst(); }

private:
    House& m_house;
};

/// Whom the engineers' commands look into.
class CommandLineNeighbours : public CommandLineNeighboursIF {
public:
    explicit CommandLineNeighbours(House& house) : m_house(house) {}
    NotifyTargetTaskIF& ServerTask() override { return m_house.Server(); }
    Trellan_ServiceKeyHandler& KeyHandler() override { return m_house.KeyHandler(); }
    Trellan_ServiceCodesetHandler& CodesetHandler() override { return m_house.CodesetHandler(); }
    Trellan_ServiceBlasterProxy& BlasterProxy() override { return m_house.BlasterProxy(nullptr); }
    UEIInterface& Engine() override { return m_house.Engine(); }
    Trellan_ServiceManager& Manager() override { return m_house.Manager(); }

private:
    House& m_house;
};

/// What the server task and the blaster's proxy ask of the engine.
class EngineAnswers : public DeviceLookupIF, public UEIResponsesIF {
public:
    explicit EngineAnswers(House& house) : m_house(house) {}
    void FindCECDevice(const FindCECDevice_t& request,
                       const AsyncCallback<FindCECDevice_t>& callback) override
    {
        m_house.Engine().FindCECDevice(request, callback);
    }
    void FindEDIDDevice(const FindEDIDDevice_t& request,
                        const AsyncCallback<FindEDIDDevice_t>& callback) override
    {
        m_house.Engine().FindEDIDDevice(request, callback);
    }
    void DirectEntryBrandModel(const DirectEntryReq_t& request, bool load,
                               const AsyncCallback<DirectEntryResp_t>& callback) override
    {
        m_house.Engine().DirectEntryBrandModel(request, load, callback);
    }
    void FillOSMControlResp(OSMControlResp_t& response) override
    {
        m_house.Engine().FillOSMControlResp(response);
    }
    void FillDirectEntryResp(DirectEntryResp_t& response) override
    {
        m_house.Engine().FillDirectEntryResp(response);
    }

private:
    House& m_house;
};

}  // namespace

struct House::Adapters {
    explicit Adapters(House& house)
        : ueiNeighbours(house),
          engine(house),
          neighbours(house, engine),
          managerNeighbours(house),
          codesetServer(house),
          blasterSync(house),
          commandLineNeighbours(house)
    {
    }

    UEINeighbours ueiNeighbours;
    EngineAnswers engine;
    ServerNeighbours neighbours;
    ManagerNeighbours managerNeighbours;
    CodesetServer codesetServer;
    BlasterSync blasterSync;
    CommandLineNeighbours commandLineNeighbours;
};

House::House()
    : m_adapters(std::make_unique<Adapters>(*this)),
      m_engine(std::make_unique<UEIInterface>(m_adapters->ueiNeighbours))
{
}

House::~House() = default;

Trellan_ServiceManager& House::Manager()
{
    if (!m_manager) {
        m_manager = std::make_unique<Trellan_ServiceManager>(m_adapters->managerNeighbours);
    }
    return *m_manager;
}

Trellan_Server& House::Server()
{
    if (!m_server) {
        m_server = std::make_unique<Trellan_Server>(m_adapters->neighbours);
    }
    return *m_server;
}

Trellan_ServiceCodesetHandler& House::CodesetHandler()
{
    if (!m_codesetHandler) {
        m_codesetHandler = std::make_unique<Trellan_ServiceCodesetHandler>(
            m_adapters->codesetServer, m_adapters->blasterSync);
    }
    return *m_codesetHandler;
}

Trellan_ServiceKeyHandler& House::KeyHandler()
{
    if (!m_keyHandler) {
        m_keyHandler = std::make_unique<Trellan_ServiceKeyHandler>(&BlasterProxy(nullptr),
                                                                   CodesetHandler(), &Server());
    }
    return *m_keyHandler;
}

void House::EndBurst()
{
    if (m_keyHandler) {
        m_keyHandler->EndBurst();
    }
}

Trellan_ServiceBlasterProxy& House::BlasterProxy(NotifyTargetTaskIF* task)
{
    Trellan_ServiceBlasterProxy::LogGetInstance();
    if (!m_blasterProxy) {
        m_blasterProxy = std::make_unique<Trellan_ServiceBlasterProxy>(task, m_adapters->engine);
    }
    return *m_blasterProxy;
}

Trellan_ServiceCecIF& House::CecIF(Trellan_Server* server)
{
    Trellan_ServiceCecIF::LogGetInstance();
    if (!m_cecIF) {
        m_cecIF = std::make_unique<Trellan_ServiceCecIF>(server, server);
    }
    m_cecIF->LogReturned();
    return *m_cecIF;
}

Trellan_ServiceCommandLine& House::CommandLine()
{
    if (!m_commandLine) {
        m_commandLine =
            std::make_unique<Trellan_ServiceCommandLine>(m_adapters->commandLineNeighbours);
    }
    m_commandLine->LogReturned();
    return *m_commandLine;
}

}  // namespace TrellanService
