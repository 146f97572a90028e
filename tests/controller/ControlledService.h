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

namespace Controller {

/// The service's side: notes what arrives with its time, and answers with what it got, or not.
class Service {
public:
    Service() : m_task(IL::CreateTask("service", "")) {}

    void Serve()
    {
        m_listener = IL::CreateServerListener("service", m_task.get());
        m_listener->Serve(
            IPCDirectory::Get().Lookup(kServiceName),
            AsyncCallback<Orlu::SocketPtr>(
                [this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task.get()));
    }

    void Run(std::function<void()> work) { IL::BreakThread(std::move(work), m_task.get()); }

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

    /// The answers that were held back, last asked first.
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
    std::function<void(std::string)> note;

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
        note("service " + std::to_string(envelope.id()) + " " +
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

    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    IPCMessageRouterPtr m_router;
    std::vector<IPCMessageEnvelope> m_held;
};

}  // namespace Controller
