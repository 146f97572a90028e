// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "infrared/InfraredFrame.h"
#include "orlu/MonotonicClock.h"

namespace Lpm {

/// The devices in front of the blaster and on the CEC bus. Each device decodes the frames itself
/// and reacts only to its own protocol and codes. On the blaster's task.
class VirtualDevices : public FrameSinkIF {
public:
    /// Gets a JSON object in one line: `light` for each press, repeat or unknown frame, then
    /// `device` with its `cause` and its `state` for each change.
    using OnLine = std::function<void(const std::string&)>;

    /// Returns monotonic milliseconds.
    using Clock = std::function<std::uint64_t()>;

    /// Loads the text of a devices file. Empty, and the reason in `why`, if the text is invalid.
    static std::unique_ptr<VirtualDevices> Load(const std::string& text, OnLine line,
                                                std::string& why,
                                                Clock clock = &MonotonicClock::NowMs);

    /// A frame of the blaster, at the time when it begins. A frame that begins within 100 ms of the
    /// last one's end is a repeat, unless its protocol marks a new press.
    void HandleFrame(const InfraredFrame& frame) override = 0;

    /// A user control code of the CEC bus, pressed or released. The code of a release is ignored.
    /// The same code pressed again within 550 ms without a release is a held key.
    virtual void ReceiveCecKey(std::uint8_t userControl, bool pressed) = 0;

    /// The state of all devices as one JSON object in one line, a member for each device.
    virtual std::string StateAsJson() const = 0;
};

}  // namespace Lpm
