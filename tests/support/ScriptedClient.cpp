// SPDX-License-Identifier: Apache-2.0

#include "support/ScriptedClient.h"

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/ProtoToMarkup.h"

namespace {

/// The message as JSON, by the type that its envelope names.
std::string AsJson(const IPCMessageEnvelope& envelope)
{
    const auto* descriptor =
        google::protobuf::DescriptorPool::generated_pool()->FindMessageTypeByName(
            "TrellanServiceMessages." + envelope.payload_type());
    if (descriptor == nullptr) {
        return "of type " + envelope.payload_type();
    }
    const std::unique_ptr<google::protobuf::Message> message(
        google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor)->New());
    return GetPayload(envelope, *message) ? ProtoToMarkup::ToJson(*message, true, false, false)
                                          : "damaged";
}

}  // namespace

ScriptedClient::ScriptedClient(Effects& effects, std::string name)
    : m_effects(effects),
      m_name(std::move(name)),
      m_task(IL::CreateTask(m_name, "")),
      m_router(IPCMessageRouterFactory::CreateRouter(m_name, m_task.get(), nullptr))
{
    for (const auto id :
         {TrellanServiceMessages::TrellanService_MESSAGE_ID_STATE_CHANGED,
          TrellanServiceMessages::TrellanService_MESSAGE_ID_CLOUD_CONNECTION_CHANGED,
          TrellanServiceMessages::TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE}) {
        m_router->AddHandler(
            static_cast<std::uint32_t>(id),
            IPCMessageRouterIF::EnvelopeHandler(
                [this](const IPCMessageEnvelope& envelope) { Record("event", envelope); }));
    }
    m_attempt = Orlu::Runtime().Transport().Connect(
        IPCDirectory::Get().Lookup("TrellanService").Path(), m_task->Queue(),
        [this](const Orlu::SocketPtr& socket) { Connected(socket); });
}

ScriptedClient::~ScriptedClient()
{
    m_router->Disconnect();
    m_task->Stop();
}

void ScriptedClient::Connected(const Orlu::SocketPtr& socket)
{
    if (!socket) {
        m_effects.Add(m_name + " refused");
        return;
    }
    m_router->Connect(socket, [this] { m_effects.Add(m_name + " closed"); });
}

void ScriptedClient::Record(const char* kind, const IPCMessageEnvelope& envelope)
{
    m_effects.Add(m_name + " " + kind + " " + std::to_string(envelope.id()) + " " +
                  AsJson(envelope));
}

void ScriptedClient::Send(std::uint32_t id, const google::protobuf::Message& message)
{
    IL::BreakThread(
        [router = m_router, id, text = message.SerializeAsString(),
         type = message.GetDescriptor()->name()] {
            IPCMessageEnvelope envelope;
            envelope.set_payload_type(type);
            envelope.set_payload(text);
            router->Send(id, std::move(envelope));
        },
        m_task.get());
}

void ScriptedClient::Request(std::uint32_t id, const google::protobuf::Message& message)
{
    IPCMessageEnvelope envelope;
    SetPayload(envelope, message);
    IL::BreakThread(
        [this, id, envelope = std::move(envelope)] {
            m_router->SendRequest(
                id, envelope, [this](const IPCMessageEnvelope& reply) { Record("reply", reply); });
        },
        m_task.get());
}

void ScriptedClient::Disconnect()
{
    m_router->Disconnect();
}
