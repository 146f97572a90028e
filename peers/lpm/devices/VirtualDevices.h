// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "infrared/InfraredFrame.h"
#include "orlu/MonotonicClock.h"

namespace Lpm {

/// The devices that stand in front of the blaster and on the CEC bus. Each decodes the light by
/// itself and changes its state only for its own protocol and codes. On the blaster's task.
class VirtualDevices : public FrameSinkIF {
public:
    /// Gets a JSON object in one line: a `light` for each press, repeat or unknown frame that was
    /// seen, then a `device` with its `cause` and its `state` for each change.
    using OnLine = std::function<void(const std::string&)>;

    /// Milliseconds that never go back.
    using Clock = std::function<std::uint64_t()>;

    /// From the text of a devices file; empty, and the reason in `why`, if it is no such file.
    static std::unique_ptr<VirtualDevices> Load(const std::string& text, OnLine line,
                                                std::string& why,
                                                Clock clock = &MonotonicClock::NowMs);

    /// The light of the blaster. When it comes matters: a frame that begins within 100 ms of the
    /// last one's end says that the key is still held, as far as its protocol leaves that open.
    void HandleFrame(const InfraredFrame& frame) override = 0;

    /// A user control code of the CEC bus, pressed or released (the code of a release is not looked
    /// at). The same code pressed again within 550 ms and without a release is a held key.
    virtual void ReceiveCecKey(std::uint8_t userControl, bool pressed) = 0;

    /// The state of all devices as one JSON object in one line, a member for each device.
    virtual std::string StateAsJson() const = 0;
};

}  // namespace Lpm
