// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "infrared/Light.h"
#include "lpm/InputLines.h"
#include "lpm/LpmServer.h"
#include "orlu/IPCMessageRouter.h"
#include "support/Effects.h"
#include "support/VirtualRuntime.h"

/// The code set of the tests, as bytes in hexadecimal. Keys: 1 NEC (a frame each 108 ms), 8 Sony
/// (three frames of 45 ms at the least), 9 stored light of 10.1 ms a frame.
std::string TestCodeset();

/// The service's parts on a virtual clock, between clients in memory and a diode that is watched.
/// Effects: "light 108000" (microseconds of a frame), "ir 0803 1 on", "cec 40 down",
/// "a reply 80 0100", "b event 83 0100".
class Bench : public Lpm::LightSinkIF, public Lpm::CecBusIF {
public:
    Bench();

    void Shine(const Lpm::LightFrame& frame) override;
    void SendUserControl(std::uint8_t userControl, bool pressed) override;

    /// Puts the code set into the blaster under this number.
    void Hold(Lpm::DeviceNumber device);

    /// One line of standard input.
    void Say(const std::string& line);

    /// What one frame is answered, in hexadecimal.
    std::string Execute(std::string_view hexFrame);

    VirtualRuntime runtime;
    Effects effects{runtime};
    std::shared_ptr<NotifyTargetTaskIF> task = IL::CreateTask("bench", "");
    Lpm::Recorder recorder;
    Lpm::ReplyScript script;
    Lpm::Blaster blaster;
    Lpm::CecRemote cec{*this, task.get()};
    Lpm::LpmServer server{task.get(), blaster, script, cec, &recorder};
    Lpm::InputLines input{server, script};
    std::string recorded;
};

/// A client of the service. What comes back is recorded under its name.
class BenchClient {
public:
    BenchClient(Bench& bench, std::string name);

    /// A frame, given in hexadecimal, in its messages under id 80 (request), 82 or 84.
    void Send(std::uint32_t id, std::string_view hexFrame);

    /// A store frame as a transfer, whose length says `length` if that is above 0.
    void Transfer(std::string_view hexFrame, std::uint32_t length = 0, std::uint32_t type = 2);

    void SendCecKey(std::uint32_t value, std::uint32_t state);

    /// Any packet; a request where the id takes one.
    void SendPacket(std::uint32_t id, const LpmServiceMessages::LPMIpcServicePacket& packet);

    void Disconnect();

private:
    void Record(const char* kind, const IPCMessageEnvelope& envelope);

    Bench& m_bench;
    std::string m_name;
    IPCMessageRouterPtr m_router;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
};

/// The packet of a message, as the service's own clients make it.
LpmServiceMessages::LPMIpcServicePacket PacketOf(const google::protobuf::Message& message);
