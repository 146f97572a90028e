// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"

namespace Controller {

/// Lets other controllers use this controller's connection, since the service serves one client
/// only. Their requests go to the service, each answer to the controller that asked, events to all.
class Relay {
public:
    using OnAnswer = std::function<void(const IPCMessageEnvelope&)>;

    /// `service` is the connection. `answered` is called with each answer of the service.
    Relay(NotifyTargetTaskIF* task, IPCMessageRouterPtr service, OnAnswer answered);

    /// False if the relay cannot listen; the controller works without it.
    bool Serve();

    void Event(const IPCMessageEnvelope& envelope);

private:
    void Accept(const Orlu::SocketPtr& socket);
    void Leave(const std::weak_ptr<IPCMessageRouterIF>& client);
    void PassOn(const std::weak_ptr<IPCMessageRouterIF>& client,
                const IPCMessageEnvelope& envelope);

    NotifyTargetTaskIF* m_task;
    IPCMessageRouterPtr m_service;
    OnAnswer m_answered;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::vector<IPCMessageRouterPtr> m_clients;
};

}  // namespace Controller
