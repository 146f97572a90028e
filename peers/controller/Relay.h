// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"

namespace Controller {

/// Lets other controllers use this one's connection, as the service serves one client only: their
/// requests go on to the service, the answers come back to the asker, the events go to all.
class Relay {
public:
    using Seen = std::function<void(const IPCMessageEnvelope&)>;

    /// `service` is the connection; `answered` sees each answer that passes.
    Relay(NotifyTargetTaskIF* task, IPCMessageRouterPtr service, Seen answered);

    /// False if nobody can be let through; the controller works without.
    bool Serve();

    void Event(const IPCMessageEnvelope& envelope);

private:
    void Accept(const Orlu::SocketPtr& socket);
    void Leave(const std::weak_ptr<IPCMessageRouterIF>& client);
    void PassOn(const std::weak_ptr<IPCMessageRouterIF>& client,
                const IPCMessageEnvelope& envelope);

    NotifyTargetTaskIF* m_task;
    IPCMessageRouterPtr m_service;
    Seen m_answered;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::vector<IPCMessageRouterPtr> m_clients;
};

}  // namespace Controller
