// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "devices/DeviceState.h"
#include "devices/Receiver.h"

namespace Lpm::Devices {

/// What a devices file says about one device.
struct DeviceDescription {
    std::string name;
    DeviceType type{};
    Protocol protocol{};
    std::map<std::uint32_t, const Action*> codes;  ///< by scancode of its own protocol
    std::map<std::uint8_t, const Action*> cec;     ///< by user control code
};

/// One device: a receiver for its own protocol, the keys of its own remote control, and a state.
class Device {
public:
    /// Why a device changed, and to what.
    struct Change {
        Json::Value cause;
        Json::Value state;
    };

    explicit Device(DeviceDescription description);

    const std::string& Name() const { return m_description.name; }
    Json::Value StateAsJson() const { return m_state.AsJson(); }

    /// One change for each code in the light that changed the state.
    std::vector<Change> Receive(const InfraredFrame& frame, Microseconds begin);

    /// Empty if nothing changed.
    std::optional<Change> ReceiveCecKey(std::uint8_t userControl, bool repeat, Microseconds now);

private:
    bool Apply(const Action& action, bool repeat, Microseconds now);

    DeviceDescription m_description;
    Receiver m_receiver;
    DeviceState m_state;
};

}  // namespace Lpm::Devices
