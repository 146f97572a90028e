// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The byte protocol of the blaster.
///
///     frame   LH LL CC arguments   count of the bytes behind LL, high byte first; command
///     reply   NN SS payload        count of the bytes behind NN; status, 0 is success
///
///     00 end key                       09 01 reset all      11 list: payload N, then N x DH DL
///     01 DH DL K F 00 00 key           0B version: major, minor
///     02 DH DL key map: the keys       0C DH DL delete      22 DH DL data: store
///
/// DH DL is the device number of a code set, K a UEI key, F a `SendFlag`.
namespace Lpm {

using DeviceNumber = std::uint16_t;
using Bytes = std::span<const std::uint8_t>;

enum class Command : std::uint8_t {
    kEndKey = 0x00,
    kKey = 0x01,
    kKeyMap = 0x02,
    kReset = 0x09,
    kVersion = 0x0B,
    kDelete = 0x0C,
    kList = 0x11,
    kStore = 0x22,
};

/// Every failure sets one of the low three bits: some readers test only these bits.
enum class Status : std::uint8_t {
    kOk = 0,
    kMalformedFrame = 1,   ///< the length does not fit the frame or the command
    kUnknownCommand = 2,   ///< no such command, or not under this message id
    kBadArgument = 3,      ///< a flag or a fixed byte has a value that the command does not have
    kNoSuchCodeset = 4,    ///< no code set of that device number is held
    kNoSuchKey = 5,        ///< the code set has no such key, 255 included
    kMalformedBinary = 6,  ///< the bytes to store are not a code set
    kFull = 7,             ///< `Blaster::kMaximumCodesets` are held already
};

/// How a key is sent.
enum class SendFlag : std::uint8_t {
    kHold = 0x00,       ///< until the end key
    kOnce = 0x80,       ///< the frames that one press needs
    kHoldFirst = 0xFF,  ///< until the end key; the first of several bursts
};

/// A frame whose length word is right. The arguments refer to the frame's bytes.
struct BlasterFrame {
    std::uint8_t command;
    Bytes arguments;
};

/// Nothing if the length word differs from the number of bytes behind it, or without a command.
std::optional<BlasterFrame> ParseFrame(Bytes frame);

/// The first two arguments. The frame must have them.
DeviceNumber DeviceOf(const BlasterFrame& frame);

/// A payload has at most 254 bytes: the count, which includes the status, is one byte.
inline constexpr std::size_t kMaximumPayload = 254;

/// A longer payload is cut off at `kMaximumPayload`.
std::string MakeReply(Status status, std::string_view payload = {});

inline Bytes AsBytes(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Lower case, without separators.
std::string ToHex(std::string_view bytes);

/// Digits of either case, two for each byte, without separators; nothing for any other text.
std::optional<std::string> FromHex(std::string_view text);

}  // namespace Lpm
