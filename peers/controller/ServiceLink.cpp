// SPDX-License-Identifier: Apache-2.0

#include "controller/ServiceLink.h"

#include <utility>

#include "controller/Messages.h"
#include "orlu/Network.h"

namespace Controller {

namespace {

constexpr std::uint32_t kRetryMs = 200;

}  // namespace

ServiceLink::ServiceLink(NotifyTargetTaskIF* task, Handlers handlers)
    : m_task(task),
      m_handlers(std::move(handlers)),
      m_router(IPCMessageRouterFactory::CreateRouter("ProductController", task, nullptr)),
      m_retryTimer(APTimer::Create(task, "ProductController retry"))
{
    m_retryTimer->SetTimeouts(kRetryMs, 0);
    for (const auto& kind : MessageKinds()) {
        if (kind.direction == Direction::kFromService) {
            m_router->AddHandler(kind.id, IPCMessageRouterIF::EnvelopeHandler(m_handlers.event));
        }
    }
}

void ServiceLink::Open(std::chrono::milliseconds timeout)
{
    m_giveUp = Orlu::Runtime().Now() + timeout;
    TryRelay();
}

void ServiceLink::Close()
{
    m_retryTimer->Shutdown();
    m_attempt.reset();
    m_router->Disconnect();
}

void ServiceLink::Attempt(const char* name, std::function<void(Orlu::SocketPtr)> done)
{
    // Queued: `done` may start the next attempt, which must not destroy the one that reports.
    m_attempt = Orlu::Runtime().Transport().Connect(
        IPCDirectory::Get().Lookup(name).Path(), m_task->Queue(),
        [this, done = std::move(done)](const Orlu::SocketPtr& socket) {
            m_task->QueueNotificationNonBlocking([done, socket] { done(socket); });
        });
}

void ServiceLink::TryRelay()
{
    Attempt(kRelayName, [this](const Orlu::SocketPtr& socket) {
        if (socket) {
            Take(socket, true);
        } else {
            TryService();
        }
    });
}

void ServiceLink::TryService()
{
    Attempt(kServiceName, [this](const Orlu::SocketPtr& socket) {
        if (socket) {
            Take(socket, false);
        } else {
            TryAgain();
        }
    });
}

void ServiceLink::TryAgain()
{
    if (Orlu::Runtime().Now() >= m_giveUp) {
        m_handlers.unreachable();
        return;
    }
    m_retryTimer->Start([this] { TryRelay(); });
}

void ServiceLink::Take(const Orlu::SocketPtr& socket, bool relayed)
{
    m_attempt.reset();
    m_relayed = relayed;
    m_router->Connect(socket, m_handlers.lost);
    m_handlers.opened();
}

}  // namespace Controller
