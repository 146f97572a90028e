// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orlu/Runtime.h"

/// A task on which calls can be queued. Everything that is bound to one task runs serially on it.
class NotifyTargetTaskIF {
public:
    virtual ~NotifyTargetTaskIF() = default;

    /// The start of the task's thread: calls `OnEntry`. The queue runs after it, until `Stop`.
    virtual void Entry() = 0;

    /// Runs once, on the task's own thread, before anything that was queued.
    virtual void OnEntry() = 0;

    /// Any thread. Ends the task; what is queued is dropped.
    virtual void Stop() = 0;

    /// Any thread. Queues `work`; false, and nothing runs, once the task has stopped.
    virtual bool QueueNotificationNonBlocking(Orlu::Work work) = 0;

    /// The queue of the task. It outlives the task if a callback still holds it.
    const Orlu::TaskQueuePtr& Queue() const { return m_queue; }

protected:
    explicit NotifyTargetTaskIF(Orlu::TaskQueuePtr queue) : m_queue(std::move(queue)) {}

private:
    Orlu::TaskQueuePtr m_queue;
};

/// Called when a task has been stopped, on the thread that stops it.
class TaskObserverIF {
public:
    virtual ~TaskObserverIF() = default;
    virtual void TaskStopped() = 0;
};

/// A task: a thread of its own with a queue. Work that was queued before the task was started
/// waits.
class APTask : public NotifyTargetTaskIF {
public:
    /// Stack size, real-time type and affinity are ignored: every task has the system's defaults.
    /// They are there for the product's sources.
    APTask(std::string name, unsigned stackSize, int realTimeType, int affinity);
    ~APTask() override;
    APTask(const APTask&) = delete;
    APTask& operator=(const APTask&) = delete;

    void Entry() override;
    void OnEntry() override;
    void Stop() override;
    bool QueueNotificationNonBlocking(Orlu::Work work) override;

    virtual void AttachObserver(TaskObserverIF* observer);
    virtual void DetachObserver(TaskObserverIF* observer);
    /// `stopped` runs once, on the thread that calls `Stop`, when the queue takes no more work.
    virtual void RegisterForStopped(Orlu::Work stopped);

    const std::string& Name() const { return m_name; }

private:
    std::string m_name;
    std::vector<TaskObserverIF*> m_observers;
    std::vector<Orlu::Work> m_stopped;
};

/// Starts and joins the tasks that were added to it, in that order. Owns none of them.
class APTaskManager {
public:
    virtual ~APTaskManager() = default;

    /// Makes the tasks and adds them.
    virtual bool CreateAllTasks() = 0;

    void AddTask(APTask* task);
    void StartAllTasks();
    /// Blocks until every task has stopped.
    void JoinAllTasks();

private:
    std::vector<APTask*> m_tasks;
};

namespace IL {

/// A started task without a subclass. The second name is the product's own and not used here.
std::shared_ptr<NotifyTargetTaskIF> CreateTask(const std::string& name,
                                               const std::string& secondName);

/// Runs `work` on `task`, from any thread. Returns at once.
void BreakThread(Orlu::Work work, NotifyTargetTaskIF* task);

}  // namespace IL
