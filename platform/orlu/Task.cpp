// SPDX-License-Identifier: Apache-2.0

#include "orlu/Task.h"

#include <utility>

APTask::APTask(std::string name, unsigned /*stackSize*/, int /*realTimeType*/, int /*affinity*/)
    : NotifyTargetTaskIF(Orlu::Runtime().CreateTaskQueue(name)), m_name(std::move(name))
{
}

APTask::~APTask()
{
    Queue()->Stop();
    Queue()->Join();
}

void APTask::Entry()
{
    OnEntry();
}

void APTask::OnEntry() {}

void APTask::Stop()
{
    Queue()->Stop();
    // Moved out, so that each is called once, also if it calls `Stop`.
    for (const auto& stopped : std::exchange(m_stopped, {})) {
        stopped();
    }
    for (auto* observer : std::exchange(m_observers, {})) {
        observer->TaskStopped();
    }
}

bool APTask::QueueNotificationNonBlocking(Orlu::Work work)
{
    return Queue()->Post(std::move(work));
}

void APTask::AttachObserver(TaskObserverIF* observer)
{
    m_observers.push_back(observer);
}

void APTask::DetachObserver(TaskObserverIF* observer)
{
    std::erase(m_observers, observer);
}

void APTask::RegisterForStopped(Orlu::Work stopped)
{
    m_stopped.push_back(std::move(stopped));
}

void APTaskManager::AddTask(APTask* task)
{
    m_tasks.push_back(task);
}

void APTaskManager::StartAllTasks()
{
    for (auto* task : m_tasks) {
        task->Queue()->Start([task] { task->Entry(); });
    }
}

void APTaskManager::JoinAllTasks()
{
    for (auto* task : m_tasks) {
        task->Queue()->Join();
    }
}

namespace IL {

std::shared_ptr<NotifyTargetTaskIF> CreateTask(const std::string& name,
                                               const std::string& /*secondName*/)
{
    auto task = std::make_shared<APTask>(name, 0, 0, -1);
    task->Queue()->Start({});
    return task;
}

void BreakThread(Orlu::Work work, NotifyTargetTaskIF* task)
{
    task->QueueNotificationNonBlocking(std::move(work));
}

}  // namespace IL
