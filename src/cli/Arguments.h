// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace TrellanService {

/// The whole text as a number: decimal, hexadecimal behind 0x, octal behind a leading zero.
/// Nothing for any other text and for a number that 32 bits can't hold.
std::optional<std::uint32_t> ReadKey(const std::string& text);

/// The decimal number that the text begins with; 0 for one without. What 64 bits can't hold
/// becomes the nearest that they can.
std::int64_t ReadNumber(const std::string& text);

/// The same within 32 bits: 0 for a negative one.
std::uint32_t ReadUnsigned(const std::string& text);

}  // namespace TrellanService
