// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the devices in front of the blaster know about infrared light. Nothing here is shared with
/// the side that makes the light, so that one checks the other.
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

/// Empty for a name that is none.
std::optional<Protocol> ProtocolByName(std::string_view name);

/// Such as "0x0408", with the digits that the protocol's longest scancode needs.
std::string ScancodeText(Protocol protocol, std::uint32_t scancode);

/// One sight of a key, in the Linux kernel's scancode convention.
struct InfraredCode {
    Protocol protocol;
    std::uint32_t scancode;
    std::optional<bool> toggle;  ///< empty: the protocol has none
    bool repeat;                 ///< the key is still held, this is no new press
};

}  // namespace Lpm::Devices
