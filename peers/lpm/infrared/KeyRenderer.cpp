// SPDX-License-Identifier: Apache-2.0

#include "infrared/KeyRenderer.h"

#include "infrared/FrameCoder.h"

namespace Lpm {

KeyRenderer::KeyRenderer(const CodesetBinary& codeset, const CodesetKey& key, bool toggle)
    : m_group(codeset.Groups()[key.group]),
      m_row(*FindProtocol(static_cast<std::uint8_t>(m_group.protocol))),
      m_key(key),
      m_toggle(toggle)
{
}

unsigned KeyRenderer::MinimumFrames() const
{
    return m_group.minimumFrames != 0 ? m_group.minimumFrames : m_row.minimumFrames;
}

InfraredFrame KeyRenderer::Frame(unsigned index)
{
    if (m_row.coding == Coding::kStored) {
        RenderStored(index);
    } else {
        const bool press = index < MinimumFrames();
        EncodeFrame(m_row, m_key.scancode, m_toggle,
                    press ? FramePhase::kPress : FramePhase::kRepeat, m_durations);
    }
    const std::uint32_t carrierHz =
        m_group.carrierKHz != 0 ? m_group.carrierKHz * 1000u : m_row.carrierHz;
    return {carrierHz, m_durations};
}

void KeyRenderer::RenderStored(unsigned index)
{
    const RawSequence& sequence = m_group.rawSequences[m_key.scancode];
    const bool press = index < MinimumFrames() || sequence.repeat.empty();
    // Clearing keeps the capacity: frames of a held key allocate once.
    m_durations.clear();
    for (const std::uint8_t step : press ? sequence.press : sequence.repeat) {
        m_durations.push_back(m_group.rawDurationsUs[step]);
    }
}

}  // namespace Lpm
