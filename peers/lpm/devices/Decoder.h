// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>

#include "devices/Burst.h"
#include "devices/Protocol.h"

namespace Lpm::Devices {

/// What one burst says to one decoder. A burst of its protocol need not bring a code: some
/// protocols take several bursts for one press.
struct Reading {
    bool mine = false;
    std::optional<InfraredCode> code{};
};

/// Reads the bursts of one protocol, one behind the other.
class DecoderIF {
public:
    virtual ~DecoderIF() = default;
    virtual Reading Read(const Burst& burst) = 0;
};

/// NEC and its two relatives differ only in which of the four bytes are inverses.
std::unique_ptr<DecoderIF> MakeNecDecoder(Protocol variant);
std::unique_ptr<DecoderIF> MakeSamsungDecoder();
std::unique_ptr<DecoderIF> MakeJvcDecoder();
std::unique_ptr<DecoderIF> MakeSharpDecoder();
std::unique_ptr<DecoderIF> MakeSonyDecoder(Protocol variant);
std::unique_ptr<DecoderIF> MakeRc5Decoder();
std::unique_ptr<DecoderIF> MakeRc6Decoder(Protocol variant);

std::unique_ptr<DecoderIF> MakeDecoder(Protocol protocol);

/// A code of a protocol in which only the time tells a held key from a new press: the same code
/// (with the same toggle, if there is one) right behind the last is a repeat.
Reading ReadWholeCode(HeldKey& held, const Burst& burst, Protocol protocol, std::uint32_t scancode,
                      std::optional<bool> toggle = std::nullopt);

}  // namespace Lpm::Devices
