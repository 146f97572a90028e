// SPDX-License-Identifier: Apache-2.0

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "core/ServerLog.h"
#include "core/Trellan_Server.h"

namespace TrellanService {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

namespace {

constexpr std::uint32_t kCloudConnectPeriodMs = 1000;

}  // namespace

void Trellan_Server::setCloudConnected(bool connected)
{
    if (connected) {
        kServerLog.Put(3, "Wait for UEI cloud to resolve host names");
        // Host names may not resolve as soon as the network is up, so the first try comes a second
        // later.
        m_cloudConnectTimer->SetTimeouts(kCloudConnectPeriodMs, kCloudConnectPeriodMs);
        m_cloudConnectTimer->Start([this] { TickCloudConnect(); });
        return;
    }
    kServerLog.Put(3, "UEI cloud is not connected");
    m_cloudConnectTimer->Stop();
    m_cloudConnected = false;
    NotifyCloudConnection();
}

void Trellan_Server::TickCloudConnect()
{
    Trellan_ServiceCodesetHandler& codesets = m_neighbours.CodesetHandler();
    // Beginning the sync tests the connection; if that fails, the next tick tries again. Without a
    // sync to begin, the cloud counts as connected without a test.
    if (codesets.GetSendKeyState() == SendKeySyncPending && !codesets.syncCodesets()) {
        return;
    }
    kServerLog.Put(3, "UEI cloud is connected");
    m_cloudConnected = true;
    m_cloudConnectTimer->Stop();
    NotifyCloudConnection();
}

void Trellan_Server::NotifyCloudConnection()
{
    if (!m_router) {
        // Not kept for the next client, which can ask for the state.
        kServerLog.Put(2, "Trellan_Server is not connected ");
        return;
    }
    kServerLog.Put(3, "Notify the current UEI Cloud Connect status");
    CloudConnectState_t state;
    state.set_connectstate(m_cloudConnected);
    m_router->SendMessage(TrellanService_MESSAGE_ID_CLOUD_CONNECTION_CHANGED, state);
}

void Trellan_Server::NotifyState(std::uint32_t state)
{
    if (!m_router) {
        kServerLog.Put(2, "Trellan_Server is not connected");
        return;
    }
    State message;
    message.set_state(static_cast<TrellanService_State>(state));
    m_router->SendMessage(TrellanService_MESSAGE_ID_STATE_CHANGED, message);
}

void Trellan_Server::NotifyBlasterSyncComplete(bool done)
{
    if (!m_router) {
        kServerLog.Put(2, "Trellan_Server is not connected ");
        return;
    }
    kServerLog.Put(3, "Notify the blaster sync is complete");
    BlasterSync_t sync;
    sync.set_syncstate(done);
    m_router->SendMessage(TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE, sync);
}

}  // namespace TrellanService
