// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string_view>

namespace TrellanService {

/// Stores a text in the session's cache. A text that does not fit is not stored: cut, it could
/// equal another text.
inline void Remember(std::array<char, 200>& place, std::string_view text)
{
    place.fill('\0');
    if (text.size() < place.size() && text.find('\0') == std::string_view::npos) {
        text.copy(place.data(), text.size());
    }
}

/// A text of the library, which may be null.
inline const char* OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

}  // namespace TrellanService
