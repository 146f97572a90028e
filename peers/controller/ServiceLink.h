// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "orlu/IPCMessageRouter.h"
#include "orlu/Runtime.h"
#include "orlu/Timer.h"

namespace Controller {

/// The IPC name of a controller that relays for others.
inline constexpr const char* kRelayName = "ProductController";
inline constexpr const char* kServiceName = "TrellanService";

/// One connection to the service: through the relay of a controller that is connected already, else
/// directly. The service serves one client only, and a second client would replace the first. On
/// one task.
class ServiceLink {
public:
    struct Handlers {
        std::function<void()> opened;
        /// Neither a relay nor the service answered in time.
        std::function<void()> unreachable;
        /// The open connection was lost.
        std::function<void()> lost;
        /// Each event of the service.
        std::function<void(const IPCMessageEnvelope&)> event;
    };

    ServiceLink(NotifyTargetTaskIF* task, Handlers handlers);

    /// Tries for `timeout`, then calls `opened` or `unreachable` once. May be called again after
    /// `lost` or `unreachable`.
    void Open(std::chrono::milliseconds timeout);

    /// No handler is called after this.
    void Close();

    /// Whether the connection goes through another controller.
    bool IsRelayed() const { return m_relayed; }
    /// For requests and events to the service; the same router for every connection.
    const IPCMessageRouterPtr& Router() const { return m_router; }

private:
    // One round of attempts: the relay, then the service, then a pause.
    void TryRelay();
    void TryService();
    void TryAgain();
    void Take(const Orlu::SocketPtr& socket, bool relayed);
    /// `done` gets the socket, or an empty pointer, as work of its own on the task.
    void Attempt(const char* name, std::function<void(Orlu::SocketPtr)> done);

    NotifyTargetTaskIF* m_task;
    Handlers m_handlers;
    IPCMessageRouterPtr m_router;
    std::shared_ptr<APTimer> m_retryTimer;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
    Orlu::MonotonicMs m_giveUp{0};
    bool m_relayed = false;
};

}  // namespace Controller
