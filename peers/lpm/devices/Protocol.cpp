// SPDX-License-Identifier: Apache-2.0

#include "devices/Protocol.h"

#include <algorithm>
#include <array>
#include <bit>

#include <fmt/format.h>

namespace Lpm::Devices {

namespace {

constexpr std::array<ProtocolInfo, kProtocols> kTable{{
    {Protocol::kNec, "nec", 38000, 0xffff},
    {Protocol::kNecX, "necx", 38000, 0xffffff},
    {Protocol::kNec32, "nec32", 38000, 0xffffffff},
    {Protocol::kSamsung, "samsung", 38000, 0xffffff},
    {Protocol::kRc5, "rc5", 36000, 0x1f7f},
    {Protocol::kRc6Mode0, "rc6_0", 36000, 0xffff},
    {Protocol::kRc6Mce, "rc6_mce", 36000, 0xffff7fff},
    {Protocol::kSony12, "sony12", 40000, 0x1f007f},
    {Protocol::kSony15, "sony15", 40000, 0xff007f},
    {Protocol::kSony20, "sony20", 40000, 0x1fff7f},
    {Protocol::kJvc, "jvc", 38000, 0xffff},
    {Protocol::kSharp, "sharp", 38000, 0x1fff},
}};

constexpr bool InOrder()
{
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        if (static_cast<std::size_t>(kTable[i].protocol) != i) {
            return false;
        }
    }
    return true;
}
// InfoOf uses the protocol as an index.
static_assert(InOrder());

}  // namespace

const ProtocolInfo& InfoOf(Protocol protocol)
{
    return kTable[static_cast<std::size_t>(protocol)];
}

std::optional<Protocol> ProtocolByName(std::string_view name)
{
    const auto row = std::ranges::find(kTable, name, &ProtocolInfo::name);
    if (row == kTable.end()) {
        return std::nullopt;
    }
    return row->protocol;
}

std::string ScancodeText(Protocol protocol, std::uint32_t scancode)
{
    const auto bytes = (std::bit_width(InfoOf(protocol).scancodeBits) + 7) / 8;
    return fmt::format("0x{:0{}x}", scancode, 2 * bytes);
}

}  // namespace Lpm::Devices
