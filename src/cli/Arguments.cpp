// SPDX-License-Identifier: Apache-2.0

#include "cli/Arguments.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace TrellanService {

std::optional<std::uint32_t> ReadKey(const std::string& text)
{
    // `strtoull` would accept a sign and leading blanks.
    if (text.empty() || std::isdigit(static_cast<unsigned char>(text.front())) == 0) {
        return std::nullopt;
    }
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 0);
    if (end != text.c_str() + text.size() || value > UINT32_MAX) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

std::int64_t ReadNumber(const std::string& text)
{
    return std::strtoll(text.c_str(), nullptr, 10);
}

std::uint32_t ReadUnsigned(const std::string& text)
{
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(ReadNumber(text), 0, UINT32_MAX));
}

}  // namespace TrellanService
