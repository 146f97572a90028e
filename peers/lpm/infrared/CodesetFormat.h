// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Constants that the reader and the writer of a code set share. CodesetBinary.cpp describes the
/// format.
namespace Lpm::CodesetFormat {

constexpr std::uint8_t kVersion = 1;
constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kChecksumBytes = 2;
constexpr std::size_t kMaximumDurations = 16;

std::uint16_t Checksum(std::span<const std::uint8_t> bytes);

}  // namespace Lpm::CodesetFormat
