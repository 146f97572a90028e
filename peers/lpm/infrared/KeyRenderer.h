// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <vector>

#include "infrared/CodesetBinary.h"
#include "infrared/InfraredFrame.h"

namespace Lpm {

/// The frames of one press of one key, for as long as the key is held. The first frames are the
/// press, enough of them for any receiver. Then come the protocol's repeats. The code set must
/// outlive this object. Not thread-safe.
class KeyRenderer {
public:
    /// `key` belongs to the code set. `toggle` is the bit that some protocols flip with each new
    /// press; the others ignore it.
    KeyRenderer(const CodesetBinary& codeset, const CodesetKey& key, bool toggle);

    /// The minimum number of frames of a press; 1 or more.
    unsigned MinimumFrames() const;

    /// The frame with the number `index`, which counts from 0 without limit. Valid until the next
    /// call. Lasts at least `CodesetBinary::kMinimumFrameUs`.
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
