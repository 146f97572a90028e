// SPDX-License-Identifier: Apache-2.0

#include "blaster/LpmPeer.h"

#include <fmt/format.h>

using namespace LpmServiceMessages;

namespace TrellanService::Tests {

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

LpmPeer::LpmPeer() : m_task(IL::CreateTask("LpmPeer", "")) {}

void LpmPeer::Serve()
{
    IL::BreakThread(
        [this] {
            m_listener = IL::CreateServerListener("LpmPeerListener", m_task.get());
            m_listener->Serve(
                IPCDirectory::Get().Lookup("LpmService"),
                AsyncCallback<Orlu::SocketPtr>(
                    [this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task.get()));
        },
        m_task.get());
}

void LpmPeer::Leave()
{
    IL::BreakThread(
        [this] {
            m_listener.reset();
            m_routers.clear();
        },
        m_task.get());
}

void LpmPeer::Accept(const Orlu::SocketPtr& socket)
{
    const auto router = IPCMessageRouterFactory::CreateRouter("LpmPeer", m_task.get(), nullptr);
    for (const std::uint32_t id : {80U, 82U, 84U, 169U, 65537U, 65539U, 65540U, 65548U}) {
        router->AddHandler(id, IPCMessageRouterIF::EnvelopeHandler(
                                   [this, raw = router.get()](const IPCMessageEnvelope& envelope) {
                                       Arrived(*raw, envelope);
                                   }));
    }
    router->Connect(socket, [] {});
    m_routers.push_back(router);
}

void LpmPeer::Arrived(IPCMessageRouterIF& router, const IPCMessageEnvelope& envelope)
{
    m_record += Describe(envelope) + "\n";
    if (envelope.token() != 0) {
        Answer(router, envelope);
    }
}

std::string LpmPeer::Describe(const IPCMessageEnvelope& envelope)
{
    const auto head = fmt::format("{}{}", envelope.id(), envelope.token() != 0 ? " request" : "");
    LPMIpcServicePacket packet;
    if (!GetPayload(envelope, packet)) {
        return fmt::format("{} bare {} {}", head, envelope.payload_type(), Hex(envelope.payload()));
    }
    const std::string type = packet.has_msg_typename() ? packet.msg_typename() : "-";
    const std::string what =
        fmt::format("{} {} {} ", head, type, static_cast<int>(packet.destination()));
    if (type == "TRS_BlasterMsg_t") {
        TRS_BlasterMsg_t message;
        message.ParseFromString(packet.nested_message());
        return what + Hex(message.blaster_msg());
    }
    if (type == "-") {
        BulkNotifyData_t message;
        message.ParseFromString(packet.nested_message());
        return what + fmt::format("length {} type {} {}", message.length(), message.type(),
                                  Hex(message.data()));
    }
    IpcCecKey_t message;
    message.ParseFromString(packet.nested_message());
    return what + message.ShortDebugString();
}

void LpmPeer::Answer(IPCMessageRouterIF& router, const IPCMessageEnvelope& envelope)
{
    IPCMessageEnvelope answer;
    if (envelope.id() == IPC_SEND_TO_BLASTER && !reply.empty()) {
        TRS_BlasterMsg_t message;
        message.set_blaster_msg(Unhex(reply));
        SetPayload(answer, message);
    } else if (envelope.id() >= BULK_TRANSFER_FILE_REQUEST && envelope.id() < SET_LOW_POWER &&
               bulkResult) {
        BulkTransferResponse message;
        message.set_result(*bulkResult);
        SetPayload(answer, message);
    } else {
        return;
    }
    if (replyType) {
        answer.set_payload_type(*replyType);
    }
    router.Reply(envelope.id(), std::move(answer), envelope.token());
}

void LpmPeer::Event(std::uint32_t id, const google::protobuf::Message& message)
{
    IPCMessageEnvelope envelope;
    SetPayload(envelope, message);
    IL::BreakThread(
        [this, id, envelope] {
            for (const auto& router : m_routers) {
                router->Send(id, envelope);
            }
        },
        m_task.get());
}

void LpmPeer::BlasterDone(const std::string& hex)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(Unhex(hex));
    Event(IPC_BULK_BLASTER_DONE, message);
}

void LpmPeer::KeyMap(const std::string& hex)
{
    BulkTransferData message;
    message.set_type(BULK_TYPE_BLASTER_KEY_MAP);
    message.set_data(Unhex(hex));
    Event(BLASTER_KEY_MAP_RESP, message);
}

std::string LpmPeer::TakeRecord()
{
    return std::exchange(m_record, {});
}

}  // namespace TrellanService::Tests
