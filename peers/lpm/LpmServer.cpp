// SPDX-License-Identifier: Apache-2.0

#include "lpm/LpmServer.h"

#include <utility>

#include "orlu/DPrint.h"

namespace Lpm {

using namespace LpmServiceMessages;

namespace {

constexpr DPrint kLog("LpmServer");
constexpr const char* kServiceName = "LpmService";

/// Nothing for a malformed frame.
std::optional<std::uint8_t> CommandOf(const std::string& frame)
{
    const auto parsed = ParseFrame(AsBytes(frame));
    return parsed ? std::optional(parsed->command) : std::nullopt;
}

bool IsCommand(const std::string& frame, Command command)
{
    return CommandOf(frame) == static_cast<std::uint8_t>(command);
}

/// False, logged, for a packet to another device or of another type, or one that does not parse.
bool Unwrap(std::uint32_t id, const LPMIpcServicePacket& packet, google::protobuf::Message& message)
{
    const std::string& expected = message.GetDescriptor()->name();
    if (!packet.has_destination() || packet.destination() != IPC_DEVICE_LPM) {
        kLog.Log(2, "Message {} is not for the LPM", id);
        return false;
    }
    // A packet without a type name is accepted: the id says which message it holds.
    if (!packet.msg_typename().empty() && packet.msg_typename() != expected) {
        kLog.Log(2, "Message {} holds no {}", id, expected);
        return false;
    }
    if (!message.ParseFromString(packet.nested_message())) {
        kLog.Log(2, "Message {} holds a {} that cannot be read", id, expected);
        return false;
    }
    return true;
}

TRS_BlasterMsg_t BlasterMessage(std::string reply)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(std::move(reply));
    return message;
}

}  // namespace

LpmServer::LpmServer(NotifyTargetTaskIF* task, Blaster& blaster, ReplyScript& script,
                     CecRemote& cec, Recorder* recorder)
    : m_task(task),
      m_blaster(blaster),
      m_script(script),
      m_cec(cec),
      m_recorder(recorder),
      m_listener(IL::CreateServerListener(kServiceName, task)),
      m_delayed(task)
{
}

bool LpmServer::Start()
{
    const AsyncCallback<Orlu::SocketPtr> accepted(
        [this](const Orlu::SocketPtr& socket) { HandleSocket(socket); }, m_task);
    return static_cast<bool>(m_listener->Serve(IPCDirectory::Get().Lookup(kServiceName), accepted));
}

void LpmServer::HandleSocket(const Orlu::SocketPtr& socket)
{
    const ConnectionId client = ++m_lastClient;
    const auto router = IPCMessageRouterFactory::CreateRouter(kServiceName, m_task, nullptr);
    m_clients[client] = router;
    AddHandlers(*router, client);
    kLog.Log(3, "Client {} from {}", client, socket->GetPeer().ToString());
    router->Connect(socket, [this, client] { HandleDisconnect(client); });
}

void LpmServer::AddHandlers(IPCMessageRouterIF& router, ConnectionId client)
{
    router.AddHandler<Packet>(IPC_SEND_TO_BLASTER,
                              [this, client](const Packet& packet, std::uint32_t token) {
                                  HandleFrame(client, packet, token);
                              });
    router.AddHandler<Packet>(
        IPC_SEND_BLASTER_KEY,
        [this, client](const Packet& packet, std::uint32_t) { HandleKey(client, packet); });
    router.AddHandler<Packet>(IPC_BLASTER_KEY_MAP_RQST,
                              [this, client](const Packet& packet, std::uint32_t) {
                                  HandleKeyMapRequest(client, packet);
                              });
    router.AddHandler<Packet>(IPC_CEC_KEY, [this, client](const Packet& packet, std::uint32_t) {
        HandleCecKey(client, packet);
    });
    router.AddHandler<Packet>(BULK_TRANSFER_DATA_REQUEST,
                              [this, client](const Packet& packet, std::uint32_t token) {
                                  HandleStore(client, packet, token);
                              });
    router.AddHandler<Packet>(
        BULK_TRANSFER_FILE_REQUEST, [this, client](const Packet&, std::uint32_t token) {
            kLog.Log(2, "A file is offered and declined");
            ReplyBulk(client, BULK_TRANSFER_FILE_REQUEST, token, BULK_TRANSFER_DECLINED);
        });
    router.AddHandler<LowPowerSet>(SET_LOW_POWER,
                                   [this, client](const LowPowerSet& state, std::uint32_t token) {
                                       Reply(client, SET_LOW_POWER, state, token);
                                   });
    router.AddHandler<EnterNWS>(ENTER_NWS,
                                [this, client](const EnterNWS& state, std::uint32_t token) {
                                    Reply(client, ENTER_NWS, state, token);
                                });
}

