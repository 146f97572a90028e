// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Orlu {

/// Bytes of the well-formed UTF-8 sequence at the start of `text`; 0 if there is none. Overlong
/// forms, surrogates and what lies above U+10FFFF are not well-formed.
std::size_t Utf8SequenceLength(std::string_view text);

}  // namespace Orlu
