// SPDX-License-Identifier: Apache-2.0

#include "devices/LightEye.h"

#include <utility>

#include "devices/Json.h"

namespace Lpm::Devices {

LightEye::LightEye(OnLine line) : m_line(std::move(line))
{
    for (unsigned i = 0; i < kProtocols; ++i) {
        m_receivers.emplace_back(static_cast<Protocol>(i));
    }
}

void LightEye::Look(const LightFrame& frame, Microseconds begin)
{
    bool known = false;
    for (Receiver& receiver : m_receivers) {
        const Receiver::Sight sight = receiver.Look(frame, begin);
        known |= sight.known;
        for (const LightCode& code : sight.codes) {
            Say(frame, code);
        }
    }
    if (!known) {
        SayUnknown(frame);
    }
}

void LightEye::Say(const LightFrame& frame, const LightCode& code) const
{
    Json::Value line;
    Json::Value& light = line["light"];
    light["carrier"] = frame.carrierHz;
    light["protocol"] = std::string(InfoOf(code.protocol).name);
    light["scancode"] = ScancodeText(code.protocol, code.scancode);
    light["repeat"] = code.repeat;
    m_line(OneLine(line));
}

void LightEye::SayUnknown(const LightFrame& frame) const
{
    Json::Value line;
    Json::Value& light = line["light"];
    light["carrier"] = frame.carrierHz;
    light["protocol"] = "unknown";
    light["durations"] = static_cast<Json::UInt64>(frame.durationsUs.size());
    m_line(OneLine(line));
}

}  // namespace Lpm::Devices
