// SPDX-License-Identifier: Apache-2.0

#include "cloud/Edid.h"

#include <algorithm>
#include <array>
#include <cstddef>

// An EDID block has 128 bytes: 0 to 7 are the header, 8 and 9 three letters of 5 bits each, high
// byte first. From 54 on it has four descriptors of 18 bytes. A descriptor that begins 00 00 00 FC
// 00 is the name, up to 13 characters that end with a line feed.
namespace Cloud {

namespace {

constexpr std::size_t kBlockBytes = 128;
constexpr std::size_t kFirstDescriptor = 54;
constexpr std::size_t kDescriptorBytes = 18;
constexpr std::size_t kDescriptors = 4;
constexpr std::array<std::uint8_t, 8> kHeader = {0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0};
constexpr std::array<std::uint8_t, 5> kNameHeader = {0, 0, 0, 0xfc, 0};

std::string Name(std::span<const std::uint8_t> descriptor)
{
    std::string name;
    for (const std::uint8_t byte : descriptor.subspan(kNameHeader.size())) {
        if (byte < 0x20 || byte > 0x7e) {
            break;
        }
        name.push_back(static_cast<char>(byte));
    }
    // A name without a line feed may be filled up with blanks.
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

}  // namespace

std::optional<EdidMonitor> ReadEdid(std::span<const std::uint8_t> edid)
{
    if (edid.size() < kBlockBytes || !std::ranges::equal(edid.first(kHeader.size()), kHeader)) {
        return std::nullopt;
    }
    EdidMonitor monitor;
    const unsigned letters = static_cast<unsigned>(edid[8]) << 8 | edid[9];
    for (const unsigned shift : {10U, 5U, 0U}) {
        monitor.manufacturer.push_back(static_cast<char>('A' - 1 + (letters >> shift & 0x1f)));
    }
    for (std::size_t i = 0; i < kDescriptors && monitor.name.empty(); ++i) {
        const auto descriptor =
            edid.subspan(kFirstDescriptor + i * kDescriptorBytes, kDescriptorBytes);
        if (std::ranges::equal(descriptor.first(kNameHeader.size()), kNameHeader)) {
            monitor.name = Name(descriptor);
        }
    }
    return monitor;
}

}  // namespace Cloud
