// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "orlu/IPCFrames.h"
#include "orlu/Network.h"
#include "orlu/Task.h"

namespace Simulation {

/// A product controller that counts the answers to each of its requests. On a task of its own.
class SimulatedClient {
public:
    /// Called with each blaster sync event: whether the sync has ended.
    using OnSync = std::function<void(bool ended)>;

    explicit SimulatedClient(OnSync sync);
    ~SimulatedClient();
    SimulatedClient(const SimulatedClient&) = delete;
    SimulatedClient& operator=(const SimulatedClient&) = delete;

    bool IsConnected() const { return m_socket != nullptr; }
    void Connect();
    void Disconnect();

    void Send(std::uint32_t id, const google::protobuf::Message& message);
    void Request(std::uint32_t id, const google::protobuf::Message& message);
    void SendBytes(const std::string& bytes);

    /// Requests of this connection without an answer; requests of all connections with one answer.
    std::size_t Unanswered() const { return m_open.size(); }
    std::uint64_t Answered() const { return m_answered; }

    /// An answer without a request, or a second answer; empty if there was none.
    const std::string& Fault() const { return m_fault; }

private:
    void OnTask(Orlu::Work work);
    void TakeBytes(std::span<const std::uint8_t> bytes);
    void Take(const IPCMessageEnvelope& envelope);
    void Put(std::uint32_t id, std::uint32_t kind, std::uint32_t token, const std::string& type,
             const std::string& payload);

    OnSync m_sync;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
    Orlu::SocketPtr m_socket;
    IPCFrames::Reader m_reader;
    std::map<std::uint32_t, std::uint32_t> m_open;  ///< id by token
    std::uint32_t m_lastToken = 0;
    std::uint64_t m_answered = 0;
    std::string m_fault;
};

}  // namespace Simulation
