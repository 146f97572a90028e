// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The standard alphabet with padding. Decoding is strict: no blanks, no missing padding, and only
/// zeros in the bits that padding leaves unused.
namespace QSP::Base64 {

std::string Encode(std::span<const std::uint8_t> bytes);
std::optional<std::vector<std::uint8_t>> Decode(std::string_view text);

}  // namespace QSP::Base64
