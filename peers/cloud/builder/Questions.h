// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Cloud {

/// The maximum for one code set, which keeps the answer for a whole type small.
inline constexpr std::size_t kMaximumQuestions = 12;

/// A key of a code set for the guided test. Equal `signal` values are the same signal.
struct Question {
    std::uint8_t ueiKey = 0;
    std::int64_t signal = 0;
};

/// The keys for a device of that type, in the order of the test. Empty for an invalid binary.
std::vector<Question> Questions(std::string_view type, std::string_view binary);

}  // namespace Cloud
