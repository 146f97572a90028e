// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string_view>

namespace TrellanService {

/// The UEI key of a product key whose meaning depends on the code set: on its class, told by the
/// first letter of its name, and on the keys that it holds, told by its ambiguous key bit map.
/// `kInvalidUEIKey` if there is none.
std::uint8_t ResolveKey(std::uint32_t orluKey, std::string_view codeset,
                        std::uint32_t ambiguousKeyBitMap);

}  // namespace TrellanService
