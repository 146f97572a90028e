// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Lpm {

/// A larger number would print megabytes.
constexpr unsigned kMaximumRenderedRepeats = 1000;

/// One press, and `repeats` repeats behind it, of a key written as `protocol:scancode`: a line
/// `carrier N` in hertz, then lines `pulse N` and `space N` in microseconds, each with its newline.
/// Nothing, and the reason in one line in `why`, if there is no such protocol or scancode.
std::optional<std::string> RenderText(std::string_view key, bool toggle, unsigned repeats,
                                      std::string& why);

}  // namespace Lpm
