// SPDX-License-Identifier: Apache-2.0

#include "lpm/LpmServer.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "LpmFixture.h"
#include "lpm/DeviceRoom.pb.h"
#include "lpm/DeviceRoomServer.h"

using namespace LpmServiceMessages;

namespace {

class LpmServerTest : public testing::Test {
protected:
    LpmServerTest()
    {
        fixture.Hold(0x0803);
        fixture.effects.Take();
    }

    LpmFixture fixture;
    LpmTestClient a{fixture, "a"};
    LpmTestClient b{fixture, "b"};
};

TEST_F(LpmServerTest, AnswersTheClientThatAskedAndNotifiesAllOfStores)
{
    a.Send(80, "00010b");
    b.Send(84, "0003020803");
    b.Send(84, "0003021234");
    b.Transfer("0003221234");
    EXPECT_EQ(fixture.effects.Take(),
              "+0 a reply 80 03000100\n"
              "+0 b event 65541 type 11 0400010809\n"
              "+0 b event 65541 type 11 0104\n"
              "+0 b reply 65539 result 0\n"
              "+0 b event 83 0106\n"
              "+0 a event 83 0106\n");
}

TEST_F(LpmServerTest, AcceptsEachFrameOnlyUnderItsMessageId)
{
    a.Send(82, "000701080301800000");
    a.Send(82, "000100");
    a.Send(82, "00");
    a.Send(84, "000100");
    a.Send(84, "00");
    b.Transfer("000100");
    b.Transfer("0001");
    b.Transfer("0003220803", 6);
    b.Transfer("0003220803", 5, 11);
    EXPECT_EQ(fixture.effects.Take(),
              "+0 ir 0803 1 on\n+0 light 108000\n"
              "+0 a event 65541 type 11 0102\n"
              "+0 a event 65541 type 11 0101\n"
              "+0 b reply 65539 result 0\n+0 b event 83 0102\n+0 a event 83 0102\n"
              "+0 b reply 65539 result 0\n+0 b event 83 0101\n+0 a event 83 0101\n"
              "+0 b reply 65539 result -1\n"
              "+0 b reply 65539 result -3\n");
}

TEST_F(LpmServerTest, AnswersADamagedPacketWhereAnAnswerIsAwaited)
{
    TRS_BlasterMsg_t message;
    message.set_blaster_msg(std::string("\0\1\x0b", 3));
    LPMIpcServicePacket good = LpmTestClient::PacketOf(message);
    LPMIpcServicePacket nowhere = good, named = good, torn = good;
    nowhere.clear_destination();
    named.set_msg_typename("IpcCecKey_t");
    torn.set_nested_message("\x0a\x7f");
    for (const auto& packet : {nowhere, named, torn}) {
        for (const std::uint32_t id : {80U, 82U, 84U, 169U, 65537U, 65539U}) {
            a.SendPacket(id, packet);
        }
        EXPECT_EQ(fixture.effects.Take(),
                  "+0 a reply 80 0101\n+0 a event 65541 type 11 0101\n"
                  "+0 a reply 65537 result -3\n+0 a reply 65539 result -1\n");
    }
    EXPECT_EQ(fixture.recorded, "");
    good.clear_msg_typename();
    a.SendPacket(80, good);
    EXPECT_EQ(fixture.effects.Take(), "+0 a reply 80 03000100\n");
}

TEST_F(LpmServerTest, RecordsALineForEachThing)
{
    a.Send(80, "000100");
    a.Send(82, "000701080301000000");
    a.Send(84, "0003020803");
    a.Transfer("0003220803");
    a.SendCecKey(36, 0);
    fixture.blaster.Stop();
    EXPECT_EQ(fixture.recorded,
              R"({"ms": 12345.678, "id": 80, "frame": "000100"}
{"ms": 12345.678, "id": 82, "frame": "000701080301000000"}
{"ms": 12345.678, "ir": {"device": "0x0803", "key": 1, "on": true}}
{"ms": 12345.678, "id": 84, "frame": "0003020803"}
{"ms": 12345.678, "id": 65539, "length": 5, "type": 2, "frame": "0003220803"}
{"ms": 12345.678, "id": 169, "value": 36, "state": 0}
{"ms": 12345.678, "ir": {"device": "0x0803", "key": 1, "on": false}}
)");
}

TEST_F(LpmServerTest, EndsTheKeysOfALostClientAndDropsItsAnswers)
{
    fixture.SendLine(R"({"replies": [{"command": "0x0b", "delayMs": 500},
                              {"command": "0x02", "delayMs": 500}]})");
    a.Send(82, "000701080301000000");
    a.SendCecKey(3, 0);
    a.Send(80, "00010b");
    a.Send(84, "0003020803");
    fixture.effects.Take();
    fixture.runtime.Advance(50);
    b.Disconnect();
    fixture.runtime.Advance(250);
    EXPECT_EQ(fixture.effects.Take(), "+108 light 108000\n+216 light 108000\n+250 cec 41 down\n");
    a.Disconnect();
    fixture.runtime.Advance(1000);
    EXPECT_EQ(fixture.effects.Take(), "+0 ir 0803 1 off\n+0 cec 41 up\n");
}

