// SPDX-License-Identifier: Apache-2.0

#include "lpm/Transmitter.h"

#include <numeric>
#include <utility>

namespace Lpm {

using std::chrono::microseconds;

namespace {

/// A task that stood still for longer does not make up for the frames it missed.
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
    // The key before was accepted, so its receiver gets a whole press; the diode sends in order.
    while (m_run && m_run->shone < m_run->renderer.MinimumFrames()) {
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
    m_run->once = true;
    SwitchOff();
    if (m_run->shone >= m_run->renderer.MinimumFrames()) {
        Finish();
    }
}

void Transmitter::Abort()
{
    Finish();
}

/// Gives the dark at the end of the frame.
microseconds Transmitter::SendNextFrame()
{
    const InfraredFrame frame = m_run->renderer.Frame(m_run->shone++);
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
    const microseconds dark = SendNextFrame();
    const bool last = m_run->once && m_run->shone >= m_run->renderer.MinimumFrames();
    if (!last) {
        ArmAt(m_run->due, &Transmitter::HandleDue);
    } else if (m_run->on) {
        ArmAt(m_run->due - dark, &Transmitter::Finish);
    } else {
        Finish();
    }
}

void Transmitter::ArmAt(microseconds due, void (Transmitter::*step)())
{
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
