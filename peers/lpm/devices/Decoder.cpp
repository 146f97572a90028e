// SPDX-License-Identifier: Apache-2.0

#include "devices/Decoder.h"

namespace Lpm::Devices {

Reading ReadWholeCode(HeldKey& held, const Burst& burst, Protocol protocol, std::uint32_t scancode,
                      std::optional<bool> toggle)
{
    const bool repeat = held.IsHeldAt(burst, scancode, toggle.value_or(false));
    held.Remember(scancode, toggle.value_or(false), burst);
    return {true, InfraredCode{protocol, scancode, toggle, repeat}};
}

std::unique_ptr<DecoderIF> MakeDecoder(Protocol protocol)
{
    switch (protocol) {
        case Protocol::kNec:
        case Protocol::kNecX:
        case Protocol::kNec32:
            return MakeNecDecoder(protocol);
        case Protocol::kSamsung:
            return MakeSamsungDecoder();
        case Protocol::kRc5:
            return MakeRc5Decoder();
        case Protocol::kRc6Mode0:
        case Protocol::kRc6Mce:
            return MakeRc6Decoder(protocol);
        case Protocol::kSony12:
        case Protocol::kSony15:
        case Protocol::kSony20:
            return MakeSonyDecoder(protocol);
        case Protocol::kJvc:
            return MakeJvcDecoder();
        case Protocol::kSharp:
            return MakeSharpDecoder();
    }
    return nullptr;
}

}  // namespace Lpm::Devices
