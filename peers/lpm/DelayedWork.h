// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <map>
#include <memory>

#include "orlu/Task.h"

namespace Lpm {

/// Work put off, each by a time of its own, on one task. What is due at one time runs in the order
/// in which it was put off; what is left when this ends does not run.
class DelayedWork {
public:
    explicit DelayedWork(NotifyTargetTaskIF* task) : m_alarm(task->Queue()->CreateAlarm()) {}

    /// With no time to wait the work runs at once.
    void Run(std::chrono::milliseconds delay, Orlu::Work work);

private:
    void Arm();
    void RunDue();

    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::multimap<Orlu::MonotonicMs, Orlu::Work> m_waiting;
};

}  // namespace Lpm
