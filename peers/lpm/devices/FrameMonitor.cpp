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
            ReportCode(frame, code);
        }
    }
    if (!known) {
        ReportUnknown(frame);
    }
}

void FrameMonitor::ReportCode(const InfraredFrame& frame, const InfraredCode& code) const
{
    Json::Value line;
    Json::Value& signal = line["light"];
    signal["carrier"] = frame.carrierHz;
    signal["protocol"] = std::string(InfoOf(code.protocol).name);
    signal["scancode"] = ScancodeText(code.protocol, code.scancode);
    signal["repeat"] = code.repeat;
    m_line(OneLine(line));
}

void FrameMonitor::ReportUnknown(const InfraredFrame& frame) const
{
    Json::Value line;
    Json::Value& signal = line["light"];
    signal["carrier"] = frame.carrierHz;
    signal["protocol"] = "unknown";
    signal["durations"] = static_cast<Json::UInt64>(frame.durationsUs.size());
    m_line(OneLine(line));
}

}  // namespace Lpm::Devices
