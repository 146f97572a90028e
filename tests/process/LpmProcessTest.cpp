// SPDX-License-Identifier: Apache-2.0

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <gtest/gtest.h>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "lpm/DeviceRoom.pb.h"
#include "process/Program.h"
#include "process/RawClient.h"

using namespace LpmServiceMessages;

namespace ProcessTests {
namespace {

LPMIpcServicePacket KeyPacket(char flag)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(std::string("\x00\x07\x01\x08\x03\x01", 6) + flag + std::string(2, 0));
    LPMIpcServicePacket packet;
    packet.set_destination(IPC_DEVICE_LPM);
    packet.set_nested_message(message.SerializeAsString());
    packet.set_msg_typename("TRS_BlasterMsg_t");
    return packet;
}

double MsOf(const std::string& line)
{
    return std::strtod(line.c_str() + std::strlen("{\"ms\": "), nullptr);
}

TEST(LpmProcessTest, ServesKeysToItsDevicesAndEndsWhatIsLeftRunning)
{
    const TemporaryRoot folder;
    Program program(
        folder, "LpmService",
        {"--record", "/dev/stdout", "--devices", DEVICES_FILE, "--codesets", CODESET_FOLDER});
    program.WaitForLine("ready");

    std::optional<RawClient> client(std::in_place, folder, "LpmService");
    client->Send(IPC_SEND_TO_BLASTER, 7, KeyPacket('\x80'));
    const IPCMessageEnvelope reply = client->Receive();
    EXPECT_EQ(reply.id(), 80U);
    EXPECT_EQ(reply.token(), 7U);
    EXPECT_EQ(reply.kind(), 2U);
    EXPECT_EQ(reply.payload(), std::string("\x0a\x02\x01\x00", 4));
    EXPECT_NE(program.WaitForLine(R"("id": 80)").find(R"("frame": "000701080301800000"})"),
              std::string::npos);
    EXPECT_NE(program.WaitForLine(R"("device":"television")").find(R"("power":true)"),
              std::string::npos);

    RawClient watcher(folder, "DeviceRoom");
    watcher.Send(LpmDevices::DEVICE_ROOM_STATE, 1, LpmDevices::DeviceRoomRequest());
    LpmDevices::DeviceRoomState state;
    EXPECT_TRUE(state.ParseFromString(watcher.Receive().payload()));
    EXPECT_NE(state.json().find(R"("power":true)", state.json().find(R"("television":{)")),
              std::string::npos)
        << state.json();

    program.WriteLine("not JSON");
    program.WriteLine(R"({"event83": "0100"})");
    EXPECT_EQ(client->Receive().id(), 83U);

    program.WaitForLine(R"("on": false)");
    client->Send(IPC_SEND_BLASTER_KEY, 0, KeyPacket('\0'));
    const double begun = MsOf(program.WaitForLine(R"("on": true)"));
    client.reset();
    EXPECT_LE(MsOf(program.WaitForLine(R"("on": false)")) - begun, 250.0);
    program.Signal(SIGTERM);
    EXPECT_EQ(program.WaitForEnd(), 0);
}

}  // namespace
}  // namespace ProcessTests
