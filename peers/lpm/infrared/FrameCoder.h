// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <vector>

#include "infrared/Protocols.h"

namespace Lpm {

/// Position of a frame in a press: one of the minimum frames, or a repeat behind them.
enum class FramePhase : std::uint8_t { kPress, kRepeat };

/// Replaces `durationsUs` with one frame: marks and spaces in turn, a mark first. The last space
/// lasts until the start of the next frame. The scancode must fit the protocol; the raw protocol is
/// not allowed. No state; allocates only if `durationsUs` is too small for the frame.
void EncodeFrame(const ProtocolRow& row, std::uint32_t scancode, bool toggle, FramePhase phase,
                 std::vector<std::uint32_t>& durationsUs);

}  // namespace Lpm
