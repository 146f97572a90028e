// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orlu/IPCMessageRouter.h"
#include "support/Effects.h"

/// The product controller of a test: connects to "TrellanService" in memory, sends the test's
/// messages and records what it receives: "client reply 6 {…}", "client event 9 {…}", "client
/// closed".
class ScriptedClient {
public:
    /// Connects when the tasks run next. `name` begins each record.
    ScriptedClient(Effects& effects, std::string name);
    ~ScriptedClient();
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;

    void Send(std::uint32_t id, const google::protobuf::Message& message);
    void Request(std::uint32_t id, const google::protobuf::Message& message);
    void Disconnect();

private:
    void Connected(const Orlu::SocketPtr& socket);
    void Record(const char* kind, const IPCMessageEnvelope& envelope);

    Effects& m_effects;
    const std::string m_name;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    IPCMessageRouterPtr m_router;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
};
