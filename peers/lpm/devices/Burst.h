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

/// Marks and spaces in turn without a long pause between them, in microseconds, with a mark at
/// either end.
struct Burst {
    std::span<const std::uint32_t> durations;
    Microseconds begin;
    Microseconds end;  ///< end of the space behind the burst
};

/// The bursts of a frame that begins at `begin`. A burst without a long pause behind it is left
/// out, since its end was not seen. The bursts refer to the frame's durations.
std::vector<Burst> SplitFrame(const InfraredFrame& frame, Microseconds begin);

/// Whether a duration differs from the expected one by at most a quarter.
bool IsAbout(std::uint32_t duration, std::uint32_t expected);

/// Durations of bits that differ by the space behind the mark.
struct SpaceCoding {
    std::uint32_t mark;
    std::uint32_t zeroSpace;
    std::uint32_t oneSpace;
};

/// Reads `count` bits, the least significant first, and the mark behind the last space. Empty if
/// the durations do not match. At most 32 bits.
std::optional<std::uint32_t> ReadSpaceBits(std::span<const std::uint32_t> durations,
                                           const SpaceCoding& coding, unsigned count);

/// Remembers the last code of one protocol, to tell a held key from a new press.
class HeldKey {
public:
    void Remember(std::uint32_t scancode, bool toggle, const Burst& burst);
    void Forget() { m_scancode.reset(); }

    /// Whether the burst follows the last one as closely as a repeat does.
    bool IsHeldAt(const Burst& burst) const;

    /// The same, and the code and toggle are those of the last burst.
    bool IsHeldAt(const Burst& burst, std::uint32_t scancode, bool toggle) const;

    /// Only while `IsHeldAt`.
    std::uint32_t Scancode() const { return *m_scancode; }

private:
    std::optional<std::uint32_t> m_scancode;
    bool m_toggle = false;
    Microseconds m_end{};
};

}  // namespace Lpm::Devices
