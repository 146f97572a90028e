// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "lpm/Blaster.h"
#include "lpm/CecRemote.h"
#include "lpm/DelayedWork.h"
#include "lpm/Recorder.h"
#include "lpm/ReplyScript.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"

namespace Lpm {

/// The IPC service "LpmService". Serves any number of clients. An answer goes to the client that
/// asked, and so does the key map (65541), which answers a notification. Events, such as the result
/// of a store (83), go to all clients. On one task.
///
/// Id 80 takes every frame, 82 a key, 84 a key map, 65539 a store. The script does not apply to id
/// 82, which has no reply. A request without a frame is answered as a malformed frame. A transfer
/// is answered with BULK_TRANSFER_ERROR if its length is wrong, and with BULK_TRANSFER_DECLINED if
/// its type is not a blaster record. The low power requests get their own content as answer.
class LpmServer {
public:
    /// The neighbours must outlive this object. `recorder` may be null.
    LpmServer(NotifyTargetTaskIF* task, Blaster& blaster, ReplyScript& script, CecRemote& cec,
              Recorder* recorder);

    /// Begins to listen. False, logged, if that fails.
    bool Start();

    void SendToAll(std::uint32_t id, const google::protobuf::Message& message);

private:
    using Packet = LpmServiceMessages::LPMIpcServicePacket;
    using SendReply = std::function<void(std::string reply)>;

    void HandleSocket(const Orlu::SocketPtr& socket);
    void AddHandlers(IPCMessageRouterIF& router, ConnectionId client);
    void HandleDisconnect(ConnectionId client);

    void HandleFrame(ConnectionId client, const Packet& packet, std::uint32_t token);
    void HandleKey(ConnectionId client, const Packet& packet);
    void HandleKeyMapRequest(ConnectionId client, const Packet& packet);
    void HandleCecKey(ConnectionId client, const Packet& packet);
    void HandleStore(ConnectionId client, const Packet& packet, std::uint32_t token);
    void TransferStore(ConnectionId client, const std::string& frame, std::uint32_t token);

    void Answer(const std::string& frame, const ScriptedReply& scripted, ConnectionId from,
                SendReply send);
    void Reply(ConnectionId client, std::uint32_t id, const google::protobuf::Message& message,
               std::uint32_t token);
    void ReplyBulk(ConnectionId client, std::uint32_t id, std::uint32_t token,
                   LpmServiceMessages::BulkTransferResult result);
    std::optional<std::string> TakeFrame(std::uint32_t id, const Packet& packet);
    ScriptedReply TakeScripted(const std::string& frame);

    NotifyTargetTaskIF* m_task;
    Blaster& m_blaster;
    ReplyScript& m_script;
    CecRemote& m_cec;
    Recorder* m_recorder;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::map<ConnectionId, IPCMessageRouterPtr> m_clients;
    ConnectionId m_lastClient = 0;
    DelayedWork m_delayed;
};

}  // namespace Lpm
