// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Lpm {

/// Values of the protocol byte of a code set's group.
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
    kPulses,      ///< the lengths of a mark and a space are one bit; lowest bit first
    kManchester,  ///< a change between mark and space is one bit; highest bit first
    kStored,      ///< the code set holds the durations
};

/// What a remote control of the protocol sends while the key is held.
enum class Repeat : std::uint8_t {
    kWhole,       ///< the same frame
    kDitto,       ///< a short frame that repeats the code before
    kHeaderless,  ///< the same frame without its header
};

/// A mark and the space behind it, in microseconds.
struct Pulse {
    std::uint32_t markUs = 0;
    std::uint32_t spaceUs = 0;
};

/// One protocol as data, in microseconds and hertz. A value that a protocol does not have is 0.
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
    bool oneStartsWithMark = false;
    std::optional<unsigned> doubleBit =
        std::nullopt;                  ///< number of a bit of double length; 0 is the first
    std::uint64_t echoFlips = 0;       ///< bits inverted in the second half of a pair; 0: no pair
    std::uint32_t periodUs = 0;        ///< start to start of two frames; 0: gapUs applies
    std::uint32_t gapUs = 0;           ///< space behind a frame and between the halves of a pair
    std::uint32_t repeatPeriodUs = 0;  ///< period of a repeat; 0: periodUs
    Repeat repeat = Repeat::kWhole;
    Pulse ditto = {};  ///< header of the short frame
    unsigned minimumFrames = 1;
};

/// In the order of their numbers, from 1 on.
std::span<const ProtocolRow> AllProtocols();

/// Null for a number without a protocol.
const ProtocolRow* FindProtocol(std::uint8_t number);

/// Null for a name without a protocol.
const ProtocolRow* FindProtocol(std::string_view name);

/// Whether the scancode fits the protocol. The raw protocol accepts any: its scancode is the number
/// of a stored sequence.
bool FitsProtocol(const ProtocolRow& row, std::uint32_t scancode);

/// Parses a scancode in decimal, or in hexadecimal behind "0x". Nothing, and the reason in `why`,
/// for any other text or a number that does not fit the protocol.
std::optional<std::uint32_t> ParseScancode(const ProtocolRow& row, std::string_view text,
                                           std::string& why);

}  // namespace Lpm