TEST_F(LpmServerTest, PressesAndReleasesCecKeys)
{
    a.SendCecKey(36, 0);
    a.SendCecKey(0, 1);
    a.SendCecKey(0, 1);
    a.SendCecKey(3, 0);
    fixture.runtime.Advance(600);
    a.SendCecKey(2, 0);
    a.SendCecKey(255, 0);
    a.SendCecKey(260, 0);
    a.SendCecKey(0, 1);
    EXPECT_EQ(fixture.effects.Take(),
              "+0 cec 40 down\n+0 cec 40 up\n+0 cec 41 down\n+250 cec 41 down\n+500 cec 41 down\n"
              "+600 cec 41 up\n+600 cec 42 down\n+600 cec 42 up\n");
    fixture.runtime.Advance(1000);
    EXPECT_EQ(fixture.effects.Take(), "");
}

TEST_F(LpmServerTest, SendsTheMessagesOfStandardInputToAll)
{
    fixture.SendLine(R"({"cec": {"addr": 0, "data": [4, 130], "length": 2}})");
    fixture.SendLine(R"({"event83": "0100"})");
    fixture.SendLine(R"({"event65541": "03000405"})");
    std::string expected;
    for (const char* what :
         {"160 addr: 0 data: 4 data: 130 length: 2", "83 0100", "65541 type 11 03000405"}) {
        expected += fmt::format("+0 a event {0}\n+0 b event {0}\n", what);
    }
    EXPECT_EQ(fixture.effects.Take(), expected);
    for (const char* line :
         {"", "7", R"({"event84": ""})", R"({"event83": 1})", R"({"event83": "0"})",
          R"({"cec": []})", R"({"cec": {"adr": 0}})", R"({"cec": {"data": [256]}})",
          R"({"event83": "01", "replies": [1]})"}) {
        fixture.SendLine(line);
        EXPECT_EQ(fixture.effects.Take(), "") << line;
    }
}

TEST(DeviceRoomServer, AnswersRequestsForItsStateAndSendsEachLineToAll)
{
    VirtualRuntime runtime;
    const auto task = IL::CreateTask("devices", "");
    Lpm::DeviceRoomServer deviceServer(task.get(), [] { return "{}"; });
    const auto watcher = IPCMessageRouterFactory::CreateRouter("watcher", task.get(), nullptr);
    ASSERT_TRUE(deviceServer.Start());
    const auto attempt = runtime.Net().Connect(
        IPCDirectory::Get().Lookup("DeviceRoom").Path(), task->Queue(),
        [watcher](const Orlu::SocketPtr& socket) { watcher->Connect(socket, [] {}); });
    runtime.RunUntilIdle();
    std::string said;
    watcher->AddHandler<LpmDevices::DeviceRoomLine>(
        LpmDevices::DEVICE_ROOM_LINE,
        [&said](const LpmDevices::DeviceRoomLine& line, std::uint32_t) { said += line.json(); });
    deviceServer.SendLine("line ");
    watcher->SendRequestMessage<LpmDevices::DeviceRoomState>(
        LpmDevices::DEVICE_ROOM_STATE, LpmDevices::DeviceRoomRequest(),
        {[&said](const LpmDevices::DeviceRoomState& state) {
            said += state.json();
        }});
    runtime.RunUntilIdle();
    EXPECT_EQ(said, "line {}");
}

}  // namespace
