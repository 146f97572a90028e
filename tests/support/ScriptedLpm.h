// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ProtoBufs/AutoLpmServiceMessages.pb.h"
#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Timer.h"
#include "support/Effects.h"

/// The LPM service of a test, in memory, for any number of clients. It records each thing received:
/// "lpm 80 000100" for frames (80, 82, 84), "lpm 65539 length 105 type 2 0067…" for loads, "lpm 169
/// value 36 state 0" for CEC keys. It answers each with success at once, unless the test says else.
class ScriptedLpm {
public:
    explicit ScriptedLpm(Effects& effects);
    ~ScriptedLpm();
    ScriptedLpm(const ScriptedLpm&) = delete;
    ScriptedLpm& operator=(const ScriptedLpm&) = delete;

    /// From now on every answer comes so much later.
    void AnswerAfter(std::uint32_t ms) { m_delayMs = ms; }
    /// From now on the blaster answers a command with these bytes, or not at all.
    void Reply(std::uint8_t command, std::optional<std::string> bytes);
    void DeclineLoads(LpmServiceMessages::BulkTransferResult result) { m_bulkResult = result; }

    /// Sends to every client, unasked.
    void SendEvent(std::uint32_t id, const google::protobuf::Message& message);
    /// Closes every connection; clients find the service again.
    void DropClients();

private:
    void Accept(const Orlu::SocketPtr& socket);
    void Frame(const IPCMessageRouterPtr& router, std::uint32_t id, const std::string& frame,
               std::uint32_t token);
    void Load(const IPCMessageRouterPtr& router, const LpmServiceMessages::BulkNotifyData_t& load,
              std::uint32_t token);
    std::optional<std::string> ReplyTo(const std::string& frame) const;
    void Later(std::function<void()> work);

    Effects& m_effects;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::vector<IPCMessageRouterPtr> m_routers;
    std::vector<std::shared_ptr<APTimer>> m_timers;
    std::map<std::uint8_t, std::optional<std::string>> m_replies;
    LpmServiceMessages::BulkTransferResult m_bulkResult = LpmServiceMessages::BULK_TRANSFER_SUCCESS;
    std::uint32_t m_delayMs = 0;
};
