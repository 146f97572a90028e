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

/// The diode: sends one key at a time, frame behind frame, to all who watch. Each frame is handed
/// over when it begins. Frames are due at sums of microseconds from the press, so a held key does
/// not drift; nothing is armed while no key is sent. On one task.
class Transmitter {
public:
    /// Told when a key begins and when it ends. It ends at the end key, or with the last light of a
    /// press that is sent once; what a press needs at the least goes out even behind its end.
    using OnChange = std::function<void(DeviceNumber device, std::uint8_t key, bool on)>;

    Transmitter(NotifyTargetTaskIF* task, OnChange change);

    /// `sink` is not owned.
    void AddSink(FrameSinkIF* sink) { m_sinks.push_back(sink); }

    /// Sends `key` of `codeset`, in place of a key that is being sent. `once`: the frames that a
    /// press needs, otherwise until `End`.
    void Press(DeviceNumber device, std::shared_ptr<const CodesetBinary> codeset,
               const CodesetKey& key, bool toggle, bool once);

    /// The key is let go: no frame behind those that a press needs.
    void End();

    /// No further frame begins.
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
        bool on = true;                   ///< and not reported as ended
        unsigned shone = 0;               ///< frames that have begun
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
