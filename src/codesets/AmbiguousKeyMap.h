// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ProtoBufs/UEIKeyNames.pb.h"

namespace TrellanService {

/// The UEI keys that a product key can be resolved to depending on the code set. The index of a key
/// is its bit in an ambiguous key bit map.
inline constexpr std::array<UEIKeyNamesPB::ueikey, 27> kAmbiguousKeys = {
    UEIKeyNamesPB::kKey_CHANNEL_ENTER, UEIKeyNamesPB::kKey_MENU_SELECT,
    UEIKeyNamesPB::kKey_PVR_MENU,      UEIKeyNamesPB::kKey_RECORDINGS,
    UEIKeyNamesPB::kKey_CURSOR_LEFT,   UEIKeyNamesPB::kKey_BACK,
    UEIKeyNamesPB::kKey_List,          UEIKeyNamesPB::kKey_QUICK_SKIP,
    UEIKeyNamesPB::kKey_SKIP_FWD,      UEIKeyNamesPB::kKey_HOME,
    UEIKeyNamesPB::kKey_TITLE_MENU,    UEIKeyNamesPB::kKey_SERVICES,
    UEIKeyNamesPB::kKey_SOURCE_MENU,   UEIKeyNamesPB::kKey_INSTANT_REPLAY,
    UEIKeyNamesPB::kKey_SKIP_REVERSE,  UEIKeyNamesPB::kKey_WIDGETS_APPS,
    UEIKeyNamesPB::kKey_WEB_INTERNET,  UEIKeyNamesPB::kKey_LAST_CHANNEL,
    UEIKeyNamesPB::kKey_POPUP_MENU,    UEIKeyNamesPB::kKey_LIVE,
    UEIKeyNamesPB::kKey_DTV,           UEIKeyNamesPB::kKey_INPUT_7,
    UEIKeyNamesPB::kKey_FAST_FORWARD,  UEIKeyNamesPB::kKey_REWIND,
    UEIKeyNamesPB::kKey_POWER_ON,      UEIKeyNamesPB::kKey_POWER_OFF,
    UEIKeyNamesPB::kKey_STOP};

/// The bit of a UEI key, as a mask; 0 for a key without one.
constexpr std::uint32_t AmbiguousKeyBit(int ueiKey)
{
    const auto* row = std::find(kAmbiguousKeys.begin(), kAmbiguousKeys.end(), ueiKey);
    return row == kAmbiguousKeys.end() ? 0U : 1U << (row - kAmbiguousKeys.begin());
}

/// The keys of a code set, from the blaster's reply to a key map query.
struct BlasterKeyMap {
    std::uint32_t ambiguousKeyBitMap = 0;
    std::vector<std::uint8_t> ueiKeys;  ///< In the blaster's order.
};

/// Reads a key map answer: byte 0 number of keys plus one, byte 1 status (not looked at), from byte
/// 2 on one UEI key each. An answer shorter than its count gives the keys that are there.
BlasterKeyMap ReadBlasterKeyMap(std::string_view answer);

}  // namespace TrellanService
