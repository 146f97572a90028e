// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

namespace Lpm {

/// A piece of infrared light as the diode sends it: microseconds of light and of dark in turn,
/// light first, dark last; the last dark lasts until the next frame of the same key may begin.
struct InfraredFrame {
    std::uint32_t carrierHz;
    std::span<const std::uint32_t> durationsUs;
};

/// Something in front of the blaster. Gets each frame when the diode begins to send it, on the task
/// of the blaster; the durations live for the call only.
class FrameSinkIF {
public:
    virtual ~FrameSinkIF() = default;
    virtual void HandleFrame(const InfraredFrame& frame) = 0;
};

}  // namespace Lpm
