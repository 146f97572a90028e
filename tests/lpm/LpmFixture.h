// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <numeric>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "infrared/CodesetBinary.h"
#include "lpm/InputLines.h"
#include "lpm/LpmServer.h"
#include "orlu/IPCMessageRouter.h"
#include "support/Effects.h"

/// The code set of the tests, as bytes in hexadecimal. Keys: 1 is NEC (a frame every 108 ms), 8
/// Sony (at least three frames of 45 ms), 9 a stored signal of 10.1 ms per frame.
inline std::string TestCodeset()
{
    const std::vector<Lpm::CodesetGroup> groups = {
        {.protocol = Lpm::Protocol::kNec},
        {.protocol = Lpm::Protocol::kSony12},
        {.protocol = Lpm::Protocol::kRaw,
         .carrierKHz = 38,
         .rawDurationsUs = {600, 9500},
         .rawSequences = {{.press = {0, 1}, .repeat = {}}}},
    };
    const std::vector<Lpm::CodesetKey> keys = {{1, 0, 0x0408}, {8, 1, 0x010015}, {9, 2, 0}};
    std::string why;
    const auto bytes = Lpm::CodesetBinary::Compose(groups, keys, why).value();
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

/// The service's parts on a virtual clock, between clients in memory and a sink for the frames.
/// Effects: "light 108000" (microseconds of a frame), "ir 0803 1 on", "cec 40 down",
/// "a reply 80 0100", "b event 83 0100".
class LpmFixture : public Lpm::FrameSinkIF, public Lpm::CecBusIF {
public:
    LpmFixture()
    {
        blaster.AddSink(this);
        Run([this] { server.Start(); });
    }

    void HandleFrame(const Lpm::InfraredFrame& frame) override
    {
        const auto& durations = frame.durationsUs;
        effects.Add(
            fmt::format("light {}", std::accumulate(durations.begin(), durations.end(), 0U)));
    }

    void SendUserControl(std::uint8_t userControl, bool pressed) override
    {
        effects.Add(fmt::format("cec {:02x} {}", userControl, pressed ? "down" : "up"));
    }

    void Run(const std::function<void()>& work)
    {
        IL::BreakThread(work, task.get());
        runtime.RunUntilIdle();
    }

    /// Puts the code set into the blaster under this number.
    void Hold(Lpm::DeviceNumber device)
    {
        std::string why;
        blaster.Store(device, Lpm::AsBytes(Lpm::FromHex(TestCodeset()).value()), why);
    }

    /// One line of standard input.
    void SendLine(const std::string& line)
    {
        Run([this, line] { input.HandleLine(line); });
    }

    /// The reply to a frame, both in hexadecimal.
    std::string Execute(std::string_view hexFrame)
    {
        return Lpm::ToHex(blaster.Execute(Lpm::AsBytes(Lpm::FromHex(hexFrame).value()), 1));
    }

    VirtualRuntime runtime;
    Effects effects{runtime};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("fixture", "");
    std::string recorded;
    Lpm::Recorder recorder{[] { return std::chrono::microseconds(12345678); },
                           [this](std::string_view line) {
                               recorded += line;
                               return true;
                           }};
    Lpm::ReplyScript script;
    Lpm::Blaster blaster{
        task.get(), [this](Lpm::DeviceNumber device, std::uint8_t key, bool on) {
            effects.Add(fmt::format("ir {:04x} {} {}", device, key, on ? "on" : "off"));
            recorder.Emission(device, key, on);
        }};
    Lpm::CecRemote cec{*this, task.get()};
    Lpm::LpmServer server{task.get(), blaster, script, cec, &recorder};
    Lpm::InputLines input{server, script};
};

/// A client of the service. Replies and events are recorded under its name.
class LpmTestClient {
public:
    using Packet = LpmServiceMessages::LPMIpcServicePacket;

    LpmTestClient(LpmFixture& fixture, std::string name)
        : m_fixture(fixture),
          m_name(std::move(name)),
          m_router(IPCMessageRouterFactory::CreateRouter(m_name, fixture.task.get(), nullptr))
    {
        for (const std::uint32_t id : {83U, 160U, 65541U}) {
            m_router->AddHandler(
                id, IPCMessageRouterIF::EnvelopeHandler(
                        [this](const IPCMessageEnvelope& envelope) { Record("event", envelope); }));
        }
        m_attempt = Orlu::Runtime().Transport().Connect(
            IPCDirectory::Get().Lookup("LpmService").Path(), fixture.task->Queue(),
            [this](const Orlu::SocketPtr& socket) {
                m_router->Connect(socket, [this] { m_fixture.effects.Add(m_name + " closed"); });
            });
        fixture.runtime.RunUntilIdle();
    }

    /// The packet of a message, as the service's own clients make it.
    static Packet PacketOf(const google::protobuf::Message& message)
    {
        Packet packet;
        packet.set_destination(LpmServiceMessages::IPC_DEVICE_LPM);
        packet.set_nested_message(message.SerializeAsString());
        packet.set_msg_typename(message.GetDescriptor()->name());
        return packet;
    }

    /// A frame, given in hexadecimal, in its messages under id 80 (request), 82 or 84.
    void Send(std::uint32_t id, std::string_view hexFrame)
    {
        LpmServiceMessages::TRS_BlasterMsg_t message;
        message.set_blaster_msg(Lpm::FromHex(hexFrame).value());
        SendPacket(id, PacketOf(message));
    }

    /// Sends a store frame as a transfer. `length` replaces its length if it is above 0.
    void Transfer(std::string_view hexFrame, std::uint32_t length = 0, std::uint32_t type = 2)
    {
        LpmServiceMessages::BulkNotifyData_t bulk;
        bulk.set_data(Lpm::FromHex(hexFrame).value());
        bulk.set_length(length > 0 ? length : static_cast<std::uint32_t>(bulk.data().size()));
        bulk.set_type(type);
        Packet packet = PacketOf(bulk);
        packet.clear_msg_typename();
        SendPacket(LpmServiceMessages::BULK_TRANSFER_DATA_REQUEST, packet);
    }

    void SendCecKey(std::uint32_t value, std::uint32_t state)
    {
        LpmServiceMessages::IpcCecKey_t key;
        key.set_value(value);
        key.set_state(state);
        SendPacket(LpmServiceMessages::IPC_CEC_KEY, PacketOf(key));
    }

    /// Sends any packet, as a request if the id expects an answer.
    void SendPacket(std::uint32_t id, const Packet& packet)
    {
        IPCMessageEnvelope envelope;
        SetPayload(envelope, packet);
        const bool asks = id == LpmServiceMessages::IPC_SEND_TO_BLASTER ||
                          id > LpmServiceMessages::CUSTOM_MESSAGE_ID_START;
        m_fixture.Run([this, id, envelope, asks] {
            if (asks) {
                m_router->SendRequest(id, envelope, [this](const IPCMessageEnvelope& reply) {
                    Record("reply", reply);
                });
            } else {
                m_router->Send(id, envelope);
            }
        });
    }

    void Disconnect()
    {
        m_fixture.Run([this] { m_router->Disconnect(); });
    }

private:
    template <class Message>
    static Message Read(const IPCMessageEnvelope& envelope)
    {
        Message message;
        EXPECT_TRUE(NamesType(envelope, message.GetDescriptor()->name()) &&
                    GetPayload(envelope, message));
        return message;
    }

    static std::string Text(const IPCMessageEnvelope& envelope)
    {
        using namespace LpmServiceMessages;
        switch (envelope.id()) {
            case BLASTER_KEY_MAP_RESP: {
                const auto bulk = Read<BulkTransferData>(envelope);
                return fmt::format("type {} {}", static_cast<int>(bulk.type()),
                                   Lpm::ToHex(bulk.data()));
            }
            case IPC_CEC_MSG:
                return Read<IpcCecMessage_t>(envelope).ShortDebugString();
            case IPC_SEND_TO_BLASTER:
            case IPC_BULK_BLASTER_DONE:
                return Lpm::ToHex(Read<TRS_BlasterMsg_t>(envelope).blaster_msg());
            default:
                return fmt::format("result {}",
                                   static_cast<int>(Read<BulkTransferResponse>(envelope).result()));
        }
    }

    void Record(const char* kind, const IPCMessageEnvelope& envelope)
    {
        m_fixture.effects.Add(
            fmt::format("{} {} {} {}", m_name, kind, envelope.id(), Text(envelope)));
    }

    LpmFixture& m_fixture;
    std::string m_name;
    IPCMessageRouterPtr m_router;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
};
