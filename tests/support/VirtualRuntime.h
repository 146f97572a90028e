// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orlu/Runtime.h"
#include "support/VirtualTransport.h"

/// Runs all tasks of a test on the test's own thread. The clock moves only when the test moves it.
/// In force while this object exists. Tasks may outlive it, but do not run any more.
///
/// Tasks run in turn, in the order of their construction. A turn is one wake-up: all queued works,
/// then the works of `AtEndOfWakeUp`.
class VirtualRuntime final : public Orlu::RuntimeIF {
public:
    VirtualRuntime();
    ~VirtualRuntime() override;
    VirtualRuntime(const VirtualRuntime&) = delete;
    VirtualRuntime& operator=(const VirtualRuntime&) = delete;

    /// Runs until no task has work. The clock does not move.
    void RunUntilIdle();

    /// Moves the clock and runs all alarms that become due, in the order of due time, then of
    /// arming.
    void Advance(std::uint32_t ms);

    /// Milliseconds since the construction of the runtime.
    std::int64_t Elapsed() const;

    VirtualTransport& Net();

    Orlu::TaskQueuePtr CreateTaskQueue(const std::string& name) override;
    Orlu::MonotonicMs Now() override;
    std::chrono::system_clock::time_point WallClock() override;
    /// Random numbers, the same in every run.
    std::uint64_t Random() override;
    Orlu::TransportIF& Transport() override;
    /// `Wait` of this semaphore runs the other tasks, and moves the clock if they wait for it. It
    /// throws, and so fails the test, if no task could signal any more, or after an hour.
    std::unique_ptr<Orlu::SemaphoreIF> CreateSemaphore(unsigned count) override;

    class Scheduler;

private:
    std::shared_ptr<Scheduler> m_scheduler;
    VirtualTransport m_transport;
    std::mt19937_64 m_random;
};
