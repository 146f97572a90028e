// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>

#include "devices/Burst.h"
#include "devices/Protocol.h"

namespace Lpm::Devices {

/// What one decoder reads from one burst. A burst of the protocol may give no code: some protocols
/// need several bursts for one press.
struct Reading {
    bool isOfProtocol = false;
    std::optional<InfraredCode> code{};
};

/// Reads bursts in the order of their arrival and knows one protocol.
class DecoderIF {
public:
    virtual ~DecoderIF() = default;
    virtual Reading Read(const Burst& burst) = 0;
};

/// `kNec`, `kNecX` or `kNec32`, which differ only in which of the four bytes are inverses.
std::unique_ptr<DecoderIF> MakeNecDecoder(Protocol variant);
std::unique_ptr<DecoderIF> MakeSamsungDecoder();
std::unique_ptr<DecoderIF> MakeJvcDecoder();
std::unique_ptr<DecoderIF> MakeSharpDecoder();
std::unique_ptr<DecoderIF> MakeSonyDecoder(Protocol variant);
std::unique_ptr<DecoderIF> MakeRc5Decoder();
std::unique_ptr<DecoderIF> MakeRc6Decoder(Protocol variant);

std::unique_ptr<DecoderIF> MakeDecoder(Protocol protocol);

/// The reading of a complete code. The same code, with the same toggle if the protocol has one,
/// close behind the last burst is a repeat.
Reading ReadWholeCode(HeldKey& held, const Burst& burst, Protocol protocol, std::uint32_t scancode,
                      std::optional<bool> toggle = std::nullopt);

}  // namespace Lpm::Devices
