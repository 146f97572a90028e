// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "infrared/Light.h"

namespace Lpm {

/// The devices that stand in front of the blaster and on the CEC bus. Each decodes the light by
/// itself and changes its state only for its own protocol and codes. On the blaster's task.
class DeviceRoom : public LightSinkIF {
public:
    /// Gets a JSON object in one line, for each thing seen or changed.
    using OnLine = std::function<void(const std::string&)>;

    /// From the text of a devices file; empty, and the reason in `why`, if it is no such file.
    static std::unique_ptr<DeviceRoom> Load(const std::string& text, OnLine line, std::string& why);

    /// The light of the blaster.
    void Shine(const LightFrame& frame) override = 0;

    /// A user control code of the CEC bus, pressed or released.
    virtual void ReceiveCecKey(std::uint8_t userControl, bool pressed) = 0;

    /// The state of all devices as one JSON object in one line.
    virtual std::string StateAsJson() const = 0;
};

}  // namespace Lpm
