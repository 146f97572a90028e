// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Cloud {

/// A guided test asks no more of one code set; so the answer for a whole type stays small.
inline constexpr std::size_t kMaximumQuestions = 12;

/// A key of a code set that is worth a question, and what tells its light from others.
struct Question {
    std::uint8_t ueiKey = 0;
    std::int64_t light = 0;
};

/// In the order in which a user of such a device would be asked.
std::vector<Question> Questions(std::string_view type, std::string_view binary);

}  // namespace Cloud
