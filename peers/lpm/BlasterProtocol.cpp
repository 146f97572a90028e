// SPDX-License-Identifier: Apache-2.0

#include "lpm/BlasterProtocol.h"

#include <boost/algorithm/hex.hpp>

#include <iterator>

namespace Lpm {

std::optional<BlasterFrame> ParseFrame(Bytes frame)
{
    if (frame.size() < 3 ||
        static_cast<std::size_t>(frame[0] << 8 | frame[1]) != frame.size() - 2) {
        return std::nullopt;
    }
    return BlasterFrame{frame[2], frame.subspan(3)};
}

DeviceNumber DeviceOf(const BlasterFrame& frame)
{
    return static_cast<DeviceNumber>(frame.arguments[0] << 8 | frame.arguments[1]);
}

std::string MakeReply(Status status, std::string_view payload)
{
    payload = payload.substr(0, kMaximumPayload);
    std::string reply{static_cast<char>(payload.size() + 1), static_cast<char>(status)};
    return reply.append(payload);
}

std::string ToHex(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() * 2);
    boost::algorithm::hex_lower(bytes.begin(), bytes.end(), std::back_inserter(text));
    return text;
}

std::optional<std::string> FromHex(std::string_view text)
{
    std::string bytes;
    try {
        boost::algorithm::unhex(text.begin(), text.end(), std::back_inserter(bytes));
    } catch (const boost::algorithm::hex_decode_error&) {
        return std::nullopt;
    }
    return bytes;
}

}  // namespace Lpm
