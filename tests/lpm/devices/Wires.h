// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "devices/Protocol.h"

namespace Lpm::Devices {

using Durations = std::vector<std::uint32_t>;

/// Codes as their makers and users have published them, bit by bit in the order of sending. Written
/// by hand from the protocols' definitions, to be read by the decoders.
struct Wire {
    std::string_view name;
    Protocol protocol;
    std::vector<Durations> press;
    std::vector<Durations> held;  ///< what follows, again and again, while the key is held
    std::uint32_t scancode;
    std::optional<bool> toggle;
    std::uint32_t unchecked;  ///< scancode bits that the protocol sends once and without a check
};

const std::vector<Wire>& Wires();
const Wire& WireOf(std::string_view name);

/// The building blocks. Blanks in `bits` are for the eye.
Durations NecFrame(std::string_view bits);
Durations NecDitto();
Durations SonyFrame(std::string_view bits);
Durations Rc5Frame(std::string_view bits);
/// "T" and "t" are a 1 and a 0 of double length.
Durations Rc6Frame(std::string_view bits);

}  // namespace Lpm::Devices
