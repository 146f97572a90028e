// SPDX-License-Identifier: Apache-2.0

#include "simulation/SimulatedClient.h"

#include <fmt/format.h>
#include <google/protobuf/message.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/IPCMessageRouter.h"

namespace Simulation {

SimulatedClient::SimulatedClient(OnSync sync)
    : m_sync(std::move(sync)), m_task(IL::CreateTask("client", ""))
{
    Connect();
}

SimulatedClient::~SimulatedClient()
{
    Disconnect();
    m_task->Stop();
}

void SimulatedClient::Connect()
{
    if (IsConnected()) {
        return;
    }
    m_attempt = Orlu::Runtime().Transport().Connect(
        IPCDirectory::Get().Lookup("TrellanService").Path(), m_task->Queue(),
        [this](const Orlu::SocketPtr& socket) {
            m_reader = IPCFrames::Reader();
            m_open.clear();
            m_socket = socket;
            if (m_socket) {
                m_socket->Receive([this](std::span<const std::uint8_t> bytes) { TakeBytes(bytes); },
                                  [this] { m_socket = nullptr; });
            }
        });
}

void SimulatedClient::Disconnect()
{
    m_attempt.reset();
    if (const auto socket = std::exchange(m_socket, nullptr)) {
        socket->Close();
    }
}

void SimulatedClient::OnTask(Orlu::Work work)
{
    IL::BreakThread(std::move(work), m_task.get());
}

void SimulatedClient::Send(std::uint32_t id, const google::protobuf::Message& message)
{
    Put(id, IPCFrames::kEvent, 0, message.GetDescriptor()->name(), message.SerializeAsString());
}

void SimulatedClient::Request(std::uint32_t id, const google::protobuf::Message& message)
{
    Put(id, IPCFrames::kRequest, ++m_lastToken, message.GetDescriptor()->name(),
        message.SerializeAsString());
}

void SimulatedClient::Put(std::uint32_t id, std::uint32_t kind, std::uint32_t token,
                          const std::string& type, const std::string& payload)
{
    IPCMessageEnvelope envelope;
    envelope.set_id(id);
    envelope.set_kind(kind);
    envelope.set_payload_type(type);
    envelope.set_payload(payload);
    if (token != 0) {
        envelope.set_token(token);
    }
    OnTask([this, envelope, id, token] {
        if (m_socket && IPCFrames::Write(envelope, *m_socket) && token != 0) {
            m_open[token] = id;
        }
    });
}

void SimulatedClient::SendBytes(const std::string& bytes)
{
    OnTask([this, bytes] {
        if (m_socket) {
            m_socket->Send(bytes);
        }
    });
}

void SimulatedClient::TakeBytes(std::span<const std::uint8_t> bytes)
{
    IPCMessageEnvelope envelope;
    m_reader.Feed(bytes);
    auto status = m_reader.Next(envelope);
    for (; status == IPCFrames::Reader::Status::kFrame; status = m_reader.Next(envelope)) {
        Take(envelope);
    }
    if (status != IPCFrames::Reader::Status::kMore) {
        m_fault = "the service sent what is no frame";
    }
}

void SimulatedClient::Take(const IPCMessageEnvelope& envelope)
{
    using namespace TrellanServiceMessages;
    if (envelope.kind() == IPCFrames::kReply) {
        const auto found = m_open.find(envelope.token());
        if (found == m_open.end() || found->second != envelope.id()) {
            m_fault =
                fmt::format("answer {} to no open request {}", envelope.id(), envelope.token());
            return;
        }
        m_open.erase(found);
        ++m_answered;
    } else if (envelope.id() == TrellanService_MESSAGE_ID_BLASTER_SYNC_COMPLETE) {
        BlasterSync_t sync;
        if (GetPayload(envelope, sync)) {
            m_sync(sync.syncstate());
        }
    }
}

}  // namespace Simulation
