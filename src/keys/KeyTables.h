// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "ProtoBufs/KeyValues.h"
#include "ProtoBufs/UEIKeyNames.pb.h"

namespace TrellanService {

/// The value for no key in a key frame. Not a value of `ueikey`.
inline constexpr std::uint8_t kInvalidUEIKey = 255;

struct OrluKeyRow {
    std::uint8_t orluKey;
    std::uint8_t ueiKey;  ///< `kInvalidUEIKey`: depends on the code set.
};

struct UEIKeyName {
    UEIKeyNamesPB::ueikey key;
    std::string_view name;        ///< The second name, "O_KEY_POWER".
    std::string_view schemaName;  ///< "kKey_POWER".
};

/// The product keys that have a translation, in ascending order.
extern const std::array<OrluKeyRow, 60> orluToUEIKeyMap;

/// The names of every UEI key, in the order of the numbers, -1 first. They are in a table so that
/// sending a key does not need the schema's descriptors.
extern const std::array<UEIKeyName, 245> UEIKeyNameTable;

/// The UEI key that a product key has with every code set, or `kInvalidUEIKey`.
std::uint8_t FixedUEIKey(std::uint8_t orluKey);

/// The schema's name of a UEI key from 1 to 244, empty for any other number.
std::string_view UEIKeySchemaName(std::uint32_t ueiKey);

}  // namespace TrellanService
