// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "devices/DeviceState.h"
#include "devices/Receiver.h"

namespace Lpm::Devices {

/// One device of a devices file.
struct DeviceDescription {
    std::string name;
    DeviceType type{};
    Protocol protocol{};
    std::map<std::uint32_t, const Action*> codes;  ///< by scancode of the device's protocol
    std::map<std::uint8_t, const Action*> cec;     ///< by user control code
};

/// One device: a receiver for its protocol, the keys of its remote control, and a state.
class Device {
public:
    /// The cause of a change and the state after it.
    struct Change {
        Json::Value cause;
        Json::Value state;
    };

    explicit Device(DeviceDescription description);

    const std::string& Name() const { return m_description.name; }
    Json::Value StateAsJson() const { return m_state.AsJson(); }

    /// One change for each code in the frame that changed the state.
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
