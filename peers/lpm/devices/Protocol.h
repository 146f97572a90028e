// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Decoders of the infrared protocols, for the devices in front of the blaster. Nothing here is
/// shared with the encoders, so that each side checks the other.
namespace Lpm::Devices {

enum class Protocol : std::uint8_t {
    kNec,
    kNecX,
    kNec32,
    kSamsung,
    kRc5,
    kRc6Mode0,
    kRc6Mce,
    kSony12,
    kSony15,
    kSony20,
    kJvc,
    kSharp,
};

inline constexpr unsigned kProtocols = 12;

struct ProtocolInfo {
    Protocol protocol;
    std::string_view name;
    std::uint32_t carrierHz;
    std::uint32_t scancodeBits;  ///< the bits that a scancode of this protocol can have
};

const ProtocolInfo& InfoOf(Protocol protocol);

/// Empty for a name without a protocol.
std::optional<Protocol> ProtocolByName(std::string_view name);

/// The scancode as "0x0408", with as many digits as the protocol's longest scancode needs.
std::string ScancodeText(Protocol protocol, std::uint32_t scancode);

/// A decoded code, in the Linux kernel's scancode convention.
struct InfraredCode {
    Protocol protocol;
    std::uint32_t scancode;
    std::optional<bool> toggle;  ///< empty: the protocol has none
    bool repeat;                 ///< the key is still held; false: a new press
};

}  // namespace Lpm::Devices
