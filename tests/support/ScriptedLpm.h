// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ProtoBufs/AutoLpmServiceMessages.pb.h"
#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Timer.h"
#include "support/Effects.h"

/// Bytes as text, "0007011234…", and back.
std::string Hex(std::string_view bytes);
std::string Unhex(std::string_view text);

/// The LPM service of a test, in memory, for any number of clients. It records each thing received:
/// "lpm 80 000100" for frames (80, 82, 84), "lpm 65539 length 105 type 2 0067…" for loads, "lpm 169
/// value 36 state 0" for CEC keys. It answers each with success at once, unless the test scripts
/// it.
class ScriptedLpm {
public:
    explicit ScriptedLpm(Effects& effects);
    ~ScriptedLpm();
    ScriptedLpm(const ScriptedLpm&) = delete;
    ScriptedLpm& operator=(const ScriptedLpm&) = delete;

    /// Delays every answer from now on.
    void AnswerAfter(std::uint32_t ms) { m_delayMs = ms; }
    /// Sets the blaster's reply to a command from now on, or none.
    void Reply(std::uint8_t command, std::optional<std::string> bytes);
    /// The same for all commands that have no reply of their own.
    void ReplyToAll(std::optional<std::string> bytes) { m_reply = std::move(bytes); }
    /// Sets the payload type that replies name from now on.
    void NameReplies(const std::string& type) { m_replyType = type; }
    /// Sets the result of transfers from now on, or no answer.
    void AnswerLoads(std::optional<LpmServiceMessages::BulkTransferResult> result)
    {
        m_bulkResult = result;
    }
    /// Also records how messages are sent from now on: "lpm 80 request TRS_BlasterMsg_t 2 000100"
    /// names the message in the packet and its destination, "lpm 65540 request bare LowPowerSet
    /// 0801" a message without a packet.
    void NotePackets() { m_notePackets = true; }

    /// Sends to every client, unsolicited.
    void SendEvent(std::uint32_t id, const google::protobuf::Message& message);
    /// Sends the result of a load, or a key map, unsolicited, in hexadecimal.
    void BlasterDone(const std::string& hex);
    void KeyMap(const std::string& hex);
    /// Closes every connection. Clients can connect again.
    void DropClients();
    /// Closes every connection and does not listen until `Serve`.
    void Leave();
    void Serve();

private:
    void Accept(const Orlu::SocketPtr& socket);
    void Arrived(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope);
    void Frame(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope,
               const std::string& frame);
    void Load(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope,
              const LpmServiceMessages::BulkNotifyData_t& load);
    void Note(const IPCMessageEnvelope& envelope,
              const LpmServiceMessages::LPMIpcServicePacket* packet, const std::string& what);
    void Reply(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& request,
               const google::protobuf::Message& message);
    std::optional<std::string> ReplyTo(const std::string& frame) const;
    void Defer(std::function<void()> work);

    Effects& m_effects;
    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::vector<IPCMessageRouterPtr> m_routers;
    std::vector<std::shared_ptr<APTimer>> m_timers;
    std::map<std::uint8_t, std::optional<std::string>> m_replies;
    std::optional<std::string> m_reply = std::string("\x01\x00", 2);
    std::optional<std::string> m_replyType;
    std::optional<LpmServiceMessages::BulkTransferResult> m_bulkResult =
        LpmServiceMessages::BULK_TRANSFER_SUCCESS;
    bool m_notePackets = false;
    std::uint32_t m_delayMs = 0;
};
