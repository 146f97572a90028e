// SPDX-License-Identifier: Apache-2.0

#include "core/Trellan_Server.h"

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "blaster/Trellan_ServiceCecIF.h"
#include "cli/Trellan_ServiceCommandLine.h"
#include "core/ServerLog.h"

namespace TrellanService {

Trellan_Server::Trellan_Server(ServerNeighboursIF& neighbours)
    : APTask("TrellanServiceThread", 0, 0, -1),
      m_cecIF(&neighbours.CecIF(this)),
      m_commandLine(&neighbours.CommandLine()),
      m_cloudConnectTimer(APTimer::Create(this, "UEI Cloud Connect Timer")),
      m_neighbours(neighbours)
{
}

Trellan_Server::~Trellan_Server()
{
    kServerLog.Put(1, __PRETTY_FUNCTION__);
    m_cloudConnectTimer->Shutdown();
    // The router and the callback that it reports its loss to hold each other.
    if (m_router) {
        m_router->Disconnect();
    }
}

void Trellan_Server::OnEntry()
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    m_listener = IL::CreateServerListener("TrellanServiceListener", this);
    const AsyncCallback<APServerSocketListenerIF::SocketPtr> accept(
        [this](const APServerSocketListenerIF::SocketPtr& socket) { AcceptClient(socket); }, this);
    InitializeTRS();
    m_commandLine->Initialize(this);
    m_cecIF->Initialize();
    m_neighbours.BlasterProxy(this).Initialize();
    const Network::Address address = IPCDirectory::Get().Lookup("TrellanService");
    // Last: the first request already needs the proxy with its task. A failure is only logged,
    // because local API and console work without a client.
    if (!m_listener->Serve(address, accept)) {
        kServerLog.Put(1, "TrellanServer serve failed.");
    }
}

void Trellan_Server::InitializeTRS()
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    m_cloudConnected = false;
}

void Trellan_Server::AcceptClient(const APServerSocketListenerIF::SocketPtr& socket)
{
    kServerLog.Put(4, __PRETTY_FUNCTION__);
    const std::string peer = socket->GetPeer().ToString();
    kServerLog.Log(3, "Connection from |{}|", peer);
    // One client at a time: the controller that connects last replaces the one before.
    if (m_router) {
        m_router->Disconnect();
    }
    m_router = IPCMessageRouterFactory::CreateRouter("TrellanServerRouter_" + peer, this, nullptr);
    // A loss of the earlier connection may still be queued here; it must not end this one.
    const AsyncCallback<> disconnected(
        [this, router = m_router] {
            if (router == m_router) {
                HandleDisconnect();
            }
        },
        this);
    m_router->Connect(socket, disconnected);
    // Nothing is read before this function returns, so no message misses its handler.
    AddHandlers(m_router);
}

void Trellan_Server::HandleDisconnect()
{
    kServerLog.Put(3, "the client connection has been disconnected.");
    // A key that the client held stays held until a client sends the end press.
    m_router.reset();
}

}  // namespace TrellanService
