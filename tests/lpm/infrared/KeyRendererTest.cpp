// SPDX-License-Identifier: Apache-2.0

#include "infrared/KeyRenderer.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace Lpm;

namespace {

using Durations = std::vector<std::uint32_t>;

/// What the key of a code set sends.
struct Sender {
    Sender(const CodesetGroup& group, std::uint32_t scancode)
        : codeset(Codeset(group, {1, 0, scancode})), renderer(codeset, codeset.Keys()[0], false)
    {
    }

    static CodesetBinary Codeset(const CodesetGroup& group, const CodesetKey& key)
    {
        std::string why;
        const auto bytes = CodesetBinary::Compose({&group, 1}, {&key, 1}, why);
        EXPECT_TRUE(bytes) << why;
        return CodesetBinary::Parse(bytes.value(), why).value();
    }

    Durations Frame(unsigned index)
    {
        const auto durations = renderer.Frame(index).durationsUs;
        return {durations.begin(), durations.end()};
    }

    std::uint32_t Length(unsigned index)
    {
        const Durations frame = Frame(index);
        return std::accumulate(frame.begin(), frame.end(), 0U);
    }

    CodesetBinary codeset;
    KeyRenderer renderer;
};

TEST(KeyRenderer, KeepsThePaceOfEachProtocol)
{
    const struct {
        Protocol protocol;
        std::uint32_t scancode;
        std::uint32_t carrierHz;
        unsigned minimum;
        std::uint32_t firstUs;
        std::uint32_t heldUs;
        std::size_t heldDurations;
    } rows[] = {
        {Protocol::kNec, 0x0408, 38000, 1, 108000, 108000, 4},
        {Protocol::kNecx, 0xffffff, 38000, 1, 108000, 108000, 4},
        {Protocol::kNec32, 0xffffffff, 38000, 1, 108000, 108000, 4},
        {Protocol::kSamsung, 0x070702, 38000, 1, 108000, 108000, 68},
        {Protocol::kRc5, 0x1f7f, 36000, 1, 113778, 113778, 26},
        {Protocol::kRc6Mode0, 0xffff, 36000, 1, 106667, 106667, 42},
        {Protocol::kRc6Mce, 0x80000000, 36000, 1, 106667, 106667, 74},
        {Protocol::kSony12, 0x1f007f, 40000, 3, 45000, 45000, 26},
        {Protocol::kSony15, 0, 40000, 3, 45000, 45000, 32},
        {Protocol::kSony20, 0x1fff7f, 40000, 3, 45000, 45000, 42},
        {Protocol::kJvc, 0xa317, 38000, 1, 59100, 46400, 34},
        {Protocol::kSharp, 0x0116, 38000, 1, 122640, 122640, 64},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(FindProtocol(static_cast<std::uint8_t>(row.protocol))->name);
        Sender sender({.protocol = row.protocol}, row.scancode);
        EXPECT_EQ(sender.renderer.MinimumFrames(), row.minimum);
        EXPECT_EQ(sender.renderer.Frame(0).carrierHz, row.carrierHz);
        EXPECT_EQ(sender.Length(0), row.firstUs);
        EXPECT_EQ(sender.Length(row.minimum), row.heldUs);
        EXPECT_EQ(sender.Frame(row.minimum).size(), row.heldDurations);
        EXPECT_EQ(sender.Frame(row.minimum), sender.Frame(100000));
    }
}

TEST(KeyRenderer, LetsTheGroupSayCarrierFramesAndLight)
{
    Sender nec({.protocol = Protocol::kNec, .carrierKHz = 40, .minimumFrames = 2}, 0xa51c);
    EXPECT_EQ(nec.renderer.MinimumFrames(), 2u);
    EXPECT_EQ(nec.renderer.Frame(1).carrierHz, 40000u);
    EXPECT_EQ(nec.Frame(1).size(), 68u);
    EXPECT_EQ(nec.Frame(2).size(), 4u);

    CodesetGroup raw = {.protocol = Protocol::kRaw,
                        .carrierKHz = 56,
                        .rawDurationsUs = {300, 900, 20000},
                        .rawSequences = {{.press = {0, 1, 1, 2}, .repeat = {1, 2}}}};
    Sender stored(raw, 0);
    EXPECT_EQ(stored.Frame(0), (Durations{300, 900, 900, 20000}));
    EXPECT_EQ(stored.Frame(1), (Durations{900, 20000}));
    raw.rawSequences[0].repeat.clear();
    EXPECT_EQ(Sender(raw, 0).Frame(7).size(), 4u);
}

}  // namespace
