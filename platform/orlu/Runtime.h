// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orlu/Work.h"

namespace Network {
class ConnectorSocket;
}

/// The interfaces between the framework and the machine. A process runs on `RealRuntime`: a thread
/// and a Boost.Asio loop for each task, Unix sockets, the system's clocks. A test installs its own
/// runtime before it makes the first task; everything above is the same code.
namespace Orlu {

/// Milliseconds on the monotonic clock. All timed things use this clock.
using MonotonicMs = std::chrono::milliseconds;

/// One deadline on one task's queue. Used on that task only.
class AlarmIF {
public:
    virtual ~AlarmIF() = default;

    /// Queues `work` on the task once the clock reaches `due`; replaces what was armed before.
    /// Alarms due at the same time run in the order in which they were armed.
    virtual void Arm(MonotonicMs due, Work work) = 0;

    /// After this, work that was armed does not run, not even if it is already queued.
    virtual void Cancel() = 0;
};

/// The queue of one task: runs one piece of work at a time, in the order in which it was posted.
class TaskQueueIF {
public:
    virtual ~TaskQueueIF() = default;

    /// Any thread. False, and the work is dropped, once the queue has been stopped. Work that is
    /// posted before `Start` waits for it.
    virtual bool Post(Work work) = 0;

    /// Starts the queue: `entry` runs first, then what was posted.
    virtual void Start(Work entry) = 0;

    /// Any thread. Queued work is dropped; the piece of work that is running is finished.
    virtual void Stop() = 0;

    /// Blocks until the queue has stopped.
    virtual void Join() = 0;

    /// Whether the caller runs on this queue.
    virtual bool IsCurrent() const = 0;

    virtual std::unique_ptr<AlarmIF> CreateAlarm() = 0;

    /// On the queue only: runs `work` once, after all the work of this wake-up and before the queue
    /// sleeps. Sockets and the log write here, once for many messages.
    virtual void AtEndOfWakeUp(Work work) = 0;
};

using TaskQueuePtr = std::shared_ptr<TaskQueueIF>;
using SocketPtr = std::shared_ptr<Network::ConnectorSocket>;

/// A listener or an attempt to connect. It ends when it is destroyed, on its task.
class TransportHandle {
public:
    virtual ~TransportHandle() = default;
};

/// Makes connections between local processes. Callbacks run on the queue that is given.
class TransportIF {
public:
    virtual ~TransportIF() = default;

    /// Accepts connections at `path` (rooted already). Empty, with a log line, if that fails.
    virtual std::unique_ptr<TransportHandle> Listen(const std::string& path,
                                                    const TaskQueuePtr& queue,
                                                    std::function<void(SocketPtr)> accepted) = 0;

    /// One attempt: `done` is called once, with an empty pointer on failure.
    virtual std::unique_ptr<TransportHandle> Connect(const std::string& path,
                                                     const TaskQueuePtr& queue,
                                                     std::function<void(SocketPtr)> done) = 0;
};

/// A count on which one thread can wait.
class SemaphoreIF {
public:
    virtual ~SemaphoreIF() = default;
    virtual void Signal() = 0;
    virtual void Wait() = 0;
};

/// One runtime serves the whole process.
class RuntimeIF {
public:
    virtual ~RuntimeIF() = default;
    virtual TaskQueuePtr CreateTaskQueue(const std::string& name) = 0;
    virtual MonotonicMs Now() = 0;
    virtual std::chrono::system_clock::time_point WallClock() = 0;
    virtual std::uint64_t Random() = 0;
    virtual TransportIF& Transport() = 0;
    virtual std::unique_ptr<SemaphoreIF> CreateSemaphore(unsigned count) = 0;
};

/// The runtime in force: the real one, unless a test has installed another.
RuntimeIF& Runtime();

/// The queue whose work runs on this thread; null on a thread that belongs to no task.
TaskQueueIF* CurrentTaskQueue();

/// For tests: installs `runtime` (not owned; null: the real one again). Before any task exists.
void InstallRuntime(RuntimeIF* runtime);

}  // namespace Orlu
