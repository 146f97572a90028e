// SPDX-License-Identifier: Apache-2.0

#include "support/ScriptedLpm.h"

#include <fmt/format.h>

using namespace LpmServiceMessages;

namespace {

std::string Hex(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return text;
}

template <class Message>
Message Nested(const LPMIpcServicePacket& packet)
{
    Message message;
    message.ParseFromString(packet.nested_message());
    return message;
}

}  // namespace

ScriptedLpm::ScriptedLpm(Effects& effects)
    : m_effects(effects),
      m_task(IL::CreateTask("lpm", "")),
      m_listener(IL::CreateServerListener("lpm", m_task.get()))
{
    const AsyncCallback<Orlu::SocketPtr> accepted(
        [this](const Orlu::SocketPtr& socket) { Accept(socket); }, m_task.get());
    m_listener->Serve(IPCDirectory::Get().Lookup("LpmService"), accepted);
}

ScriptedLpm::~ScriptedLpm()
{
    m_task->Stop();
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
         {IPC_SEND_TO_BLASTER, IPC_SEND_BLASTER_KEY, IPC_BLASTER_KEY_MAP_RQST}) {
        router->AddHandler<LPMIpcServicePacket>(
            id, [this, weak, id](const LPMIpcServicePacket& packet, std::uint32_t token) {
                Frame(weak.lock(), id, Nested<TRS_BlasterMsg_t>(packet).blaster_msg(), token);
            });
    }
    router->AddHandler<LPMIpcServicePacket>(
        BULK_TRANSFER_DATA_REQUEST,
        [this, weak](const LPMIpcServicePacket& packet, std::uint32_t token) {
            Load(weak.lock(), Nested<BulkNotifyData_t>(packet), token);
        });
    router->AddHandler<LPMIpcServicePacket>(
        IPC_CEC_KEY, [this](const LPMIpcServicePacket& packet, std::uint32_t /*token*/) {
            const auto key = Nested<IpcCecKey_t>(packet);
            m_effects.Add(fmt::format("lpm 169 value {} state {}", key.value(), key.state()));
        });
    router->Connect(socket, [] {});
}

std::optional<std::string> ScriptedLpm::ReplyTo(const std::string& frame) const
{
    const auto scripted =
        m_replies.find(frame.size() > 2 ? static_cast<std::uint8_t>(frame[2]) : std::uint8_t{0xFF});
    return scripted == m_replies.end() ? std::string("\x01\x00", 2) : scripted->second;
}

void ScriptedLpm::Frame(const IPCMessageRouterPtr& router, std::uint32_t id,
                        const std::string& frame, std::uint32_t token)
{
    m_effects.Add(fmt::format("lpm {} {}", id, Hex(frame)));
    const auto reply = ReplyTo(frame);
    if (id == IPC_SEND_BLASTER_KEY || !reply) {
        return;
    }
    if (id == IPC_BLASTER_KEY_MAP_RQST) {
        BulkTransferData keyMap;
        keyMap.set_type(BULK_TYPE_BLASTER_KEY_MAP);
        keyMap.set_data(*reply);
        Later([this, keyMap] { SendEvent(BLASTER_KEY_MAP_RESP, keyMap); });
        return;
    }
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(*reply);
    Later([router, message, token] { router->ReplyMessage(IPC_SEND_TO_BLASTER, message, token); });
}

void ScriptedLpm::Load(const IPCMessageRouterPtr& router, const BulkNotifyData_t& load,
                       std::uint32_t token)
{
    m_effects.Add(fmt::format("lpm 65539 length {} type {} {}", load.length(), load.type(),
                              Hex(load.data())));
    const auto reply = ReplyTo(load.data());
    Later([this, router, token, reply, result = m_bulkResult] {
        BulkTransferResponse response;
        response.set_result(result);
        router->ReplyMessage(BULK_TRANSFER_DATA_REQUEST, response, token);
        if (result == BULK_TRANSFER_SUCCESS && reply) {
            TRS_BlasterMsg_t done;
            done.set_blaster_msg(*reply);
            SendEvent(IPC_BULK_BLASTER_DONE, done);
        }
    });
}

void ScriptedLpm::SendEvent(std::uint32_t id, const google::protobuf::Message& message)
{
    for (const auto& router : m_routers) {
        router->SendMessage(id, message);
    }
}

void ScriptedLpm::DropClients()
{
    for (const auto& router : m_routers) {
        router->Disconnect();
    }
    m_routers.clear();
}

void ScriptedLpm::Later(std::function<void()> work)
{
    if (m_delayMs == 0) {
        work();
        return;
    }
    m_timers.push_back(APTimer::Create(m_task.get(), "lpm"));
    m_timers.back()->SetTimeouts(m_delayMs, 0);
    m_timers.back()->Start(std::move(work));
}
