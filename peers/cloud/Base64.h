// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Cloud {

std::string ToBase64(std::string_view bytes);

/// Nothing for text that is not whole groups of four with the padding at the end.
std::optional<std::string> FromBase64(std::string_view text);

}  // namespace Cloud
