// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "infrared/CodesetBinary.h"
#include "infrared/InfraredFrame.h"
#include "infrared/KeyRenderer.h"
#include "lpm/BlasterProtocol.h"
#include "orlu/Task.h"

namespace Lpm {

/// Sends one key at a time, frame after frame, to all sinks. A sink gets each frame when the frame
/// begins. The time of a frame is the time of the press plus the lengths of the frames before it,
/// in microseconds, so a held key does not drift. No alarm is armed while no key is sent. On one
/// task.
class Transmitter {
public:
    /// Called when a key begins and when it ends. A key ends at the end key, or with the last mark
    /// of a press that is sent once. The minimum frames of a press are sent even after its end.
    using OnChange = std::function<void(DeviceNumber device, std::uint8_t key, bool on)>;

    Transmitter(NotifyTargetTaskIF* task, OnChange change);

    /// `sink` is not owned.
    void AddSink(FrameSinkIF* sink) { m_sinks.push_back(sink); }

    /// Sends `key` of `codeset` and ends the key before. `once`: sends the minimum frames of a
    /// press; otherwise sends until `End`.
    void Press(DeviceNumber device, std::shared_ptr<const CodesetBinary> codeset,
               const CodesetKey& key, bool toggle, bool once);

    /// Ends the key. Only frames that the press still needs follow.
    void End();

    /// Ends the key at once: no further frame begins.
    void Abort();

    /// Whether a key of `device` is being sent.
    bool IsSending(DeviceNumber device) const { return m_run && m_run->device == device; }

private:
    struct Run {
        Run(DeviceNumber number, std::shared_ptr<const CodesetBinary> held, const CodesetKey& which,
            bool toggle);

        DeviceNumber device;
        std::shared_ptr<const CodesetBinary> codeset;
        std::uint8_t key;
        KeyRenderer renderer;
        bool once = false;
        bool on = true;                   ///< the end is not yet reported
        unsigned framesBegun = 0;         ///< frames that have begun
        std::chrono::microseconds due{};  ///< on the monotonic clock: when the last of them ends
    };

    std::chrono::microseconds SendNextFrame();
    void HandleDue();
    void ArmAt(std::chrono::microseconds due, void (Transmitter::*step)());
    void Finish();
    void SwitchOff();

    OnChange m_change;
    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::vector<FrameSinkIF*> m_sinks;
    std::unique_ptr<Run> m_run;
};

}  // namespace Lpm