void LpmServer::HandleDisconnect(ConnectionId client)
{
    kLog.Log(3, "Client {} has gone", client);
    m_blaster.ConnectionLost(client);
    m_cec.ConnectionLost(client);
    // The router calls this handler, so it must not be destroyed before the handler returns.
    m_task->QueueNotificationNonBlocking([router = m_clients.extract(client).mapped()] {});
}

void LpmServer::HandleFrame(ConnectionId client, const Packet& packet, std::uint32_t token)
{
    // A packet without a frame becomes an empty frame, which the blaster answers as malformed: the
    // client must not wait for a reply in vain.
    const std::string frame = TakeFrame(IPC_SEND_TO_BLASTER, packet).value_or("");
    Answer(frame, TakeScripted(frame), client, [this, client, token](std::string reply) {
        Reply(client, IPC_SEND_TO_BLASTER, BlasterMessage(std::move(reply)), token);
    });
}

void LpmServer::HandleKey(ConnectionId client, const Packet& packet)
{
    const auto frame = TakeFrame(IPC_SEND_BLASTER_KEY, packet);
    if (!frame) {
        return;
    }
    // Id 82 has no reply. Any other command would leave its sender without the result.
    if (!IsCommand(*frame, Command::kKey)) {
        kLog.Log(2, "A frame without a reply is no key, it is dropped");
        return;
    }
    const std::string reply = m_blaster.Execute(AsBytes(*frame), client);
    if (reply[1] != 0) {
        kLog.Log(2, "A key without a reply has failed with status {}", int{reply[1]});
    }
}

void LpmServer::HandleKeyMapRequest(ConnectionId client, const Packet& packet)
{
    const auto frame = TakeFrame(IPC_BLASTER_KEY_MAP_RQST, packet);
    const SendReply send = [this, client](std::string reply) {
        BulkTransferData data;
        data.set_type(BULK_TYPE_BLASTER_KEY_MAP);
        data.set_data(std::move(reply));
        // The script can delay the answer until after the client has disconnected.
        if (const auto asker = m_clients.find(client); asker != m_clients.end()) {
            asker->second->SendMessage(BLASTER_KEY_MAP_RESP, data);
        }
    };
    if (frame && CommandOf(*frame) && !IsCommand(*frame, Command::kKeyMap)) {
        send(MakeReply(Status::kUnknownCommand));
        return;
    }
    Answer(frame.value_or(""), TakeScripted(frame.value_or("")), client, send);
}

void LpmServer::HandleCecKey(ConnectionId client, const Packet& packet)
{
    IpcCecKey_t key;
    if (!Unwrap(IPC_CEC_KEY, packet, key)) {
        return;
    }
    if (!key.has_value()) {
        kLog.Log(2, "A CEC key without a value is dropped");
        return;
    }
    if (m_recorder != nullptr) {
        m_recorder->CecKey(IPC_CEC_KEY, key.value(), key.state());
    }
    if (key.state() == 0) {
        m_cec.Press(key.value(), client);
    } else {
        m_cec.Release();
    }
}

