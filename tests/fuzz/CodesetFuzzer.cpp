// SPDX-License-Identifier: Apache-2.0

#include <cstdint>

#include "codesets/CodesetText.h"
#include "infrared/CodesetBinary.h"

// An accepted binary can be composed again from its groups and keys. An accepted text compiles to
// an accepted binary.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string why;
    if (const auto codeset = Lpm::CodesetBinary::Parse({data, size}, why)) {
        const auto again = Lpm::CodesetBinary::Compose(codeset->Groups(), codeset->Keys(), why);
        const auto back = again ? Lpm::CodesetBinary::Parse(*again, why) : std::nullopt;
        if (!back || back->Keys() != codeset->Keys() || back->Groups() != codeset->Groups()) {
            __builtin_trap();
        }
    }
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto binary = Lpm::CompileCodeset(text, why)) {
        if (!Lpm::CodesetBinary::Parse(*binary, why)) {
            __builtin_trap();
        }
    }
    return 0;
}
