// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include "devices/Decoder.h"
#include "infrared/InfraredFrame.h"

namespace Lpm::Devices {

/// The infrared receiver of a device: a carrier filter and the decoder of one protocol.
class Receiver {
public:
    /// Whether a frame is of this protocol, and the codes in it.
    struct Reception {
        bool isOfProtocol = false;
        std::vector<InfraredCode> codes;
    };

    explicit Receiver(Protocol protocol);

    /// `begin` is the start time of the frame on a monotonic clock.
    Reception Receive(const InfraredFrame& frame, Microseconds begin);

private:
    Protocol m_protocol;
    std::unique_ptr<DecoderIF> m_decoder;
};

}  // namespace Lpm::Devices
