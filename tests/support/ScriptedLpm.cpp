// SPDX-License-Identifier: Apache-2.0

#include "support/ScriptedLpm.h"

#include <fmt/format.h>

using namespace LpmServiceMessages;

std::string Hex(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return text;
}

std::string Unhex(std::string_view text)
{
    std::string bytes;
    for (; text.size() >= 2; text.remove_prefix(2)) {
        bytes.push_back(static_cast<char>(std::stoi(std::string(text.substr(0, 2)), nullptr, 16)));
    }
    return bytes;
}

namespace {

template <class Message>
Message Nested(const LPMIpcServicePacket& packet)
{
    Message message;
    message.ParseFromString(packet.nested_message());
    return message;
}

}  // namespace

ScriptedLpm::ScriptedLpm(Effects& effects) : m_effects(effects), m_task(IL::CreateTask("lpm", ""))
{
    Serve();
}

ScriptedLpm::~ScriptedLpm()
{
    m_task->Stop();
}

void ScriptedLpm::Serve()
{
    m_listener = IL::CreateServerListener("lpm", m_task.get());
    const AsyncCallback<Orlu::SocketPtr> accepted(
        [this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task.get());
    m_listener->Serve(IPCDirectory::Get().Lookup("LpmService"), accepted);
}

void ScriptedLpm::Leave()
{
    m_listener.reset();
    DropClients();
}

void ScriptedLpm::Reply(std::uint8_t command, std::optional<std::string> bytes)
{
    m_replies[command] = std::move(bytes);
}

void ScriptedLpm::Accept(const Orlu::SocketPtr& socket)
{
    const auto router = IPCMessageRouterFactory::CreateRouter("lpm", m_task.get(), nullptr);
    m_routers.push_back(router);
    const std::weak_ptr<IPCMessageRouterIF> weak = router;
    for (const std::uint32_t id :
         {std::uint32_t{IPC_SEND_TO_BLASTER}, std::uint32_t{IPC_SEND_BLASTER_KEY},
          std::uint32_t{IPC_BLASTER_KEY_MAP_RQST}, std::uint32_t{IPC_CEC_KEY},
          std::uint32_t{BULK_TRANSFER_FILE_REQUEST}, std::uint32_t{BULK_TRANSFER_DATA_REQUEST},
          65540U, 65548U}) {
        router->AddHandler(id, IPCMessageRouterIF::EnvelopeHandler(
                                   [this, weak](const IPCMessageEnvelope& envelope) {
                                       Arrived(weak.lock(), envelope);
                                   }));
    }
    router->Connect(socket, [] {});
}

void ScriptedLpm::Arrived(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope)
{
    LPMIpcServicePacket packet;
    if (!GetPayload(envelope, packet)) {
        Note(envelope, nullptr, Hex(envelope.payload()));
        return;
    }
    switch (envelope.id()) {
        case IPC_CEC_KEY: {
            const auto key = Nested<IpcCecKey_t>(packet);
            Note(envelope, &packet, fmt::format("value {} state {}", key.value(), key.state()));
            break;
        }
        case BULK_TRANSFER_FILE_REQUEST:
        case BULK_TRANSFER_DATA_REQUEST: {
            const auto load = Nested<BulkNotifyData_t>(packet);
            Note(envelope, &packet,
                 fmt::format("length {} type {} {}", load.length(), load.type(), Hex(load.data())));
            Load(router, envelope, load);
            break;
        }
        default: {
            const auto frame = Nested<TRS_BlasterMsg_t>(packet).blaster_msg();
            Note(envelope, &packet, Hex(frame));
            Frame(router, envelope, frame);
            break;
        }
    }
}

void ScriptedLpm::Note(const IPCMessageEnvelope& envelope, const LPMIpcServicePacket* packet,
                       const std::string& what)
{
    std::string how;
    if (m_notePackets) {
        how = envelope.token() != 0 ? " request" : "";
        how +=
            packet == nullptr
                ? " bare " + envelope.payload_type()
                : fmt::format(" {} {}", packet->has_msg_typename() ? packet->msg_typename() : "-",
                              static_cast<int>(packet->destination()));
    }
    m_effects.Add(fmt::format("lpm {}{} {}", envelope.id(), how, what));
}

std::optional<std::string> ScriptedLpm::ReplyTo(const std::string& frame) const
{
    const auto scripted =
        m_replies.find(frame.size() > 2 ? static_cast<std::uint8_t>(frame[2]) : std::uint8_t{0xFF});
    return scripted == m_replies.end() ? m_reply : scripted->second;
}

void ScriptedLpm::Frame(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope,
                        const std::string& frame)
{
    const auto reply = ReplyTo(frame);
    if (envelope.id() == IPC_SEND_BLASTER_KEY || !reply) {
        return;
    }
    if (envelope.id() == IPC_BLASTER_KEY_MAP_RQST) {
        Defer([this, map = Hex(*reply)] { KeyMap(map); });
        return;
    }
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(*reply);
    Defer([this, router, message, envelope] { Reply(router, envelope, message); });
}

void ScriptedLpm::Load(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& envelope,
                       const BulkNotifyData_t& load)
{
    if (!m_bulkResult) {
        return;
    }
    Defer([this, router, envelope, reply = ReplyTo(load.data()), result = *m_bulkResult] {
        BulkTransferResponse response;
        response.set_result(result);
        Reply(router, envelope, response);
        if (result == BULK_TRANSFER_SUCCESS && reply) {
            BlasterDone(Hex(*reply));
        }
    });
}

void ScriptedLpm::Reply(const IPCMessageRouterPtr& router, const IPCMessageEnvelope& request,
                        const google::protobuf::Message& message)
{
    IPCMessageEnvelope answer;
    SetPayload(answer, message);
    if (m_replyType) {
        answer.set_payload_type(*m_replyType);
    }
    router->Reply(request.id(), std::move(answer), request.token());
}

void ScriptedLpm::SendEvent(std::uint32_t id, const google::protobuf::Message& message)
{
    for (const auto& router : m_routers) {
        router->SendMessage(id, message);
    }
}

void ScriptedLpm::BlasterDone(const std::string& hex)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(Unhex(hex));
    SendEvent(IPC_BULK_BLASTER_DONE, message);
}

void ScriptedLpm::KeyMap(const std::string& hex)
{
    BulkTransferData message;
    message.set_type(BULK_TYPE_BLASTER_KEY_MAP);
    message.set_data(Unhex(hex));
    SendEvent(BLASTER_KEY_MAP_RESP, message);
}

void ScriptedLpm::DropClients()
{
    for (const auto& router : m_routers) {
        router->Disconnect();
    }
    m_routers.clear();
}

void ScriptedLpm::Defer(std::function<void()> work)
{
    if (m_delayMs == 0) {
        work();
        return;
    }
    m_timers.push_back(APTimer::Create(m_task.get(), "lpm"));
    m_timers.back()->SetTimeouts(m_delayMs, 0);
    m_timers.back()->Start(std::move(work));
}
