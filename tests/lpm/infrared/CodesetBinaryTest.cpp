// SPDX-License-Identifier: Apache-2.0

#include "infrared/CodesetBinary.h"

#include <gtest/gtest.h>

#include <boost/crc.hpp>
#include <functional>
#include <numeric>

#include "infrared/KeyRenderer.h"

using namespace Lpm;

namespace {

using Bytes = std::vector<std::uint8_t>;

const std::vector<CodesetGroup> kGroups = {
    {.protocol = Protocol::kNec},
    {.protocol = Protocol::kRaw,
     .carrierKHz = 40,
     .minimumFrames = 2,
     .rawDurationsUs = {500, 1500, 40000},
     .rawSequences = {{.press = {0, 1, 0, 2}, .repeat = {1, 2}}, {.press = {1, 2}, .repeat = {}}}}};

const std::vector<CodesetKey> kKeys = {{1, 0, 0x0408}, {8, 1, 1}, {244, 1, 0}};

Bytes Good()
{
    std::string why;
    return CodesetBinary::Compose(kGroups, kKeys, why).value();
}

std::string WhyRefused(std::span<const std::uint8_t> bytes)
{
    std::string why;
    return CodesetBinary::Parse(bytes, why) ? "accepted" : why;
}

/// Sets the length and the checksum of a changed binary, so that only the change can be refused.
Bytes Resealed(Bytes bytes)
{
    bytes[6] = static_cast<std::uint8_t>(bytes.size());
    bytes[7] = static_cast<std::uint8_t>(bytes.size() >> 8);
    boost::crc_ccitt_false_t crc;
    crc.process_bytes(bytes.data(), bytes.size() - 2);
    bytes[bytes.size() - 2] = static_cast<std::uint8_t>(crc.checksum());
    bytes[bytes.size() - 1] = static_cast<std::uint8_t>(crc.checksum() >> 8);
    return bytes;
}

TEST(CodesetBinary, ReadsBackAsComposedInTheDocumentedBytes)
{
    std::string why;
    const std::vector<CodesetKey> shuffled = {kKeys[2], kKeys[0], kKeys[1]};
    const std::optional<CodesetBinary> codeset =
        CodesetBinary::Parse(CodesetBinary::Compose(kGroups, shuffled, why).value(), why);
    ASSERT_TRUE(codeset) << why;
    EXPECT_EQ(codeset->Keys(), kKeys);
    EXPECT_EQ(codeset->Groups(), kGroups);
    ASSERT_NE(codeset->Find(8), nullptr);
    EXPECT_EQ(*codeset->Find(8), kKeys[1]);
    EXPECT_EQ(codeset->Find(9), nullptr);
    EXPECT_EQ(codeset->Find(245), nullptr);

    const CodesetGroup group = {.protocol = Protocol::kSony20, .minimumFrames = 4};
    const CodesetKey key = {24, 0, 0x1a4932};
    const Bytes expected = Resealed({'T', 'R', 1,    1,    1,    0, 20, 0,  //
                                     10,  0,   4,    0,                     //
                                     24,  0,   0x32, 0x49, 0x1a, 0, 0,  0});
    EXPECT_EQ(CodesetBinary::Compose({&group, 1}, {&key, 1}, why), expected) << why;
}

TEST(CodesetBinary, RefusesEveryTruncationAndEveryChangedByte)
{
    const Bytes good = Good();
    for (std::size_t at = 0; at < good.size(); ++at) {
        EXPECT_NE(WhyRefused(std::span(good).first(at)), "accepted") << at;
        for (unsigned change = 1; change < 256; ++change) {
            Bytes bad = good;
            bad[at] = static_cast<std::uint8_t>(bad[at] ^ change);
            ASSERT_NE(WhyRefused(bad), "accepted") << at << " changed by " << change;
        }
    }
}

/// Checks that each key of an accepted code set can be sent, in frames of the minimum length or
/// more: shorter ones would keep the blaster's task busy.
bool IsAcceptedAndSends(std::span<const std::uint8_t> bytes)
{
    std::string why;
    const std::optional<CodesetBinary> codeset = CodesetBinary::Parse(bytes, why);
    for (const CodesetKey& key : codeset ? codeset->Keys() : std::vector<CodesetKey>()) {
        KeyRenderer renderer(*codeset, key, false);
        for (const unsigned index : {0u, renderer.MinimumFrames()}) {
            const InfraredFrame frame = renderer.Frame(index);
            EXPECT_EQ(frame.durationsUs.size() % 2, 0u);
            EXPECT_GE(std::accumulate(frame.durationsUs.begin(), frame.durationsUs.end(), 0u),
                      CodesetBinary::kMinimumFrameUs);
            EXPECT_GE(frame.carrierHz, 20000u);
        }
    }
    return codeset.has_value();
}

TEST(CodesetBinary, IsSafeWhenTheChecksumIsMadeToMatch)
{
    const Bytes good = Good();
    unsigned accepted = 0;
    for (std::size_t at = 3; at < good.size() - 2; ++at) {
        for (unsigned value = 0; value < 256; ++value) {
            Bytes changed = good;
            changed[at] = static_cast<std::uint8_t>(value);
            accepted += IsAcceptedAndSends(Resealed(changed)) ? 1u : 0u;
        }
    }
    EXPECT_GT(accepted, 1000u);
    for (std::size_t length = 10; length < good.size(); ++length) {
        const Bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_NE(WhyRefused(Resealed(cut)), "accepted") << length;
    }
}

TEST(CodesetBinary, SaysWhyItRefuses)
{
    // Offsets: groups from 8 (raw group from 12), keys of 6 bytes in front of the checksum.
    const std::pair<std::function<void(Bytes&)>, std::string_view> rows[] = {
        {[](Bytes& b) { b[0] = 't'; }, "it does not begin as a code set does"},
        {[](Bytes& b) { b[2] = 2; }, "version 2 is unknown"},
        {[](Bytes& b) { b[5] = 1; }, "a byte that must be 0 is not"},
        {[](Bytes& b) { b[8] = 0; }, "protocol 0 is unknown"},
        {[](Bytes& b) { b[9] = 19; }, "a carrier of 19 kHz"},
        {[](Bytes& b) { b[10] = 9; }, "a press of 9 frames"},
        {[](Bytes& b) { b[11] = 1; }, "a group of a protocol holds raw sequences"},
        {[](Bytes& b) { b[13] = 0; }, "a raw group has no carrier"},
        {[](Bytes& b) { b[16] = 17; }, "it ends in its groups"},
        {[](Bytes& b) { b[17] = b[18] = 0; }, "a raw duration is 0"},
        {[](Bytes& b) { b[23] = 3; }, "a raw sequence of 3 steps does not end dark"},
        {[](Bytes& b) { b[25] = 0x30; }, "raw duration 3 of 3"},
        {[](Bytes& b) { b[27] = 0x11; }, "a raw frame of 3000 us is too short"},
        {[](Bytes& b) { b[31] = 0; }, "key 0 does not exist"},
        {[](Bytes& b) { b[32] = 2; }, "key 1: group 2 of 2"},
        {[](Bytes& b) { b[35] = 1; }, "key 1: scancode 0x10408 does not fit nec"},
        {[](Bytes& b) { b[39] = 2; }, "key 8: raw sequence 2 of 2"},
        {[](Bytes& b) { b[37] = 1; }, "key 1 stands behind key 1"},
        {[](Bytes& b) { b[4] = 4; }, "it ends in its keys"},
        {[](Bytes& b) { b[4] = 2; }, "bytes stand behind its last key"},
    };
    ASSERT_EQ(Good().size(), 51u);
    for (const auto& [damage, reason] : rows) {
        Bytes bytes = Good();
        damage(bytes);
        EXPECT_EQ(WhyRefused(Resealed(bytes)), reason);
    }
    Bytes wrongLength = Good();
    wrongLength.push_back(0);
    EXPECT_EQ(WhyRefused(wrongLength), "52 bytes came where it says 51");
    Bytes torn = Good();
    torn.back() ^= 1;
    EXPECT_EQ(WhyRefused(torn), "the checksum does not match");
    EXPECT_EQ(WhyRefused(Bytes(1200)), "1200 bytes are more than a code set's 1199");
}

TEST(CodesetBinary, ComposesNothingThatWouldComeBackOtherwise)
{
    std::vector<CodesetKey> keys;
    for (std::uint8_t key = 1; key <= 197; ++key) {
        keys.push_back({key, 0, 0x0408});
    }
    std::string why;
    const std::optional<Bytes> largest =
        CodesetBinary::Compose(std::vector<CodesetGroup>{{.protocol = Protocol::kNec}}, keys, why);
    ASSERT_TRUE(largest) << why;
    EXPECT_EQ(largest->size(), 1196u);
    keys.push_back({198, 0, 0});
    CodesetGroup raw = kGroups[1];
    raw.rawSequences[0].press[0] = 16;
    const struct {
        std::vector<CodesetGroup> groups;
        std::vector<CodesetKey> keys;
        std::string_view why;
    } rows[] = {
        {{{.protocol = Protocol::kNec}}, keys, "1202 bytes are more than a code set's 1199"},
        {{raw}, {}, "a raw group is too large"},
        {kGroups, {{1, 0, 1}, {1, 0, 2}}, "key 1 stands behind key 1"},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(CodesetBinary::Compose(row.groups, row.keys, why)) << row.why;
        EXPECT_EQ(why, row.why);
    }
    const CodesetGroup odd = {.protocol = Protocol::kNec, .rawDurationsUs = {100}};
    EXPECT_FALSE(CodesetBinary::Compose({&odd, 1}, {}, why));
    EXPECT_FALSE(CodesetBinary::Compose(kGroups, std::vector<CodesetKey>(300), why));
    EXPECT_TRUE(CodesetBinary::Compose({}, {}, why)) << why;
}

}  // namespace
