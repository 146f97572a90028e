// SPDX-License-Identifier: Apache-2.0

#include "lpm/Transmitter.h"

#include <numeric>
#include <utility>

namespace Lpm {

using std::chrono::microseconds;

namespace {

/// After a longer delay of the task, frames that were due are not sent late in a row.
constexpr std::chrono::milliseconds kMaximumLateness{100};

}  // namespace

Transmitter::Run::Run(DeviceNumber number, std::shared_ptr<const CodesetBinary> held,
                      const CodesetKey& which, bool toggle)
    : device(number), codeset(std::move(held)), key(which.ueiKey), renderer(*codeset, which, toggle)
{
}

Transmitter::Transmitter(NotifyTargetTaskIF* task, OnChange change)
    : m_change(std::move(change)), m_alarm(task->Queue()->CreateAlarm())
{
}

void Transmitter::Press(DeviceNumber device, std::shared_ptr<const CodesetBinary> codeset,
                        const CodesetKey& key, bool toggle, bool once)
{
    // The key before was accepted, so its receiver must get all frames of a press. The sinks get
    // them at once and before the frames of the new key; they send in order.
    while (m_run && m_run->framesBegun < m_run->renderer.MinimumFrames()) {
        SendNextFrame();
    }
    Finish();
    m_run = std::make_unique<Run>(device, std::move(codeset), key, toggle);
    m_run->once = once;
    m_run->due = Orlu::Runtime().Now();
    m_change(device, m_run->key, true);
    HandleDue();
}

void Transmitter::End()
{
    if (!m_run) {
        return;
    }
    // The record ends the key here, although frames that the press still lacks may follow.
    m_run->once = true;
    SwitchOff();
    if (m_run->framesBegun >= m_run->renderer.MinimumFrames()) {
        Finish();
    }
}

void Transmitter::Abort()
{
    Finish();
}

/// Returns the length of the space at the end of the frame.
microseconds Transmitter::SendNextFrame()
{
    const InfraredFrame frame = m_run->renderer.Frame(m_run->framesBegun++);
    for (FrameSinkIF* sink : m_sinks) {
        sink->HandleFrame(frame);
    }
    const auto& durations = frame.durationsUs;
    m_run->due +=
        microseconds(std::accumulate(durations.begin(), durations.end(), std::int64_t{0}));
    return microseconds(durations.empty() ? 0 : durations.back());
}

void Transmitter::HandleDue()
{
    const auto now = Orlu::Runtime().Now();
    if (now - m_run->due > kMaximumLateness) {
        m_run->due = now;
    }
    const microseconds lastSpace = SendNextFrame();
    const bool last = m_run->once && m_run->framesBegun >= m_run->renderer.MinimumFrames();
    if (!last) {
        ArmAt(m_run->due, &Transmitter::HandleDue);
    } else if (m_run->on) {
        // The key ends with its last mark, not with the space behind it.
        ArmAt(m_run->due - lastSpace, &Transmitter::Finish);
    } else {
        Finish();
    }
}

void Transmitter::ArmAt(microseconds due, void (Transmitter::*step)())
{
    // Rounded up: a frame must not begin before the space of the frame before it has ended.
    m_alarm->Arm(std::chrono::ceil<Orlu::MonotonicMs>(due), [this, step] { (this->*step)(); });
}

void Transmitter::Finish()
{
    if (!m_run) {
        return;
    }
    SwitchOff();
    m_alarm->Cancel();
    m_run.reset();
}

void Transmitter::SwitchOff()
{
    if (std::exchange(m_run->on, false)) {
        m_change(m_run->device, m_run->key, false);
    }
}

}  // namespace Lpm
