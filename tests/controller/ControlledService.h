// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controller/Messages.h"
#include "controller/ServiceLink.h"
#include "orlu/Network.h"
#include "support/Effects.h"

namespace Controller {

/// The service's side: records each message with its time, and answers with the same message, or
/// not.
class Service {
public:
    explicit Service(Effects& effects) : m_effects(effects)
    {
        m_listener->Serve(
            IPCDirectory::Get().Lookup(kServiceName),
            {[this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task.get()});
    }

    void Run(std::function<void()> work)
    {
        IL::BreakThread(std::move(work), m_task.get());
        static_cast<VirtualRuntime&>(Orlu::Runtime()).RunUntilIdle();
    }

    void Close()
    {
        Run([this] { m_router->Disconnect(); });
    }

    void Event(std::uint32_t id, const google::protobuf::Message& message)
    {
        IPCMessageEnvelope envelope;
        SetPayload(envelope, message);
        Run([this, id, envelope] { m_router->Send(id, envelope); });
    }

    /// Sends the delayed answers, the last request first.
    void AnswerBackwards()
    {
        Run([this] {
            for (; !m_held.empty(); m_held.pop_back()) {
                m_router->Reply(m_held.back().id(), m_held.back(), m_held.back().token());
            }
        });
    }

    bool answers = true;
    int clients = 0;

private:
    void Accept(const Orlu::SocketPtr& socket)
    {
        ++clients;
        m_router = IPCMessageRouterFactory::CreateRouter("service", m_task.get(), nullptr);
        for (std::uint32_t id = 0; id <= 10; ++id) {
            m_router->AddHandler(id, IPCMessageRouterIF::EnvelopeHandler(
                                         [this](const IPCMessageEnvelope& e) { Arrived(e); }));
        }
        m_router->Connect(socket, [] {});
    }

    void Arrived(const IPCMessageEnvelope& envelope)
    {
        m_effects.Add("service " + std::to_string(envelope.id()) + " " +
                      MessageLine(envelope).value_or("?"));
        if (envelope.token() == 0) {
            return;
        }
        if (answers) {
            m_router->Reply(envelope.id(), envelope, envelope.token());
        } else {
            m_held.push_back(envelope);
        }
    }

    Effects& m_effects;
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("service", "");
    std::shared_ptr<APServerSocketListenerIF> m_listener =
        IL::CreateServerListener("service", m_task.get());
    IPCMessageRouterPtr m_router;
    std::vector<IPCMessageEnvelope> m_held;
};

}  // namespace Controller
