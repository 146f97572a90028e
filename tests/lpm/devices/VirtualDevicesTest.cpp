// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "devices/Json.h"
#include "devices/VirtualDevices.h"
#include "lpm/Rendered.h"

namespace Lpm {
namespace {

constexpr const char* kTelevision = "television";
constexpr const char* kBox = "set_top_box";
constexpr const char* kDisc = "disc_player";

std::string LivingRoom()
{
    std::ostringstream text;
    text << std::ifstream(LIVING_ROOM).rdbuf();
    return text.str();
}

/// The virtual devices of living-room.json, a blaster, and the lines since the last call.
class VirtualDevicesTest : public ::testing::Test {
protected:
    /// Sends one press of a key, held for `repeats` repeats.
    void HandleFrame(std::string_view protocol, std::uint32_t scancode, unsigned repeats = 0)
    {
        m_toggle = !m_toggle;
        const Rendered rendered(protocol, scancode, m_toggle);
        auto frames = rendered.press;
        frames.insert(frames.end(), repeats, rendered.held);
        for (const auto& frame : frames) {
            m_devices->HandleFrame({rendered.carrierHz, frame});
            m_now += protocol == "sony20" ? 45U : 108U;
        }
        m_now += 1000;
    }

    /// Presses a key of one of the devices; `code` is the last byte of its scancode.
    void Press(const char* device, unsigned code, unsigned repeats = 0)
    {
        const std::string_view name = device;
        if (name == kTelevision) {
            HandleFrame("necx", 0x5bc400 | code, repeats);
        } else if (name == kBox) {
            HandleFrame("rc6_mce", 0x80340000 | code, repeats);
        } else {
            HandleFrame("sony20", 0x1a4900 | code, repeats);
        }
    }

    void Cec(std::initializer_list<unsigned> codes)
    {
        for (const unsigned code : codes) {
            m_devices->ReceiveCecKey(static_cast<std::uint8_t>(code), true);
            m_devices->ReceiveCecKey(0, false);
        }
    }

    /// Those members of a device's state that `members` names; both as JSON.
    std::string State(const char* device, const std::string& members) const
    {
        Json::Value all, some;
        std::string why;
        Devices::ParseObject(m_devices->StateAsJson(), all, why);
        EXPECT_TRUE(Devices::ParseObject(members, some, why)) << members;
        for (const std::string& member : some.getMemberNames()) {
            some[member] = all[device][member];
        }
        return Devices::OneLine(some);
    }

    std::string Lines() { return std::exchange(m_lines, {}); }

