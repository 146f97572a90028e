// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Cloud {

/// The similarity of a model's name and a hint that a user typed, in percent. Only letters and
/// digits count, without regard to case. 100 for the same text and for an empty hint. A name that
/// begins with the hint gets a higher value than one with as many differences elsewhere.
unsigned Similarity(std::string_view hint, std::string_view name);

}  // namespace Cloud