void LpmServer::HandleStore(ConnectionId client, const Packet& packet, std::uint32_t token)
{
    BulkNotifyData_t bulk;
    if (!Unwrap(BULK_TRANSFER_DATA_REQUEST, packet, bulk)) {
        ReplyBulk(client, BULK_TRANSFER_DATA_REQUEST, token, BULK_TRANSFER_ERROR);
        return;
    }
    if (m_recorder != nullptr) {
        m_recorder->BulkFrame(BULK_TRANSFER_DATA_REQUEST, bulk.length(), bulk.type(), bulk.data());
    }
    if (bulk.length() != bulk.data().size()) {
        kLog.Log(2, "A transfer of {} bytes holds {}", bulk.length(), bulk.data().size());
        ReplyBulk(client, BULK_TRANSFER_DATA_REQUEST, token, BULK_TRANSFER_ERROR);
    } else if (bulk.type() != BULK_TYPE_BLASTER_RECORD) {
        kLog.Log(2, "A transfer of type {} is declined", bulk.type());
        ReplyBulk(client, BULK_TRANSFER_DATA_REQUEST, token, BULK_TRANSFER_DECLINED);
    } else {
        TransferStore(client, bulk.data(), token);
    }
}

void LpmServer::TransferStore(ConnectionId client, const std::string& frame, std::uint32_t token)
{
    const ScriptedReply scripted = TakeScripted(frame);
    const auto result = static_cast<BulkTransferResult>(scripted.bulkResult.value_or(0));
    if (result != BULK_TRANSFER_SUCCESS) {
        // A transfer that failed carries no frame to the blaster, and no event 83 follows.
        m_delayed.Run(scripted.delay, [this, client, token, result] {
            ReplyBulk(client, BULK_TRANSFER_DATA_REQUEST, token, result);
        });
        return;
    }
    // The transfer succeeds before the store is tried: the result of the store is event 83.
    ReplyBulk(client, BULK_TRANSFER_DATA_REQUEST, token, BULK_TRANSFER_SUCCESS);
    const SendReply send = [this](std::string reply) {
        SendToAll(IPC_BULK_BLASTER_DONE, BlasterMessage(std::move(reply)));
    };
    if (CommandOf(frame) && !IsCommand(frame, Command::kStore)) {
        send(MakeReply(Status::kUnknownCommand));
        return;
    }
    Answer(frame, scripted, client, send);
}

/// Calls `send` with the reply, at once or after the script's delay. A silent reply is not sent.
void LpmServer::Answer(const std::string& frame, const ScriptedReply& scripted, ConnectionId from,
                       SendReply send)
{
    // The blaster executes the frame now, even if the script delays or drops the reply.
    std::string reply = scripted.IsTaken(CommandOf(frame).value_or(0))
                            ? m_blaster.Execute(AsBytes(frame), from)
                            : MakeReply(Status::kOk);
    if (scripted.silent) {
        return;
    }
    m_delayed.Run(scripted.delay,
                  [send = std::move(send), reply = scripted.Reply(std::move(reply))]() mutable {
                      send(std::move(reply));
                  });
}

void LpmServer::Reply(ConnectionId client, std::uint32_t id,
                      const google::protobuf::Message& message, std::uint32_t token)
{
    const auto asker = m_clients.find(client);
    // Token 0 marks a message that expects no answer.
    if (token != 0 && asker != m_clients.end()) {
        asker->second->ReplyMessage(id, message, token);
    }
}

void LpmServer::ReplyBulk(ConnectionId client, std::uint32_t id, std::uint32_t token,
                          BulkTransferResult result)
{
    BulkTransferResponse response;
    response.set_result(result);
    Reply(client, id, response, token);
}

void LpmServer::SendToAll(std::uint32_t id, const google::protobuf::Message& message)
{
    for (const auto& [client, router] : m_clients) {
        router->SendMessage(id, message);
    }
}

/// Records the frame of a packet and returns it. Nothing, logged, for a packet without a frame.
std::optional<std::string> LpmServer::TakeFrame(std::uint32_t id, const Packet& packet)
{
    TRS_BlasterMsg_t message;
    if (!Unwrap(id, packet, message)) {
        return std::nullopt;
    }
    if (m_recorder != nullptr) {
        m_recorder->Frame(id, message.blaster_msg());
    }
    return std::move(*message.mutable_blaster_msg());
}

ScriptedReply LpmServer::TakeScripted(const std::string& frame)
{
    const auto command = CommandOf(frame);
    return command ? m_script.Take(*command) : ScriptedReply{};
}

}  // namespace Lpm
