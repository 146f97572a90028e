// SPDX-License-Identifier: Apache-2.0

#include "devices/Decoder.h"

// Both have bits like NEC's, the least significant first.
// JVC: 8400 4200, address 8 bits, command 8 bits (525 and 525 or 1575), 525. While the key is held,
// the same frame without the first two durations.
// Sharp: address 5 bits, command 8 bits, 1, 0 (320 and 680 or 1680), 320, a space of 40 ms; then
// the same with all bits but the address inverted. While the key is held, both again.

namespace Lpm::Devices {

namespace {

constexpr SpaceCoding kJvcBits{525, 525, 1575};
constexpr SpaceCoding kSharpBits{320, 680, 1680};

class JvcDecoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        auto durations = burst.durations;
        const bool press =
            durations.size() > 2 && IsAbout(durations[0], 8400) && IsAbout(durations[1], 4200);
        if (press) {
            durations = durations.subspan(2);
        }
        const auto bits = ReadSpaceBits(durations, kJvcBits, 16);
        if (!bits) {
            return {};
        }
        const std::uint32_t scancode = (*bits & 0xff) << 8 | *bits >> 8;
        // The header marks a new press, however close it is. Without a header a frame counts only
        // as the repeat of a press that was read.
        if (press) {
            m_held.Forget();
        } else if (!m_held.IsHeldAt(burst, scancode, false)) {
            return {};
        }
        return ReadWholeCode(m_held, burst, Protocol::kJvc, scancode);
    }

private:
    HeldKey m_held;
};

class SharpDecoder : public DecoderIF {
public:
    Reading Read(const Burst& burst) override
    {
        const auto bits = ReadSpaceBits(burst.durations, kSharpBits, 15);
        if (!bits) {
            return {};
        }
        if (*bits >> 13 == kPlain) {
            m_plain.Remember(*bits, false, burst);
            // The inverted half is measured against this half, not against the last whole code.
            if (m_held.IsHeldAt(burst, ScancodeOf(*bits), false)) {
                m_held.Remember(ScancodeOf(*bits), false, burst);
            }
            return {true};
        }
        const bool echoes = m_plain.IsHeldAt(burst, *bits ^ kInvertedBits, false);
        m_plain.Forget();
        if (*bits >> 13 != kInverted || !echoes) {
            return {};
        }
        return ReadWholeCode(m_held, burst, Protocol::kSharp, ScancodeOf(*bits ^ kInvertedBits));
    }

private:
    static constexpr std::uint32_t kPlain = 0b01;
    static constexpr std::uint32_t kInverted = 0b10;
    static constexpr std::uint32_t kInvertedBits = 0x7fe0;

    static std::uint32_t ScancodeOf(std::uint32_t plain)
    {
        return (plain & 0x1f) << 8 | (plain >> 5 & 0xff);
    }

    HeldKey m_plain;
    HeldKey m_held;
};

}  // namespace

std::unique_ptr<DecoderIF> MakeJvcDecoder()
{
    return std::make_unique<JvcDecoder>();
}

std::unique_ptr<DecoderIF> MakeSharpDecoder()
{
    return std::make_unique<SharpDecoder>();
}

}  // namespace Lpm::Devices
