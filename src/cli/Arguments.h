// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace TrellanService {

/// Reads the whole text as a number: decimal, hexadecimal after 0x, octal after a leading zero.
/// Nothing for any other text and for a number of more than 32 bits.
std::optional<std::uint32_t> ReadKey(const std::string& text);

/// The decimal number at the beginning of the text; 0 if there is none. A number of more than 64
/// bits becomes the nearest 64-bit number.
std::int64_t ReadNumber(const std::string& text);

/// The same, limited to 32 bits; a negative number becomes 0.
std::uint32_t ReadUnsigned(const std::string& text);

}  // namespace TrellanService
