// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "devices/Device.h"

namespace Lpm::Devices {

/// Limit for one file, since each device decodes each frame.
inline constexpr std::size_t kMaxDevices = 16;

/// Limit for one device. A remote control has some hundred keys.
inline constexpr std::size_t kMaxCodes = 512;

/// Limit for the characters of a device's name.
inline constexpr std::size_t kMaxName = 32;

/// Parses the text of a devices file:
///   {"devices": [{"name": "television", "type": "television", "protocol": "necx",
///                 "codes": {"0x5bc401": "power"}, "cec": {"0x40": "power"}}]}
/// `cec` may be absent. Names consist of small letters, digits, "_" and "-", and are unique. Empty,
/// and the reason with its place in `why`, for any other text.
std::optional<std::vector<DeviceDescription>> ParseDevicesFile(const std::string& text,
                                                               std::string& why);

}  // namespace Lpm::Devices
