// SPDX-License-Identifier: Apache-2.0

#include "core/CompositionRoot.h"

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

CompositionRoot::CompositionRoot() : m_engine(std::make_unique<UEIInterface>(*this)) {}

CompositionRoot::~CompositionRoot() = default;

Trellan_ServiceManager& CompositionRoot::Manager()
{
    if (!m_manager) {
        m_manager = std::make_unique<Trellan_ServiceManager>(*this);
    }
    return *m_manager;
}

Trellan_Server& CompositionRoot::Server()
{
    if (!m_server) {
        // Its constructor asks for the CEC interface and the command line. Neither may ask for the
        // server in its own constructor, as `m_server` is still empty.
        m_server = std::make_unique<Trellan_Server>(*this);
    }
    return *m_server;
}

Trellan_ServiceCodesetHandler& CompositionRoot::CodesetHandler()
{
    if (!m_codesetHandler) {
        m_codesetHandler = std::make_unique<Trellan_ServiceCodesetHandler>(*this, *this);
    }
    return *m_codesetHandler;
}

Trellan_ServiceKeyHandler& CompositionRoot::KeyHandler()
{
    if (!m_keyHandler) {
        // The proxy has its task by now: the server task builds it before it serves requests.
        m_keyHandler = std::make_unique<Trellan_ServiceKeyHandler>(&BlasterProxy(),
                                                                   CodesetHandler(), &Server());
    }
    return *m_keyHandler;
}

Trellan_ServiceBlasterProxy& CompositionRoot::BlasterProxy(NotifyTargetTaskIF* task)
{
    // Logged at each call, also when the instance exists.
    Trellan_ServiceBlasterProxy::LogGetInstance();
    if (!m_blasterProxy) {
        m_blasterProxy = std::make_unique<Trellan_ServiceBlasterProxy>(task, *this);
    }
    return *m_blasterProxy;
}

Trellan_ServiceCecIF& CompositionRoot::CecIF(Trellan_Server* server)
{
    Trellan_ServiceCecIF::LogGetInstance();
    if (!m_cecIF) {
        m_cecIF = std::make_unique<Trellan_ServiceCecIF>(server, server);
    }
    m_cecIF->LogReturned();
    return *m_cecIF;
}

Trellan_ServiceCommandLine& CompositionRoot::CommandLine()
{
    if (!m_commandLine) {
        m_commandLine = std::make_unique<Trellan_ServiceCommandLine>(*this);
    }
    m_commandLine->LogReturned();
    return *m_commandLine;
}

void CompositionRoot::NotifyBlasterSyncComplete(bool done)
{
    Server().NotifyBlasterSyncComplete(done);
}

void CompositionRoot::EndBurst()
{
    // Not built here: without a key handler no key is held.
    if (m_keyHandler) {
        m_keyHandler->EndBurst();
    }
}

void CompositionRoot::LoadCodeset(
    const std::string& name, const Callback<LpmServiceMessages::BulkTransferResponse>& callback,
    std::uint32_t kind)
{
    m_engine->LoadCodeset(name, callback, kind);
}

void CompositionRoot::FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response)
{
    m_engine->FillOSMControlResp(response);
}

void CompositionRoot::FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response)
{
    m_engine->FillDirectEntryResp(response);
}

void CompositionRoot::ResetBlaster(const AsyncCallback<std::string>& callback)
{
    BlasterProxy().ResetBlaster(callback);
}

void CompositionRoot::GetBlasterKeyMap(const std::string& name,
                                       const AsyncCallback<std::string>& callback)
{
    BlasterProxy().GetBlasterKeyMap(name, callback);
}

NotifyTargetTaskIF* CompositionRoot::BlasterTask()
{
    return BlasterProxy().m_task;
}

}  // namespace TrellanService
