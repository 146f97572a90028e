// SPDX-License-Identifier: Apache-2.0

#include "devices/Device.h"

#include <utility>

#include <fmt/format.h>

namespace Lpm::Devices {

namespace {

Json::Value CauseOf(const InfraredCode& code)
{
    Json::Value cause;
    cause["protocol"] = std::string(InfoOf(code.protocol).name);
    cause["scancode"] = ScancodeText(code.protocol, code.scancode);
    return cause;
}

}  // namespace

Device::Device(DeviceDescription description)
    : m_description(std::move(description)),
      m_receiver(m_description.protocol),
      m_state(m_description.type)
{
}

std::vector<Device::Change> Device::Receive(const InfraredFrame& frame, Microseconds begin)
{
    std::vector<Change> changes;
    for (const InfraredCode& code : m_receiver.Receive(frame, begin).codes) {
        const auto key = m_description.codes.find(code.scancode);
        if (key != m_description.codes.end() && Apply(*key->second, code.repeat, begin)) {
            changes.push_back({CauseOf(code), m_state.AsJson()});
        }
    }
    return changes;
}

std::optional<Device::Change> Device::ReceiveCecKey(std::uint8_t userControl, bool repeat,
                                                    Microseconds now)
{
    const auto key = m_description.cec.find(userControl);
    if (key == m_description.cec.end() || !Apply(*key->second, repeat, now)) {
        return std::nullopt;
    }
    Json::Value cause;
    cause["cec"] = fmt::format("0x{:02x}", userControl);
    return Change{std::move(cause), m_state.AsJson()};
}

bool Device::Apply(const Action& action, bool repeat, Microseconds now)
{
    if ((repeat && !action.stepsWhenHeld) || (!m_state.Power() && !action.worksWhenOff)) {
        return false;
    }
    // Only a difference is a change: volume up at the highest volume is none.
    const Json::Value before = m_state.AsJson();
    (m_state.*action.apply)(action.argument, now);
    return m_state.AsJson() != before;
}

}  // namespace Lpm::Devices
