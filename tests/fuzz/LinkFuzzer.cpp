// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>

#include "portico/LinkMessage.h"

// An accepted message of the link reads the same after it has been written.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    std::string why;
    const auto message = Portico::ReadLinkMessage(text, why);
    if (!message) {
        return 0;
    }
    const std::string written = Portico::WriteLinkMessage(*message);
    const auto again = Portico::ReadLinkMessage(written, why);
    if (!again || Portico::WriteLinkMessage(*again) != written || again->body != message->body) {
        __builtin_trap();
    }
    return 0;
}
