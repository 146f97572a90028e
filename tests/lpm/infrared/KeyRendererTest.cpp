// SPDX-License-Identifier: Apache-2.0

#include "infrared/KeyRenderer.h"

#include <gtest/gtest.h>

#include <numeric>

#include "lpm/Rendered.h"

using namespace Lpm;

namespace {

std::uint32_t Length(const Durations& frame)
{
    return std::accumulate(frame.begin(), frame.end(), 0U);
}

TEST(KeyRenderer, KeepsThePeriodsOfEachProtocol)
{
    const struct {
        const char* protocol;
        std::uint32_t scancode;
        std::uint32_t carrierHz;
        std::size_t minimum;
        std::uint32_t firstUs;
        std::uint32_t heldUs;
        std::size_t heldDurations;
    } rows[] = {
        {"nec", 0x0408, 38000, 1, 108000, 108000, 4},
        {"necx", 0xffffff, 38000, 1, 108000, 108000, 4},
        {"nec32", 0xffffffff, 38000, 1, 108000, 108000, 4},
        {"samsung", 0x070702, 38000, 1, 108000, 108000, 68},
        {"rc5", 0x1f7f, 36000, 1, 113778, 113778, 26},
        {"rc6_0", 0xffff, 36000, 1, 106667, 106667, 42},
        {"rc6_mce", 0x80000000, 36000, 1, 106667, 106667, 74},
        {"sony12", 0x1f007f, 40000, 3, 45000, 45000, 26},
        {"sony15", 0, 40000, 3, 45000, 45000, 32},
        {"sony20", 0x1fff7f, 40000, 3, 45000, 45000, 42},
        {"jvc", 0xa317, 38000, 1, 59100, 46400, 34},
        {"sharp", 0x0116, 38000, 1, 122640, 122640, 64},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.protocol);
        const Rendered rendered(row.protocol, row.scancode);
        EXPECT_EQ(rendered.press.size(), row.minimum);
        EXPECT_EQ(rendered.carrierHz, row.carrierHz);
        EXPECT_EQ(Length(rendered.press[0]), row.firstUs);
        EXPECT_EQ(Length(rendered.held), row.heldUs);
        EXPECT_EQ(rendered.held.size(), row.heldDurations);
    }
}

TEST(KeyRenderer, LetsTheGroupSayCarrierFramesAndDurations)
{
    const Rendered nec({.protocol = Protocol::kNec, .carrierKHz = 40, .minimumFrames = 2}, 0xa51c);
    EXPECT_EQ(nec.press.size(), 2U);
    EXPECT_EQ(nec.carrierHz, 40000U);
    EXPECT_EQ(nec.press[1].size(), 68U);
    EXPECT_EQ(nec.held.size(), 4U);

    CodesetGroup raw = {.protocol = Protocol::kRaw,
                        .carrierKHz = 56,
                        .rawDurationsUs = {300, 900, 20000},
                        .rawSequences = {{.press = {0, 1, 1, 2}, .repeat = {1, 2}}}};
    const Rendered stored(raw, 0);
    EXPECT_EQ(stored.press.at(0), (Durations{300, 900, 900, 20000}));
    EXPECT_EQ(stored.held, (Durations{900, 20000}));
    raw.rawSequences[0].repeat.clear();
    EXPECT_EQ(Rendered(raw, 0).held.size(), 4U);
}

}  // namespace
