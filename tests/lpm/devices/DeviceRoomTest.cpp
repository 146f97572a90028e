// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "Wires.h"
#include "devices/DeviceRoom.h"
#include "devices/Json.h"

namespace Lpm {
namespace {

using Devices::Durations;

std::string LivingRoom()
{
    std::ostringstream text;
    text << std::ifstream(LIVING_ROOM).rdbuf();
    return text.str();
}

/// The living room, a diode in it, and what the room said since one last looked.
class DeviceRoomTest : public ::testing::Test {
protected:
    void Shine(std::uint32_t carrierHz, const Durations& frame, unsigned ms = 108)
    {
        m_room->Shine({carrierHz, frame});
        m_now += ms;
    }

    /// One press of a television key, held for so many repeats.
    void Television(std::string_view command, unsigned repeats = 0)
    {
        std::string bits = "1101101000100011" + std::string(command);
        for (const char bit : command) {
            bits += bit == '1' ? '0' : '1';
        }
        Shine(38000, Devices::NecFrame(bits));
        for (unsigned i = 0; i < repeats; ++i) {
            Shine(38000, Devices::NecDitto());
        }
        m_now += 1000;
    }

    void Box(std::string_view command)
    {
        const std::string bits = "1110t1000000000110100" + std::string(m_toggle ? "1" : "0");
        m_toggle = !m_toggle;
        Shine(36000, Devices::Rc6Frame(bits + "0000000" + std::string(command)));
    }

    void Disc(std::string_view command)
    {
        for (unsigned i = 0; i < 3; ++i) {
            Shine(40000, Devices::SonyFrame(std::string(command) + "0101110010010"), 45);
        }
        m_now += 1000;
    }

    void Cec(std::initializer_list<unsigned> codes)
    {
        for (const unsigned code : codes) {
            m_room->ReceiveCecKey(static_cast<std::uint8_t>(code), true);
            m_room->ReceiveCecKey(0, false);
        }
    }

    /// One member of a device's state, as JSON.
    std::string State(const char* device, const char* member) const
    {
        Json::Value all;
        std::string why;
        Devices::ParseObject(m_room->StateAsJson(), all, why);
        return Devices::OneLine(all[device][member]);
    }

    std::string Lines() { return std::exchange(m_lines, {}); }

    static constexpr std::string_view kPower = "10000000";
    static constexpr std::string_view kVolumeUp = "01100000";

