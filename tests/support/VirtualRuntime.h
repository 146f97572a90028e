// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orlu/Runtime.h"
#include "support/VirtualTransport.h"

/// Runs all tasks of a test on the test's own thread, under one clock that moves only when the test
/// says so. In force while it lives; tasks may outlive it, but do not run any more.
///
/// Tasks take turns in the order in which they were made; a turn is a wake-up: all that is queued,
/// then the works of `AtEndOfWakeUp`.
class VirtualRuntime final : public Orlu::RuntimeIF {
public:
    VirtualRuntime();
    ~VirtualRuntime() override;
    VirtualRuntime(const VirtualRuntime&) = delete;
    VirtualRuntime& operator=(const VirtualRuntime&) = delete;

    /// Runs until no task has work. Time stands still.
    void RunUntilIdle();

    /// Moves the clock and runs all that falls due on the way, in order of (due, armed).
    void Advance(std::uint32_t ms);

    /// Milliseconds since the runtime was made.
    std::int64_t Elapsed() const;

    VirtualTransport& Net();

    Orlu::TaskQueuePtr CreateTaskQueue(const std::string& name) override;
    Orlu::MonotonicMs Now() override;
    std::chrono::system_clock::time_point WallClock() override;
    /// The same row of numbers in every run.
    std::uint64_t Random() override;
    Orlu::TransportIF& Transport() override;
    /// `Wait` there runs the other tasks, and the clock where they wait for it. It throws, and so
    /// fails the test, if nothing is left that could signal, or an hour has passed.
    std::unique_ptr<Orlu::SemaphoreIF> CreateSemaphore(unsigned count) override;

    class Scheduler;

private:
    std::shared_ptr<Scheduler> m_scheduler;
    VirtualTransport m_transport;
    std::mt19937_64 m_random;
};
