// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Cloud {

/// Manufacturer and name of a display.
struct EdidMonitor {
    std::string manufacturer;  ///< three letters
    std::string name;          ///< from the name descriptor; may be empty
};

/// Nothing if the bytes do not begin with an EDID block.
std::optional<EdidMonitor> ReadEdid(std::span<const std::uint8_t> edid);

}  // namespace Cloud
