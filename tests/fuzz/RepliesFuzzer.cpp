// SPDX-License-Identifier: Apache-2.0

#include <cstdint>

#include "blaster/BlasterFrames.h"

// No reader of a blaster's reply returns more than the reply contains.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace Frames = TrellanService::BlasterFrames;
    const std::string reply(data, data + size);
    const std::size_t payload = size < 2 ? 0 : size - 2;
    if (Frames::KeysOf(reply).size() > payload || Frames::DevicesOf(reply).size() * 2 > payload ||
        (size < 2 && Frames::Status(reply) != Frames::kNoStatus)) {
        __builtin_trap();
    }
    return 0;
}
