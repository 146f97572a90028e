// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "orlu/LogLine.h"
#include "orlu/SystemUtils.h"

// For every text the log line is UTF-8 without control characters.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string line;
    Orlu::AppendEscaped(line, {reinterpret_cast<const char*>(data), size});
    const bool controls =
        std::ranges::any_of(line, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (controls || !StringUtils::IsUtf8(line)) {
        std::abort();
    }
    return 0;
}
