// SPDX-License-Identifier: Apache-2.0

#include "devices/Decoder.h"

// A mark of 2400, then for each bit a space of 600 and a mark of 600 or 1200, the least significant
// bit first: command 7 bits, address 5 (sony12, sony20) or 8 bits (sony15), extension 8 bits
// (sony20). The codes have no check, so a remote control sends each at least three times, 45 ms
// from start to start.

namespace Lpm::Devices {

namespace {

constexpr unsigned kFramesOfPress = 3;

unsigned BitsOf(Protocol variant)
{
    switch (variant) {
        case Protocol::kSony12:
            return 12;
        case Protocol::kSony15:
            return 15;
        default:
            return 20;
    }
}

std::optional<std::uint32_t> ReadMarkBits(std::span<const std::uint32_t> durations, unsigned count)
{
    if (durations.size() != 2 * count + 1 || !IsAbout(durations[0], 2400)) {
        return std::nullopt;
    }
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < count; ++i) {
        const bool one = IsAbout(durations[2 * i + 2], 1200);
        if (!IsAbout(durations[2 * i + 1], 600) || one == IsAbout(durations[2 * i + 2], 600)) {
            return std::nullopt;
        }
        bits |= std::uint32_t{one} << i;
    }
    return bits;
}

/// The second of two equal frames is the press: one frame alone could be damaged. The third frame
/// belongs to the press too. Each later one is a repeat.
class SonyDecoder : public DecoderIF {
public:
    explicit SonyDecoder(Protocol variant) : m_variant(variant) {}

    Reading Read(const Burst& burst) override
    {
        const auto bits = ReadMarkBits(burst.durations, BitsOf(m_variant));
        if (!bits) {
            return {};
        }
        const std::uint32_t scancode = ScancodeOf(*bits);
        m_frames = m_held.IsHeldAt(burst, scancode, false) ? m_frames + 1 : 1;
        m_held.Remember(scancode, false, burst);
        if (m_frames != 2 && m_frames <= kFramesOfPress) {
            return {true};
        }
        return {true, InfraredCode{m_variant, scancode, std::nullopt, m_frames > kFramesOfPress}};
    }

private:
    std::uint32_t ScancodeOf(std::uint32_t bits) const
    {
        const std::uint32_t command = bits & 0x7f;
        if (m_variant == Protocol::kSony20) {
            return (bits >> 7 & 0x1f) << 16 | (bits >> 12) << 8 | command;
        }
        return (bits >> 7) << 16 | command;
    }

    Protocol m_variant;
    HeldKey m_held;
    unsigned m_frames = 0;
};

}  // namespace

std::unique_ptr<DecoderIF> MakeSonyDecoder(Protocol variant)
{
    return std::make_unique<SonyDecoder>(variant);
}

}  // namespace Lpm::Devices
