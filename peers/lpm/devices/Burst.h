// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "infrared/InfraredFrame.h"

namespace Lpm::Devices {

using Microseconds = std::chrono::microseconds;

/// Light without a long pause in it: marks and spaces in turn in microseconds, a mark at either
/// end.
struct Burst {
    std::span<const std::uint32_t> durations;
    Microseconds begin;
    Microseconds end;  ///< of the dark behind it
};

/// The bursts of a frame whose light begins at that time. Light that no long pause ends is left
/// out: its end was not seen. The bursts refer to the frame's durations.
std::vector<Burst> SplitFrame(const InfraredFrame& frame, Microseconds begin);

/// Whether a duration is what it should be, give or take a quarter.
bool IsAbout(std::uint32_t duration, std::uint32_t expected);

/// Bits that the length of the space behind a mark tells.
struct SpaceCoding {
    std::uint32_t mark;
    std::uint32_t zeroSpace;
    std::uint32_t oneSpace;
};

/// `count` bits, the least significant one first, and the mark that ends the last space. Empty if
/// the durations are anything else. At most 32 bits.
std::optional<std::uint32_t> ReadSpaceBits(std::span<const std::uint32_t> durations,
                                           const SpaceCoding& coding, unsigned count);

/// Remembers the last code of one remote control, to tell a held key from a new press.
class HeldKey {
public:
    void Remember(std::uint32_t scancode, bool toggle, const Burst& burst);
    void Forget() { m_scancode.reset(); }

    /// Whether the burst comes as soon behind the last one as a remote control would send it.
    bool IsHeldAt(const Burst& burst) const;

    /// The same, and it says the same.
    bool IsHeldAt(const Burst& burst, std::uint32_t scancode, bool toggle) const;

    /// Only while `IsHeldAt`.
    std::uint32_t Scancode() const { return *m_scancode; }

private:
    std::optional<std::uint32_t> m_scancode;
    bool m_toggle = false;
    Microseconds m_end{};
};

}  // namespace Lpm::Devices
