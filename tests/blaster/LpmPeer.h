// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"

namespace TrellanService::Tests {

/// Bytes as text: "0007011234…".
std::string Hex(std::string_view bytes);
std::string Unhex(std::string_view text);

/// The LPM side of a test: notes all that arrives, one line each, and answers as it is told.
class LpmPeer {
public:
    LpmPeer();

    void Serve();
    /// Goes away: the clients lose their link, and find nobody.
    void Leave();

    /// A reply to each blaster request, in hexadecimal; empty: silence.
    std::string reply = "0100";
    /// The result of bulk requests; nothing: silence.
    std::optional<LpmServiceMessages::BulkTransferResult> bulkResult;
    /// Names the payload of replies, in place of its type.
    std::optional<std::string> replyType;

    /// To every client.
    void Event(std::uint32_t id, const google::protobuf::Message& message);
    void BlasterDone(const std::string& hex);
    void KeyMap(const std::string& hex);

    /// What arrived since the last call, such as "82 packet TRS_BlasterMsg_t 2: 000100".
    std::string TakeRecord();

private:
    void Accept(const Orlu::SocketPtr& socket);
    void Arrived(IPCMessageRouterIF& router, const IPCMessageEnvelope& envelope);
    void Answer(IPCMessageRouterIF& router, const IPCMessageEnvelope& envelope);
    static std::string Describe(const IPCMessageEnvelope& envelope);

    std::shared_ptr<NotifyTargetTaskIF> m_task;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::vector<IPCMessageRouterPtr> m_routers;
    std::string m_record;
};

}  // namespace TrellanService::Tests
