// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

namespace Lpm {

/// A frame as the diode sends it: marks and spaces in turn, in microseconds, a mark first and a
/// space last. The last space lasts until the next frame of the same key may begin.
struct InfraredFrame {
    std::uint32_t carrierHz;
    std::span<const std::uint32_t> durationsUs;
};

/// A receiver of the blaster's frames. Gets each frame when the diode begins to send it, on the
/// blaster's task. The durations are valid during the call only.
class FrameSinkIF {
public:
    virtual ~FrameSinkIF() = default;
    virtual void HandleFrame(const InfraredFrame& frame) = 0;
};

}  // namespace Lpm