    std::uint64_t m_now = 1000000;
    bool m_toggle = true;
    std::string m_lines;
    std::string m_why;
    std::unique_ptr<VirtualDevices> m_devices = VirtualDevices::Load(
        LivingRoom(), [this](const std::string& line) { m_lines += line + "\n"; }, m_why,
        [this] { return m_now; });
};

TEST_F(VirtualDevicesTest, ReportsEachFrameAndEachChangeInALine)
{
    Press(kTelevision, 0x01, 1);
    m_devices->HandleFrame({40000, std::vector<std::uint32_t>{2400, 600, 600, 10000}});
    Cec({0x41});
    EXPECT_EQ(Lines(),
              R"({"light":{"carrier":38000,"protocol":"necx","repeat":false,"scancode":"0x5bc401"}}
{"cause":{"protocol":"necx","scancode":"0x5bc401"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":20}}
{"light":{"carrier":38000,"protocol":"necx","repeat":true,"scancode":"0x5bc401"}}
{"light":{"carrier":40000,"durations":4,"protocol":"unknown"}}
{"cause":{"cec":"0x41"},"device":"television","state":{"channel":1,"column":0,"input":"tv","mute":false,"power":true,"row":0,"screen":"none","volume":21}}
)");
}

TEST_F(VirtualDevicesTest, IgnoresOtherProtocolsAndAllKeysButPowerWhileOff)
{
    HandleFrame("nec", 0x0408);
    HandleFrame("necx", 0xc14486);
    HandleFrame("rc6_mce", 0x800f040c);
    HandleFrame("sony20", 0x1ae215);
    for (const unsigned code : {0x06U, 0x08U, 0x11U, 0x03U}) {
        Press(kTelevision, code);
    }
    Cec({0x41, 0x43, 0x30, 0x6c});
    Press(kDisc, 0x32);
    EXPECT_EQ(Lines().find("device"), std::string::npos);
}

TEST_F(VirtualDevicesTest, FollowsTheKeysOfEachDevice)
{
    const struct {
        const char* device;
        unsigned code;
        unsigned repeats;
        const char* state;
    } rows[] = {
        {kTelevision, 0x02, 0, R"({"power":true})"},
        {kTelevision, 0x02, 0, R"({"power":true})"},
        {kTelevision, 0x06, 7, R"({"volume":28})"},
        {kTelevision, 0x08, 3, R"({"mute":true})"},
        {kTelevision, 0x07, 200, R"({"mute":false,"volume":0})"},
        {kTelevision, 0x24, 2, R"({"input":"hdmi_4"})"},
        {kTelevision, 0x20, 0, R"({"input":"tv"})"},
        {kTelevision, 0x05, 0, R"({"channel":999})"},
        {kTelevision, 0x04, 1, R"({"channel":2})"},
        {kTelevision, 0x31, 0, R"({"row":0,"screen":"none"})"},
        {kTelevision, 0x38, 0, R"({"screen":"guide"})"},
        {kTelevision, 0x31, 2, R"({"row":3})"},
        {kTelevision, 0x36, 0, R"({"row":0,"screen":"none"})"},
        {kBox, 0x01, 0, R"({"power":true})"},
        {kBox, 0x11, 0, R"({"channel":1})"},
        {kBox, 0x10, 0, R"({"channel":10})"},
        {kBox, 0x15, 0, R"({"channel":105})"},
        {kBox, 0x17, 0, R"({"channel":7})"},  // a fourth digit begins a new number
        {kBox, 0x04, 0, R"({"channel":8})"},
        {kBox, 0x12, 0, R"({"channel":2})"},  // another key ended the number
        {kBox, 0x10, 20, R"({"channel":20})"},
        {kBox, 0x10, 0, R"({"channel":20})"},  // time ended it, and there is no channel 0
        {kBox, 0x04, 0, R"({"channel":21})"},
        {kBox, 0x11, 0, R"({"channel":1})"},
        {kBox, 0x15, 0, R"({"channel":15})"},
        {kBox, 0x09, 0, R"({"channel":21})"},  // the one before the whole number
        {kBox, 0x43, 0, R"({"playing":"stopped","recording":true})"},
        {kBox, 0x42, 0, R"({"playing":"stopped","recording":false})"},
        {kDisc, 0x15, 0, R"({"power":true})"},
        {kDisc, 0x39, 0, R"({"playing":"stopped"})"},  // nothing to pause
        {kDisc, 0x16, 0, R"({"tray":"open"})"},
        {kDisc, 0x32, 0, R"({"playing":"playing","tray":"closed"})"},
        {kDisc, 0x39, 0, R"({"playing":"paused"})"},
        {kDisc, 0x15, 0, R"({"playing":"stopped","power":false})"},
    };
    for (const auto& row : rows) {
        Press(row.device, row.code, row.repeats);
        EXPECT_EQ(State(row.device, row.state), row.state) << row.device << row.code;
    }
}

TEST_F(VirtualDevicesTest, TellsAHeldCecKeyFromANewPress)
{
    for (const unsigned wait : {500U, 500U, 500U, 600U}) {
        m_devices->ReceiveCecKey(0x40, true);
        m_now += wait;
    }
    for (unsigned i = 0; i < 3; ++i) {
        m_devices->ReceiveCecKey(0x41, true);
        m_now += 400;
    }
    EXPECT_EQ(State(kTelevision, R"({"power":0,"volume":0})"), R"({"power":true,"volume":23})");
    Cec({0x42, 0x43, 0x24, 0x22, 0x30, 0x6d, 0xff, 0x40, 0x40});
    EXPECT_EQ(State(kTelevision, R"({"channel":0,"mute":0,"power":0,"volume":0})"),
              R"({"channel":43,"mute":true,"power":true,"volume":22})");
    EXPECT_EQ(State(kBox, R"({"power":0})"), R"({"power":false})");
}

}  // namespace
}  // namespace Lpm
