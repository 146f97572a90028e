// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Lpm {

/// Compiles the JSON text of a code set to its binary:
///
///     {"about": "words for the reader, may be absent",
///      "groups": [{"protocol": "nec", "carrierKHz": 40, "minimumFrames": 2,
///                  "keys": {"POWER": "0x0408", "DIGIT_1": "0x0411"}},
///                 {"protocol": "raw", "carrierKHz": 36,
///                  "keys": {"MUTE": [892, 878, 1784, 40000]}}]}
///
/// Protocols and scancodes are written as in the Linux kernel, keys as `kKey_POWER` or `POWER`. An
/// absent carrier or minimum number of frames is the protocol's. A raw key is one frame in
/// microseconds, a mark first and a space last. A raw group has at most 16 different durations.
/// Nothing, and the reason in one line in `why`, for any other text.
std::optional<std::vector<std::uint8_t>> CompileCodeset(std::string_view text, std::string& why);

}  // namespace Lpm
