// SPDX-License-Identifier: Apache-2.0

#include "devices/Receiver.h"

namespace Lpm::Devices {

namespace {

/// A receiver's filter passes carriers that deviate from its own by at most this.
constexpr std::uint32_t kFilterHz = 5000;

bool Passes(std::uint32_t carrierHz, Protocol protocol)
{
    const std::uint32_t centre = InfoOf(protocol).carrierHz;
    return carrierHz >= centre - kFilterHz && carrierHz <= centre + kFilterHz;
}

}  // namespace

Receiver::Receiver(Protocol protocol) : m_protocol(protocol), m_decoder(MakeDecoder(protocol)) {}

Receiver::Reception Receiver::Receive(const InfraredFrame& frame, Microseconds begin)
{
    Reception reception;
    if (!Passes(frame.carrierHz, m_protocol)) {
        return reception;
    }
    for (const Burst& burst : SplitFrame(frame, begin)) {
        const Reading reading = m_decoder->Read(burst);
        reception.isOfProtocol |= reading.isOfProtocol;
        if (reading.code) {
            reception.codes.push_back(*reading.code);
        }
    }
    return reception;
}

}  // namespace Lpm::Devices
