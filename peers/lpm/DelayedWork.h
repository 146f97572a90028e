// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <map>
#include <memory>

#include "orlu/Task.h"

namespace Lpm {

/// Runs work after a delay, on one task. Work that is due at the same time runs in the order of its
/// `Run` calls. Work that is still waiting when this object is destroyed does not run.
class DelayedWork {
public:
    explicit DelayedWork(NotifyTargetTaskIF* task) : m_alarm(task->Queue()->CreateAlarm()) {}

    /// A delay of 0 runs the work before `Run` returns.
    void Run(std::chrono::milliseconds delay, Orlu::Work work);

private:
    void Arm();
    void RunDue();

    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::multimap<Orlu::MonotonicMs, Orlu::Work> m_waiting;
};

}  // namespace Lpm
