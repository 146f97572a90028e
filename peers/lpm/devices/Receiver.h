// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include "devices/Decoder.h"
#include "infrared/InfraredFrame.h"

namespace Lpm::Devices {

/// The photodiode of a device and the decoder of the one protocol behind it.
class Receiver {
public:
    /// What a frame says: whether it is of this protocol, and the codes that it brings.
    struct Reception {
        bool isOfProtocol = false;
        std::vector<InfraredCode> codes;
    };

    explicit Receiver(Protocol protocol);

    /// `begin` is the time of the frame's first light on any clock that never goes back.
    Reception Receive(const InfraredFrame& frame, Microseconds begin);

private:
    Protocol m_protocol;
    std::unique_ptr<DecoderIF> m_decoder;
};

}  // namespace Lpm::Devices
