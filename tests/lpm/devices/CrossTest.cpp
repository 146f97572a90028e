// SPDX-License-Identifier: Apache-2.0

#include <numeric>
#include <string>

#include <gtest/gtest.h>

#include "devices/Receiver.h"
#include "infrared/KeyRenderer.h"

namespace Lpm {
namespace {

struct Row {
    std::string_view protocol;
    std::vector<std::uint32_t> scancodes;
};

/// What the blaster makes of a scancode, as a receiver reads it: a press, then two repeats.
std::string ReadBack(Devices::Protocol receiverOf, const CodesetBinary& codeset, bool toggle)
{
    KeyRenderer renderer(codeset, codeset.Keys().front(), toggle);
    Devices::Receiver receiver(receiverOf);
    Devices::Microseconds now{};
    std::string read;
    for (unsigned i = 0; i < renderer.MinimumFrames() + 2; ++i) {
        const LightFrame frame = renderer.Frame(i);
        for (const auto& code : receiver.Look(frame, now).codes) {
            read += ScancodeText(code.protocol, code.scancode);
            read += code.toggle.value_or(toggle) == toggle ? "" : " wrong toggle";
            read += code.repeat ? " repeat " : " ";
        }
        const auto durations = frame.durationsUs;
        now += Devices::Microseconds(
            std::accumulate(durations.begin(), durations.end(), std::uint64_t{0}));
    }
    return read;
}

/// Two readings of the same public definitions, by code that shares nothing, have to agree.
TEST(BlasterAndDevices, AgreeOnEachProtocol)
{
    const Row rows[] = {
        {"nec", {0x0408, 0x0000, 0xffff, 0x55aa, 0x8001}},
        {"necx", {0xc14486, 0x5bc401, 0x000100, 0xfffeff, 0x866b1c}},
        {"nec32", {0x3085f009, 0x77e12040, 0x00000001, 0xfffffffe}},
        {"samsung", {0x070702, 0xe0e000, 0x0b0bff, 0x000001}},
        {"rc5", {0x000c, 0x1e3d, 0x1f7f, 0x0040, 0x0543}},
        {"rc6_0", {0x0000, 0x000c, 0xffff, 0x55aa, 0x8001}},
        {"rc6_mce", {0x800f040c, 0x80340001, 0x800f7fff, 0x80460000}},
        {"sony12", {0x010015, 0x00007f, 0x1f0000, 0x100001}},
        {"sony15", {0x97002e, 0xff0000, 0x00007f, 0x540055}},
        {"sony20", {0x1a4915, 0x1ae215, 0x00ff00, 0x1f007f, 0x1fff7f}},
        {"jvc", {0x0317, 0x0000, 0xffff, 0x55aa, 0x8001}},
        {"sharp", {0x0116, 0x0000, 0x1fff, 0x1055, 0x01aa}},
    };
    for (const Row& row : rows) {
        const auto receiverOf = *Devices::ProtocolByName(row.protocol);
        const ProtocolRow& rendered = *FindProtocol(row.protocol);
        for (const std::uint32_t scancode : row.scancodes) {
            SCOPED_TRACE(std::string(row.protocol) + " " + std::to_string(scancode));
            const CodesetGroup group{.protocol = rendered.id};
            const CodesetKey key{.ueiKey = 1, .group = 0, .scancode = scancode};
            std::string why;
            const auto bytes = CodesetBinary::Compose({&group, 1}, {&key, 1}, why);
            ASSERT_TRUE(bytes) << why;
            const auto codeset = CodesetBinary::Parse(*bytes, why);
            ASSERT_TRUE(codeset) << why;
            const std::string text = Devices::ScancodeText(receiverOf, scancode);
            for (const bool toggle : {false, true}) {
                EXPECT_EQ(ReadBack(receiverOf, *codeset, toggle),
                          text + " " + text + " repeat " + text + " repeat ");
            }
        }
    }
}

}  // namespace
}  // namespace Lpm
