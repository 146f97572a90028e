// SPDX-License-Identifier: Apache-2.0

#include <cstdlib>
#include <string_view>

#include "console/ConsoleText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    std::size_t kept = 0;
    if (const auto words = OrluConsole::SplitWords(line)) {
        for (const auto& word : *words) {
            kept += word.size();
        }
    }
    for (const char next : OrluConsole::Printable(line)) {
        if (next >= 0 && next < ' ' && next != '\n' && next != '\t') {
            std::abort();
        }
    }
    if (kept > size) {
        std::abort();
    }
    return 0;
}
