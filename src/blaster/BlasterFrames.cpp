// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"

#include <algorithm>
#include <initializer_list>

namespace TrellanService::BlasterFrames {

namespace {

constexpr std::size_t kCountAt = 0;
constexpr std::size_t kStatusAt = 1;
constexpr std::size_t kPayloadAt = 2;

std::uint8_t ByteAt(std::string_view reply, std::size_t at)
{
    return static_cast<std::uint8_t>(reply[at]);
}

void Append(std::string& bytes, std::uint16_t number)
{
    bytes.push_back(static_cast<char>(number >> 8));
    bytes.push_back(static_cast<char>(number & 0xFF));
}

/// The start of a frame: length, command and, for the frames that have one, the device number.
/// Reserves space for `more` bytes behind them.
std::string Begin(std::uint8_t command, std::size_t more)
{
    std::string frame;
    frame.reserve(3 + more);
    Append(frame, static_cast<std::uint16_t>(1 + more));
    frame.push_back(static_cast<char>(command));
    return frame;
}

std::string Begin(std::uint8_t command, std::uint16_t device, std::size_t more)
{
    std::string frame = Begin(command, 2 + more);
    Append(frame, device);
    return frame;
}

}  // namespace

std::string EndKey()
{
    return Begin(0x00, 0);
}

std::string Key(std::uint16_t device, std::uint8_t key, std::uint8_t flag)
{
    std::string frame = Begin(0x01, device, 4);
    for (const std::uint8_t byte : {key, flag, std::uint8_t{0}, std::uint8_t{0}}) {
        frame.push_back(static_cast<char>(byte));
    }
    return frame;
}

std::string KeyMap(std::uint16_t device)
{
    return Begin(0x02, device, 0);
}

std::string Reset()
{
    std::string frame = Begin(0x09, 1);
    frame.push_back(1);
    return frame;
}

std::string Version()
{
    return Begin(0x0B, 0);
}

std::string Delete(std::uint16_t device)
{
    return Begin(0x0C, device, 0);
}

std::string List()
{
    return Begin(0x11, 0);
}

std::string Store(std::uint16_t device, std::span<const std::uint8_t> data)
{
    std::string frame = Begin(0x22, device, data.size());
    frame.append(data.begin(), data.end());
    return frame;
}

std::string Success()
{
    return std::string("\x01\x00", 2);
}

std::uint8_t Status(std::string_view reply)
{
    return reply.size() > kStatusAt ? ByteAt(reply, kStatusAt) : kNoStatus;
}

std::vector<std::uint8_t> KeysOf(std::string_view reply)
{
    if (reply.size() <= kPayloadAt) {
        return {};
    }
    // The reply may be shorter than its count, or longer: the shorter of the two is read.
    const std::size_t end = std::min<std::size_t>(reply.size(), ByteAt(reply, kCountAt) + 1U);
    if (end <= kPayloadAt) {
        return {};
    }
    const std::string_view keys = reply.substr(kPayloadAt, end - kPayloadAt);
    return {keys.begin(), keys.end()};
}

std::vector<std::uint16_t> DevicesOf(std::string_view reply)
{
    std::vector<std::uint16_t> devices;
    if (reply.size() <= kPayloadAt) {
        return devices;
    }
    const std::string_view numbers = reply.substr(kPayloadAt + 1);
    // The payload begins with the number of devices, which may promise more than the reply holds.
    const std::size_t count = std::min<std::size_t>(ByteAt(reply, kPayloadAt), numbers.size() / 2);
    for (std::size_t i = 0; i < count; ++i) {
        devices.push_back(
            static_cast<std::uint16_t>(ByteAt(numbers, 2 * i) << 8 | ByteAt(numbers, 2 * i + 1)));
    }
    return devices;
}

}  // namespace TrellanService::BlasterFrames
