// SPDX-License-Identifier: Apache-2.0

#include "controller/Relay.h"

#include <utility>

#include "controller/Messages.h"
#include "controller/ServiceLink.h"

namespace Controller {

Relay::Relay(NotifyTargetTaskIF* task, IPCMessageRouterPtr service, OnAnswer answered)
    : m_task(task),
      m_service(std::move(service)),
      m_answered(std::move(answered)),
      m_listener(IL::CreateServerListener("ProductControllerListener", task))
{
}

bool Relay::Serve()
{
    const AsyncCallback<Orlu::SocketPtr> accepted(
        [this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task);
    return static_cast<bool>(m_listener->Serve(IPCDirectory::Get().Lookup(kRelayName), accepted));
}

void Relay::Accept(const Orlu::SocketPtr& socket)
{
    const auto client = IPCMessageRouterFactory::CreateRouter(
        "ProductControllerRouter_" + socket->GetPeer().ToString(), m_task, nullptr);
    const std::weak_ptr<IPCMessageRouterIF> weak = client;
    m_clients.push_back(client);
    for (const auto& kind : MessageKinds()) {
        if (kind.direction != Direction::kFromService) {
            client->AddHandler(kind.id, IPCMessageRouterIF::EnvelopeHandler(
                                            [this, weak](const IPCMessageEnvelope& envelope) {
                                                PassOn(weak, envelope);
                                            }));
        }
    }
    // Queued: a router must not be destroyed in its own call.
    client->Connect(socket, [this, weak] {
        m_task->QueueNotificationNonBlocking([this, weak] { Leave(weak); });
    });
}

void Relay::Leave(const std::weak_ptr<IPCMessageRouterIF>& client)
{
    std::erase(m_clients, client.lock());
}

void Relay::PassOn(const std::weak_ptr<IPCMessageRouterIF>& client,
                   const IPCMessageEnvelope& envelope)
{
    // Token 0: the message expects no answer.
    if (envelope.token() == 0) {
        m_service->Send(envelope.id(), envelope);
        return;
    }
    m_service->SendRequest(
        envelope.id(), envelope,
        [this, client, token = envelope.token()](const IPCMessageEnvelope& reply) {
            m_answered(reply);
            // The client's own token: the request to the service had another one.
            if (const auto asker = client.lock()) {
                asker->Reply(reply.id(), reply, token);
            }
        });
}

void Relay::Event(const IPCMessageEnvelope& envelope)
{
    for (const auto& client : m_clients) {
        client->Send(envelope.id(), envelope);
    }
}

}  // namespace Controller
