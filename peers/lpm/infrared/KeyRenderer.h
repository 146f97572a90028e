// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <vector>

#include "infrared/CodesetBinary.h"
#include "infrared/InfraredFrame.h"

namespace Lpm {

/// One press of one key, as the frames that the diode sends while the key is held. The first frames
/// make up a press that any receiver takes; what follows is the protocol's way to say "still held".
/// The code set must outlive it; no thread of its own.
class KeyRenderer {
public:
    /// `key` is one of the code set's. `toggle` is the bit that some protocols flip with each new
    /// press; others ignore it.
    KeyRenderer(const CodesetBinary& codeset, const CodesetKey& key, bool toggle);

    /// Frames that a press has at the least, however short it is; 1 or more.
    unsigned MinimumFrames() const;

    /// The frame with that number, from 0 on and without end; valid until the next call. Lasts at
    /// least `CodesetBinary::kMinimumFrameUs`.
    InfraredFrame Frame(unsigned index);

private:
    void RenderStored(unsigned index);

    const CodesetGroup& m_group;
    const ProtocolRow& m_row;
    CodesetKey m_key;
    bool m_toggle;
    std::vector<std::uint32_t> m_durations;
};

}  // namespace Lpm
