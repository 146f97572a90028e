// SPDX-License-Identifier: Apache-2.0

#include "infrared/KeyRenderer.h"

#include <gtest/gtest.h>

#include <numeric>

#include "infrared/RenderText.h"

using namespace Lpm;

namespace {

CodesetBinary Codeset(const CodesetGroup& group, std::uint32_t scancode)
{
    std::string why;
    const std::vector<CodesetKey> keys = {{1, 0, scancode}};
    const auto bytes = CodesetBinary::Compose(std::vector{group}, keys, why);
    EXPECT_TRUE(bytes) << why;
    return CodesetBinary::Parse(bytes.value(), why).value();
}

std::uint32_t Length(const LightFrame& frame)
{
    return std::accumulate(frame.durationsUs.begin(), frame.durationsUs.end(), std::uint32_t{0});
}

std::vector<std::uint32_t> Durations(const LightFrame& frame)
{
    return {frame.durationsUs.begin(), frame.durationsUs.end()};
}

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
        const CodesetBinary codeset = Codeset({.protocol = row.protocol}, row.scancode);
        KeyRenderer renderer(codeset, codeset.Keys()[0], false);
        EXPECT_EQ(renderer.MinimumFrames(), row.minimum);
        EXPECT_EQ(renderer.Frame(0).carrierHz, row.carrierHz);
        EXPECT_EQ(Length(renderer.Frame(0)), row.firstUs);
        EXPECT_EQ(Length(renderer.Frame(row.minimum)), row.heldUs);
        EXPECT_EQ(renderer.Frame(row.minimum).durationsUs.size(), row.heldDurations);
        EXPECT_EQ(Durations(renderer.Frame(row.minimum)), Durations(renderer.Frame(100000)));
    }
}

TEST(KeyRenderer, LetsTheGroupSayCarrierAndLeastFrames)
{
    const CodesetBinary codeset =
        Codeset({.protocol = Protocol::kNec, .carrierKHz = 40, .minimumFrames = 2}, 0xa51c);
    KeyRenderer renderer(codeset, codeset.Keys()[0], false);
    EXPECT_EQ(renderer.MinimumFrames(), 2u);
    EXPECT_EQ(renderer.Frame(1).carrierHz, 40000u);
    EXPECT_EQ(renderer.Frame(1).durationsUs.size(), 68u);
    EXPECT_EQ(renderer.Frame(2).durationsUs.size(), 4u);
}

TEST(KeyRenderer, SendsStoredSequencesAndTheirRepeat)
{
    CodesetGroup raw = {.protocol = Protocol::kRaw,
                        .carrierKHz = 56,
                        .rawDurationsUs = {300, 900, 20000},
                        .rawSequences = {{.press = {0, 1, 1, 2}, .repeat = {1, 2}}}};
    const CodesetBinary codeset = Codeset(raw, 0);
    KeyRenderer renderer(codeset, codeset.Keys()[0], false);
    EXPECT_EQ(renderer.MinimumFrames(), 1u);
    EXPECT_EQ(renderer.Frame(0).carrierHz, 56000u);
    EXPECT_EQ(Durations(renderer.Frame(0)), (std::vector<std::uint32_t>{300, 900, 900, 20000}));
    EXPECT_EQ(Durations(renderer.Frame(1)), (std::vector<std::uint32_t>{900, 20000}));
    raw.rawSequences[0].repeat.clear();
    const CodesetBinary plain = Codeset(raw, 0);
    EXPECT_EQ(KeyRenderer(plain, plain.Keys()[0], false).Frame(7).durationsUs.size(), 4u);
}

TEST(RenderText, WritesLinesThatOtherProgramsRead)
{
    std::string why;
    EXPECT_EQ(RenderText("sony12:65557", false, 0, why),
              RenderText("sony12:0x010015", true, 0, why));
    EXPECT_EQ(RenderText("rc5:0x1e3d", true, 0, why),
              "carrier 36000\n"
              "pulse 889\nspace 889\npulse 889\nspace 889\npulse 889\nspace 889\n"
              "pulse 889\nspace 889\npulse 889\nspace 889\npulse 889\nspace 889\n"
              "pulse 1778\nspace 1778\npulse 889\nspace 889\npulse 889\nspace 889\n"
              "pulse 889\nspace 889\npulse 1778\nspace 1778\npulse 889\n"
              "space 89775\n");
    const std::string once = RenderText("nec:0x0408", false, 0, why).value();
    EXPECT_EQ(RenderText("nec:0x0408", false, 2, why),
              once + "pulse 9000\nspace 2250\npulse 562\nspace 96188\n" +
                  "pulse 9000\nspace 2250\npulse 562\nspace 96188\n");
}

TEST(RenderText, SaysWhatIsWrongInOneLine)
{
    const struct {
        std::string_view key;
        std::string_view why;
    } rows[] = {
        {"nec", "'nec' is no key; PROTOCOL:SCANCODE is, such as nec:0x0408"},
        {"", "'' is no key; PROTOCOL:SCANCODE is, such as nec:0x0408"},
        {"raw:0",
         "unknown protocol 'raw'; known are nec, necx, nec32, samsung, rc5, rc6_0, rc6_mce, "
         "sony12, "
         "sony15, sony20, jvc, sharp"},
        {"nec:", "'' is no scancode; 0x0408 or 1032 is"},
        {"nec:0x", "'0x' is no scancode; 0x0408 or 1032 is"},
        {"nec:-1", "'-1' is no scancode; 0x0408 or 1032 is"},
        {"nec:12 ", "'12 ' is no scancode; 0x0408 or 1032 is"},
        {"nec:0x10000", "scancode 0x10000 does not fit nec, whose bits are 0xffff"},
        {"sony12:0x80", "scancode 0x80 does not fit sony12, whose bits are 0x1f007f"},
        {"rc6_mce:0x800f840c",
         "scancode 0x800f840c does not fit rc6_mce, whose bits are 0xffff7fff"},
        {"nec32:4294967296", "scancode 4294967296 does not fit nec32, whose bits are 0xffffffff"},
    };
    for (const auto& row : rows) {
        std::string why;
        EXPECT_FALSE(RenderText(row.key, false, 0, why)) << row.key;
        EXPECT_EQ(why, row.why);
    }
    std::string why;
    EXPECT_FALSE(RenderText("nec:1", false, 1001, why));
    EXPECT_EQ(why, "1001 repeats are more than 1000");
}

}  // namespace
