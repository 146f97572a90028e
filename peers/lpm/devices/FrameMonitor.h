// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "devices/Receiver.h"

namespace Lpm::Devices {

/// Decodes all known protocols and reports one line of JSON for each press and each repeat:
///   {"light": {"carrier": 38000, "protocol": "nec", "scancode": "0x0408", "repeat": false}}
/// and for a frame of an unknown protocol:
///   {"light": {"carrier": 38000, "protocol": "unknown", "durations": 12}}
class FrameMonitor {
public:
    using OnLine = std::function<void(const std::string&)>;

    explicit FrameMonitor(OnLine line);

    void Receive(const InfraredFrame& frame, Microseconds begin);

private:
    void ReportCode(const InfraredFrame& frame, const InfraredCode& code) const;
    void ReportUnknown(const InfraredFrame& frame) const;

    OnLine m_line;
    std::vector<Receiver> m_receivers;
};

}  // namespace Lpm::Devices