    std::uint64_t m_now = 1000000;
    bool m_toggle = true;
    std::string m_lines;
    std::string m_why;
    std::unique_ptr<DeviceRoom> m_room = DeviceRoom::Load(
        LivingRoom(), [this](const std::string& line) { m_lines += line + "\n"; }, m_why,
        [this] { return m_now; });
};

TEST_F(DeviceRoomTest, SaysEachSightAndEachChangeInALine)
{
    Television(kPower, 1);
    Television(kVolumeUp, 1);
    Shine(40000, {2400, 600, 600, 10000});
    EXPECT_EQ(Lines(),
              R"({"light":{"carrier":38000,"protocol":"necx","repeat":false,"scancode":"0x5bc401"}}
{"cause":{"protocol":"necx","scancode":"0x5bc401"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":20}}
{"light":{"carrier":38000,"protocol":"necx","repeat":true,"scancode":"0x5bc401"}}
{"light":{"carrier":38000,"protocol":"necx","repeat":false,"scancode":"0x5bc406"}}
{"cause":{"protocol":"necx","scancode":"0x5bc406"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":21}}
{"light":{"carrier":38000,"protocol":"necx","repeat":true,"scancode":"0x5bc406"}}
{"cause":{"protocol":"necx","scancode":"0x5bc406"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":22}}
{"light":{"carrier":40000,"durations":4,"protocol":"unknown"}}
)");
}

TEST_F(DeviceRoomTest, TakesOnlyPowerWhileOff)
{
    for (const auto* command : {"01100000", "00010000", "10001000", "11000000"}) {
        Television(command);
    }
    Cec({0x41, 0x43, 0x30, 0x6c});
    Disc("0100110");
    EXPECT_EQ(Lines().find("device"), std::string::npos);
    Television("01000000");
    EXPECT_EQ(State("television", "power"), "true");
    Television("01000000");
    EXPECT_EQ(State("television", "power"), "true") << "on stays on";
    Television("11000000");
    EXPECT_EQ(State("television", "power"), "false");
}

TEST_F(DeviceRoomTest, LetsEachDeviceSeeItsOwnCodesOnly)
{
    for (const Devices::Wire& wire : Devices::Wires()) {
        if (wire.name == "our tv" || wire.name == "our box") {
            continue;
        }
        for (const Durations& frame : wire.press) {
            Shine(Devices::InfoOf(wire.protocol).carrierHz, frame);
        }
    }
    EXPECT_EQ(Lines().find("device"), std::string::npos);
    Disc("1010100");
    EXPECT_EQ(State("disc_player", "power"), "true");
    EXPECT_EQ(State("television", "power") + State("set_top_box", "power"), "falsefalse");
    Box("00000001");
    EXPECT_EQ(State("set_top_box", "power"), "true");
    EXPECT_EQ(State("television", "power"), "false");
}

TEST_F(DeviceRoomTest, StepsTheVolumeWhileHeldWithinItsRange)
{
    Television(kPower);
    Television(kVolumeUp, 7);
    EXPECT_EQ(State("television", "volume"), "28");
    Television(kVolumeUp, 100);
    EXPECT_EQ(State("television", "volume"), "100");
    Television("00010000", 3);
    EXPECT_EQ(State("television", "mute"), "true") << "a held mute key mutes once";
    Television("11100000", 200);
    EXPECT_EQ(State("television", "volume") + State("television", "mute"), "0false");
}

TEST_F(DeviceRoomTest, MakesChannelsOutOfDigits)
{
    Box("00000001");
    Box("00010001");
    Box("00010000");
    Box("00010101");
    EXPECT_EQ(State("set_top_box", "channel"), "105");
    Box("00010111");
    EXPECT_EQ(State("set_top_box", "channel"), "7") << "a fourth digit begins a new number";
    Box("00000100");
    Box("00010010");
    EXPECT_EQ(State("set_top_box", "channel"), "2") << "another key ends the number";
    m_now += 2001;
    Box("00010000");
    EXPECT_EQ(State("set_top_box", "channel"), "2") << "there is no channel 0";
    Box("00011001");
    EXPECT_EQ(State("set_top_box", "channel"), "9");
    Box("00010001");
    Box("00000101");
    EXPECT_EQ(State("set_top_box", "channel"), "90");
    Box("00001001");
    EXPECT_EQ(State("set_top_box", "channel"), "91");
    Box("00010101");
    Box("00010101");
    Box("00001001");
    EXPECT_EQ(State("set_top_box", "channel"), "91") << "the one before the whole number";
}

TEST_F(DeviceRoomTest, ChoosesInputsAndGoesRoundTheChannels)
{
    Television(kPower);
    Television("11000100");
    EXPECT_EQ(State("television", "input"), "\"hdmi_3\"");
    Television("00000100", 2);
    Television("00000100");
    EXPECT_EQ(State("television", "input"), "\"tv\"");
    Television("10100000");
    EXPECT_EQ(State("television", "channel"), "999");
    Television("00100000", 1);
    EXPECT_EQ(State("television", "channel"), "2");
}

TEST_F(DeviceRoomTest, OpensScreensAndMovesOnThem)
{
    Television(kPower);
    Television("10001100");
    EXPECT_EQ(State("television", "row"), "0") << "no screen, no cursor";
    Television("00011100");
    Television("10001100", 2);
    Television("11001100");
    EXPECT_EQ(State("television", "screen") + State("television", "row"), "\"guide\"3");
    EXPECT_EQ(State("television", "column"), "1");
    Television("01101100");
    EXPECT_EQ(State("television", "screen") + State("television", "row"), "\"none\"0");
}

TEST_F(DeviceRoomTest, PlaysDiscs)
{
    Disc("1010100");
    Disc("1001110");
    EXPECT_EQ(State("disc_player", "playing"), "\"stopped\"") << "nothing to pause";
    Disc("0110100");
    EXPECT_EQ(State("disc_player", "tray"), "\"open\"");
    Disc("0100110");
    EXPECT_EQ(State("disc_player", "playing") + State("disc_player", "tray"),
              "\"playing\"\"closed\"");
    Disc("1000110");
    Disc("1001110");
    EXPECT_EQ(State("disc_player", "playing") + State("disc_player", "chapter"), "\"paused\"2");
    Disc("1010100");
    EXPECT_EQ(State("disc_player", "playing") + State("disc_player", "power"), "\"stopped\"false");
}

TEST_F(DeviceRoomTest, RecordsUntilItStops)
{
    Box("00000001");
    Box("01000011");
    Box("01000001");
    EXPECT_EQ(State("set_top_box", "recording") + State("set_top_box", "playing"),
              "true\"paused\"");
    Box("01000010");
    EXPECT_EQ(State("set_top_box", "recording") + State("set_top_box", "playing"),
              "false\"stopped\"");
}

TEST_F(DeviceRoomTest, TakesCecKeysOnTheTelevision)
{
    Cec({0x40});
    EXPECT_EQ(
        Lines(),
        R"({"cause":{"cec":"0x40"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":20}}
)");
    Cec({0x41, 0x41, 0x42, 0x43, 0x24, 0x22, 0x30, 0x6d, 0xff});
    EXPECT_EQ(State("television", "channel") + State("television", "volume"), "4321");
    EXPECT_EQ(State("television", "mute") + State("television", "power"), "truetrue");
    Cec({0x6c});
    EXPECT_EQ(State("television", "power"), "false");
    EXPECT_EQ(State("set_top_box", "power"), "false");
}

TEST_F(DeviceRoomTest, TellsAHeldCecKeyFromANewPress)
{
    for (const unsigned wait : {500U, 500U, 500U, 600U}) {
        m_room->ReceiveCecKey(0x40, true);
        m_now += wait;
    }
    EXPECT_EQ(State("television", "power"), "true") << "one press, held";
    for (unsigned i = 0; i < 3; ++i) {
        m_room->ReceiveCecKey(0x41, true);
        m_now += 400;
    }
    EXPECT_EQ(State("television", "volume"), "23");
    m_room->ReceiveCecKey(0x40, true);
    EXPECT_EQ(State("television", "power"), "false");
    m_room->ReceiveCecKey(0, false);
    m_room->ReceiveCecKey(0x40, true);
    EXPECT_EQ(State("television", "power"), "true") << "released and pressed again at once";
}

}  // namespace
}  // namespace Lpm
