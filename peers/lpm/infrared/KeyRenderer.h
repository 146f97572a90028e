// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <vector>

#include "infrared/CodesetBinary.h"
#include "infrared/Light.h"

namespace Lpm {

/// One press of one key, as the frames that the diode sends while the key is held. The first frames
/// make up a press that any receiver takes; what follows is the protocol's way to say "still held".
class KeyRenderer {
public:
    /// `toggle` is the bit that some protocols flip with each new press; others ignore it.
    KeyRenderer(const CodesetBinary& codeset, const CodesetKey& key, bool toggle);

    /// Frames that a press has at the least, however short it is.
    unsigned MinimumFrames() const;

    /// The frame with that number, from 0 on; valid until the next call.
    LightFrame Frame(unsigned index);

private:
    const CodesetBinary& m_codeset;
    CodesetKey m_key;
    bool m_toggle;
    std::vector<std::uint32_t> m_durations;
};

}  // namespace Lpm
