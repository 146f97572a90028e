// SPDX-License-Identifier: Apache-2.0

#include "Bench.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "infrared/CodesetBinary.h"

using namespace Lpm;
using namespace LpmServiceMessages;

namespace {

std::string AnswerAsText(const IPCMessageEnvelope& envelope)
{
    const auto read = [&envelope](auto message) {
        EXPECT_TRUE(NamesType(envelope, message.GetDescriptor()->name()) &&
                    GetPayload(envelope, message));
        return message;
    };
    switch (envelope.id()) {
        case BLASTER_KEY_MAP_RESP: {
            const auto bulk = read(BulkTransferData());
            return fmt::format("type {} {}", static_cast<int>(bulk.type()), ToHex(bulk.data()));
        }
        case IPC_CEC_MSG:
            return read(IpcCecMessage_t()).ShortDebugString();
        case IPC_SEND_TO_BLASTER:
        case IPC_BULK_BLASTER_DONE:
            return ToHex(read(TRS_BlasterMsg_t()).blaster_msg());
        default:
            return fmt::format("result {}",
                               static_cast<int>(read(BulkTransferResponse()).result()));
    }
}

}  // namespace

std::string TestCodeset()
{
    const std::vector<CodesetGroup> groups = {
        {.protocol = Protocol::kNec},
        {.protocol = Protocol::kSony12},
        {.protocol = Protocol::kRaw,
         .carrierKHz = 38,
         .rawDurationsUs = {600, 9500},
         .rawSequences = {{.press = {0, 1}, .repeat = {}}}},
    };
    const std::vector<CodesetKey> keys = {{1, 0, 0x0408}, {8, 1, 0x010015}, {9, 2, 0}};
    std::string why;
    const auto bytes = CodesetBinary::Compose(groups, keys, why);
    return ToHex({reinterpret_cast<const char*>(bytes.value().data()), bytes->size()});
}

Bench::Bench()
    : recorder([] { return std::chrono::microseconds(12345678); },
               [this](std::string_view line) {
                   recorded += line;
                   return true;
               }),
      blaster(task.get(), [this](DeviceNumber device, std::uint8_t key, bool on) {
          effects.Add(fmt::format("ir {:04x} {} {}", device, key, on ? "on" : "off"));
          recorder.Light(device, key, on);
      })
{
    blaster.AddSink(this);
    IL::BreakThread([this] { server.Start(); }, task.get());
    runtime.RunUntilIdle();
}

void Bench::Shine(const LightFrame& frame)
{
    const auto& durations = frame.durationsUs;
    effects.Add(fmt::format("light {}", std::accumulate(durations.begin(), durations.end(), 0U)));
}

void Bench::SendUserControl(std::uint8_t userControl, bool pressed)
{
    effects.Add(fmt::format("cec {:02x} {}", userControl, pressed ? "down" : "up"));
}

void Bench::Hold(DeviceNumber device)
{
    std::string why;
    blaster.Store(device, AsBytes(FromHex(TestCodeset()).value()), why);
}

void Bench::Say(const std::string& line)
{
    IL::BreakThread([this, line] { input.HandleLine(line); }, task.get());
    runtime.RunUntilIdle();
}

std::string Bench::Execute(std::string_view hexFrame)
{
    return ToHex(blaster.Execute(AsBytes(FromHex(hexFrame).value()), 1));
}

BenchClient::BenchClient(Bench& bench, std::string name)
    : m_bench(bench),
      m_name(std::move(name)),
      m_router(IPCMessageRouterFactory::CreateRouter(m_name, bench.task.get(), nullptr))
{
    for (const std::uint32_t id : {83U, 160U, 65541U}) {
        m_router->AddHandler(
            id, IPCMessageRouterIF::EnvelopeHandler(
                    [this](const IPCMessageEnvelope& envelope) { Record("event", envelope); }));
    }
    m_attempt = Orlu::Runtime().Transport().Connect(
        IPCDirectory::Get().Lookup("LpmService").Path(), bench.task->Queue(),
        [this](const Orlu::SocketPtr& socket) {
            m_router->Connect(socket, [this] { m_bench.effects.Add(m_name + " closed"); });
        });
    bench.runtime.RunUntilIdle();
}

void BenchClient::Send(std::uint32_t id, std::string_view hexFrame)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(FromHex(hexFrame).value());
    SendPacket(id, PacketOf(message));
}

void BenchClient::Transfer(std::string_view hexFrame, std::uint32_t length, std::uint32_t type)
{
    BulkNotifyData_t bulk;
    bulk.set_data(FromHex(hexFrame).value());
    bulk.set_length(length > 0 ? length : static_cast<std::uint32_t>(bulk.data().size()));
    bulk.set_type(type);
    LPMIpcServicePacket packet = PacketOf(bulk);
    packet.clear_msg_typename();
    SendPacket(BULK_TRANSFER_DATA_REQUEST, packet);
}

void BenchClient::SendCecKey(std::uint32_t value, std::uint32_t state)
{
    IpcCecKey_t key;
    key.set_value(value);
    key.set_state(state);
    SendPacket(IPC_CEC_KEY, PacketOf(key));
}

void BenchClient::SendPacket(std::uint32_t id, const LPMIpcServicePacket& packet)
{
    IPCMessageEnvelope envelope;
    SetPayload(envelope, packet);
    const bool asks = id == IPC_SEND_TO_BLASTER || id > CUSTOM_MESSAGE_ID_START;
    IL::BreakThread(
        [this, id, envelope, asks] {
            if (asks) {
                m_router->SendRequest(id, envelope, [this](const IPCMessageEnvelope& reply) {
                    Record("reply", reply);
                });
            } else {
                m_router->Send(id, envelope);
            }
        },
        m_bench.task.get());
    m_bench.runtime.RunUntilIdle();
}

void BenchClient::Disconnect()
{
    IL::BreakThread([router = m_router] { router->Disconnect(); }, m_bench.task.get());
    m_bench.runtime.RunUntilIdle();
}

void BenchClient::Record(const char* kind, const IPCMessageEnvelope& envelope)
{
    m_bench.effects.Add(
        fmt::format("{} {} {} {}", m_name, kind, envelope.id(), AnswerAsText(envelope)));
}

LPMIpcServicePacket PacketOf(const google::protobuf::Message& message)
{
    LPMIpcServicePacket packet;
    packet.set_destination(IPC_DEVICE_LPM);
    packet.set_nested_message(message.SerializeAsString());
    packet.set_msg_typename(message.GetDescriptor()->name());
    return packet;
}
