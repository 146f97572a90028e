// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Lpm {

/// The binary of a code set that is written as JSON:
///
///     {"about": "words for the reader, may be absent",
///      "groups": [{"protocol": "nec", "carrierKHz": 40, "minimumFrames": 2,
///                  "keys": {"POWER": "0x0408", "DIGIT_1": "0x0411"}},
///                 {"protocol": "raw", "carrierKHz": 36,
///                  "keys": {"MUTE": [892, 878, 1784, 40000]}}]}
///
/// Protocols and scancodes as the Linux kernel writes them, keys as `kKey_POWER` or `POWER`;
/// carrier and least number of frames are the protocol's own where they are absent. A raw key is
/// one frame in microseconds, light first and dark last, at most 16 different durations in a group.
/// Nothing, and the reason in one line in `why`, for any other text.
std::optional<std::vector<std::uint8_t>> CompileCodeset(std::string_view text, std::string& why);

}  // namespace Lpm
