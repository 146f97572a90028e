// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Lpm {

/// What the protocol byte of a code set's group says.
enum class Protocol : std::uint8_t {
    kNec = 1,
    kNecx = 2,
    kNec32 = 3,
    kSamsung = 4,
    kRc5 = 5,
    kRc6Mode0 = 6,
    kRc6Mce = 7,
    kSony12 = 8,
    kSony15 = 9,
    kSony20 = 10,
    kJvc = 11,
    kSharp = 12,
    kRaw = 13,
};

enum class Coding : std::uint8_t {
    kPulses,      ///< each bit is a mark and a space whose lengths tell 0 from 1; lowest bit first
    kManchester,  ///< each bit is a change of light in its middle; highest bit first
    kStored,      ///< the code set holds the durations
};

/// What a remote control of this kind sends while the key stays down.
enum class Repeat : std::uint8_t {
    kWhole,       ///< the same frame
    kDitto,       ///< a short frame that says "the same again"
    kHeaderless,  ///< the same frame without its header
};

/// Microseconds of light and of the dark behind it.
struct Pulse {
    std::uint32_t markUs = 0;
    std::uint32_t spaceUs = 0;
};

/// One protocol, as data. Microseconds and hertz; what a protocol does not have is 0.
struct ProtocolRow {
    Protocol id;
    std::string_view name;  ///< as the Linux kernel writes it
    Coding coding;
    std::uint32_t carrierHz = 0;
    std::uint32_t scancodeMask = 0;  ///< the bits that a scancode may have
    /// The bits to send, from a scancode in the kernel's convention.
    std::uint64_t (*payload)(std::uint32_t scancode, bool toggle) = nullptr;
    unsigned bits = 0;
    Pulse header = {};
    Pulse zero = {};  ///< kPulses only, as `one`
    Pulse one = {};
    std::uint32_t trailerUs = 0;  ///< the mark that ends the last bit's space
    std::uint32_t halfBitUs = 0;  ///< kManchester only, as the next two
    bool oneStartsLit = false;
    std::optional<unsigned> doubleBit = std::nullopt;  ///< sent at half the speed; 0 is the first
    std::uint64_t echoFlips = 0;  ///< a frame is a pair; in the second half these bits are inverted
    std::uint32_t periodUs = 0;   ///< from start to start of two frames, or else:
    std::uint32_t gapUs = 0;      ///< the dark behind a frame, and between the halves of a pair
    std::uint32_t repeatPeriodUs = 0;  ///< as periodUs, behind a repeat; 0: the same
    Repeat repeat = Repeat::kWhole;
    Pulse ditto = {};  ///< header of the short frame
    unsigned minimumFrames = 1;
};

/// In the order of their numbers, from 1 on.
std::span<const ProtocolRow> AllProtocols();

/// Null for a number that is no protocol's.
const ProtocolRow* FindProtocol(std::uint8_t number);

/// Null for a name that is no protocol's.
const ProtocolRow* FindProtocol(std::string_view name);

/// Whether the protocol can carry the scancode; raw takes any, which counts stored sequences.
bool FitsProtocol(const ProtocolRow& row, std::uint32_t scancode);

/// A scancode in decimal, or in hexadecimal behind "0x". Nothing, and the reason in `why`, for text
/// that is no such number or a number that the protocol cannot carry.
std::optional<std::uint32_t> ParseScancode(const ProtocolRow& row, std::string_view text,
                                           std::string& why);

}  // namespace Lpm
