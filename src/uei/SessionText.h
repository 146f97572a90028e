// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <string_view>

namespace TrellanService {

/// Remembers a text in the session's cache; one that doesn't fit is not remembered, rather than cut
/// to what another text may be.
inline void Remember(std::array<char, 200>& place, std::string_view text)
{
    place.fill('\0');
    if (text.size() < place.size() && text.find('\0') == std::string_view::npos) {
        text.copy(place.data(), text.size());
    }
}

/// A text of the library, which may be none.
inline const char* OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

}  // namespace TrellanService
