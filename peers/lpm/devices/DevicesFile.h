// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "devices/Device.h"

namespace Lpm::Devices {

/// The devices of a file; each receives each frame.
inline constexpr std::size_t kMaxDevices = 16;

/// Codes of one device; a remote control has a good hundred keys.
inline constexpr std::size_t kMaxCodes = 512;

/// Letters of a device's name.
inline constexpr std::size_t kMaxName = 32;

/// The devices of a file's text:
///   {"devices": [{"name": "television", "type": "television", "protocol": "necx",
///                 "codes": {"0x5bc401": "power"}, "cec": {"0x40": "power"}}]}
/// `cec` may be left out. Names are of small letters, digits, "_" and "-", and each stands once.
/// Empty for anything else, and `why` says what is wrong and where.
std::optional<std::vector<DeviceDescription>> ParseDevicesFile(const std::string& text,
                                                               std::string& why);

}  // namespace Lpm::Devices
