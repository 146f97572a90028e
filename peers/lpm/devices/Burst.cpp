// SPDX-License-Identifier: Apache-2.0

#include "devices/Burst.h"

namespace Lpm::Devices {

namespace {

/// Longer than the longest space within a code, which is 4500 in a header and a quarter more.
/// Shorter than the shortest pause, which is that behind the longest Sony code.
constexpr std::uint32_t kPauseUs = 5700;

/// A repeat that is late by no more than this still counts as a repeat.
constexpr Microseconds kSlack = std::chrono::milliseconds(100);

}  // namespace

std::vector<Burst> SplitFrame(const InfraredFrame& frame, Microseconds begin)
{
    std::vector<Burst> bursts;
    std::size_t first = 0;
    Microseconds now = begin;
    const auto durations = frame.durationsUs;
    for (std::size_t space = 1; space < durations.size(); space += 2) {
        now += Microseconds(durations[space - 1]) + Microseconds(durations[space]);
        if (durations[space] >= kPauseUs) {
            bursts.push_back({durations.subspan(first, space - first), begin, now});
            first = space + 1;
            begin = now;
        }
    }
    return bursts;
}

bool IsAbout(std::uint32_t duration, std::uint32_t expected)
{
    const std::uint32_t tolerance = expected / 4;
    return duration >= expected - tolerance && duration <= expected + tolerance;
}

std::optional<std::uint32_t> ReadSpaceBits(std::span<const std::uint32_t> durations,
                                           const SpaceCoding& coding, unsigned count)
{
    if (durations.size() != 2 * count + 1 || !IsAbout(durations.back(), coding.mark)) {
        return std::nullopt;
    }
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < count; ++i) {
        // A space that fits neither is damaged.
        const bool one = IsAbout(durations[2 * i + 1], coding.oneSpace);
        const bool zero = IsAbout(durations[2 * i + 1], coding.zeroSpace);
        if (!IsAbout(durations[2 * i], coding.mark) || one == zero) {
            return std::nullopt;
        }
        bits |= std::uint32_t{one} << i;
    }
    return bits;
}

void HeldKey::Remember(std::uint32_t scancode, bool toggle, const Burst& burst)
{
    m_scancode = scancode;
    m_toggle = toggle;
    m_end = burst.end;
}

bool HeldKey::IsHeldAt(const Burst& burst) const
{
    return m_scancode && burst.begin <= m_end + kSlack;
}

bool HeldKey::IsHeldAt(const Burst& burst, std::uint32_t scancode, bool toggle) const
{
    return IsHeldAt(burst) && *m_scancode == scancode && m_toggle == toggle;
}

}  // namespace Lpm::Devices
