// SPDX-License-Identifier: Apache-2.0

#include "devices/FrameMonitor.h"

#include <utility>

#include "devices/Json.h"

namespace Lpm::Devices {

FrameMonitor::FrameMonitor(OnLine line) : m_line(std::move(line))
{
    for (unsigned i = 0; i < kProtocols; ++i) {
        m_receivers.emplace_back(static_cast<Protocol>(i));
    }
}

void FrameMonitor::Receive(const InfraredFrame& frame, Microseconds begin)
{
    bool known = false;
    for (Receiver& receiver : m_receivers) {
        const Receiver::Reception reception = receiver.Receive(frame, begin);
        known |= reception.isOfProtocol;
        for (const InfraredCode& code : reception.codes) {
            Say(frame, code);
        }
    }
    if (!known) {
        SayUnknown(frame);
    }
}

void FrameMonitor::Say(const InfraredFrame& frame, const InfraredCode& code) const
{
    Json::Value line;
    Json::Value& light = line["light"];
    light["carrier"] = frame.carrierHz;
    light["protocol"] = std::string(InfoOf(code.protocol).name);
    light["scancode"] = ScancodeText(code.protocol, code.scancode);
    light["repeat"] = code.repeat;
    m_line(OneLine(line));
}

void FrameMonitor::SayUnknown(const InfraredFrame& frame) const
{
    Json::Value line;
    Json::Value& light = line["light"];
    light["carrier"] = frame.carrierHz;
    light["protocol"] = "unknown";
    light["durations"] = static_cast<Json::UInt64>(frame.durationsUs.size());
    m_line(OneLine(line));
}

}  // namespace Lpm::Devices
