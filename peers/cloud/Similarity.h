// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Cloud {

/// How like a model's name is to what somebody typed, in percent. Only letters and digits count,
/// without regard to case; 100 for the same text and for an empty hint. Text that continues the
/// hint is liked better than one with as many differences elsewhere.
unsigned Similarity(std::string_view hint, std::string_view name);

}  // namespace Cloud
