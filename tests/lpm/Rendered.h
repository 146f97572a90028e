// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "infrared/KeyRenderer.h"

namespace Lpm {

using Durations = std::vector<std::uint32_t>;

/// What the blaster sends for a key: a press, then `held` while the key is held. LircTest checks
/// the encoder with LIRC's decoders, so its frames can check the devices' decoders.
struct Rendered {
    Rendered(std::string_view protocol, std::uint32_t scancode, bool toggle = false)
        : Rendered(CodesetGroup{.protocol = FindProtocol(protocol)->id}, scancode, toggle)
    {
    }

    Rendered(const CodesetGroup& group, std::uint32_t scancode, bool toggle = false)
    {
        const CodesetKey key{.ueiKey = 1, .group = 0, .scancode = scancode};
        std::string why;
        const auto bytes = CodesetBinary::Compose({&group, 1}, {&key, 1}, why).value();
        const CodesetBinary codeset = CodesetBinary::Parse(bytes, why).value();
        KeyRenderer renderer(codeset, key, toggle);
        for (unsigned i = 0; i <= renderer.MinimumFrames(); ++i) {
            const InfraredFrame frame = renderer.Frame(i);
            carrierHz = frame.carrierHz;
            press.emplace_back(frame.durationsUs.begin(), frame.durationsUs.end());
        }
        held = press.back();
        press.pop_back();
    }

    std::uint32_t carrierHz = 0;
    std::vector<Durations> press;
    Durations held;
};

}  // namespace Lpm
