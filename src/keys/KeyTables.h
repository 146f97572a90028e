// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "ProtoBufs/KeyValues.h"
#include "ProtoBufs/UEIKeyNames.pb.h"

namespace TrellanService {

/// On the wire: no key. No value of `ueikey`.
inline constexpr std::uint8_t kInvalidUEIKey = 255;

struct OrluKeyRow {
    std::uint8_t orluKey;
    std::uint8_t ueiKey;  ///< `kInvalidUEIKey`: depends on the code set.
};

struct UEIKeyName {
    UEIKeyNamesPB::ueikey key;
    std::string_view name;
};

/// The product keys that mean anything to the translation, in the order of their numbers.
extern const std::array<OrluKeyRow, 60> orluToUEIKeyMap;

/// The second name of every UEI key, in the order of the numbers, -1 first.
extern const std::array<UEIKeyName, 245> UEIKeyNameTable;

/// The UEI key that a product key has with every code set, or `kInvalidUEIKey`.
std::uint8_t FixedUEIKey(std::uint8_t orluKey);

}  // namespace TrellanService
