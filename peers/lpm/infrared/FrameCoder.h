// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <vector>

#include "infrared/Protocols.h"

namespace Lpm {

/// Which frame of a press it is: one of those that any receiver needs, or one behind them.
enum class FramePhase : std::uint8_t { kPress, kRepeat };

/// Replaces `durationsUs` with one frame: light and dark in turn, light first, dark last up to the
/// start of the next frame. The scancode must fit the protocol, which must not be the raw one.
/// Pure; allocates only while `durationsUs` has not yet held so long a frame.
void EncodeFrame(const ProtocolRow& row, std::uint32_t scancode, bool toggle, FramePhase phase,
                 std::vector<std::uint32_t>& durationsUs);

}  // namespace Lpm
