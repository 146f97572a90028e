// SPDX-License-Identifier: Apache-2.0

#include "orlu/Task.h"

#include <gtest/gtest.h>

#include "orlu/Callback.h"
#include "orlu/ConditionSemaphore.h"
#include "support/VirtualRuntime.h"

namespace {

class EntryTask : public APTask {
public:
    explicit EntryTask(std::string& effects) : APTask("entry", 0, 0, -1), m_effects(effects) {}
    ~EntryTask() override
    {
        Stop();
        Queue()->Join();
    }
    void OnEntry() override { m_effects += "entry "; }

private:
    std::string& m_effects;
};

class Manager : public APTaskManager {
public:
    bool CreateAllTasks() override { return true; }
};

/// Each test runs on threads and under virtual time, where the same must hold.
class TaskTest : public testing::TestWithParam<bool> {
protected:
    TaskTest()
    {
        if (GetParam()) {
            m_virtual = std::make_unique<VirtualRuntime>();
        }
    }

    std::unique_ptr<VirtualRuntime> m_virtual;
    std::string m_effects;
};

TEST_P(TaskTest, RunsEntryThenItsQueueInOrderUntilStopped)
{
    EntryTask task(m_effects);
    const auto note = [this](const char* what) {
        return [this, what] {
            m_effects += what;
        };
    };
    task.QueueNotificationNonBlocking(note("a "));
    task.QueueNotificationNonBlocking([this, &task, note] {
        m_effects += "b ";
        task.Queue()->AtEndOfWakeUp([this, &task, note] {
            m_effects += "end ";
            task.Queue()->AtEndOfWakeUp(note("end2 "));
            task.QueueNotificationNonBlocking([this, &task, note] {
                m_effects += "stop ";
                task.Stop();
                EXPECT_FALSE(task.QueueNotificationNonBlocking(note("late ")));
            });
            task.QueueNotificationNonBlocking(note("dropped "));
        });
        task.QueueNotificationNonBlocking(note("d "));
    });
    task.QueueNotificationNonBlocking(note("c "));
    task.RegisterForStopped(note("stopped "));

    Manager manager;
    manager.AddTask(&task);
    manager.StartAllTasks();
    manager.JoinAllTasks();
    EXPECT_FALSE(task.QueueNotificationNonBlocking(note("later ")));
    EXPECT_EQ(m_effects, "entry a b c d end end2 stop stopped ");
}

TEST_P(TaskTest, AlarmsOfOneTimeRunInTheOrderOfArmingAndMayBeCancelledWhenDue)
{
    const auto task = IL::CreateTask("task", "");
    std::vector<std::unique_ptr<Orlu::AlarmIF>> alarms;
    ConditionSemaphore done(0);
    IL::BreakThread(
        [this, &task, &alarms, &done] {
            const auto due = Orlu::Runtime().Now() + Orlu::MonotonicMs(5);
            for (int i = 0; i < 6; ++i) {
                alarms.push_back(task->Queue()->CreateAlarm());
            }
            alarms[5]->Arm(due + Orlu::MonotonicMs(1), [&done] { done.Signal(); });
            for (const std::size_t i : {3U, 1U, 4U, 0U, 2U}) {
                alarms[i]->Arm(due, [this, &alarms, i, due] {
                    m_effects += std::to_string(i);
                    alarms[4]->Cancel();
                    EXPECT_GE(Orlu::Runtime().Now(), due);
                });
            }
            alarms[3]->Arm(due, [this] { m_effects += "again"; });
        },
        task.get());
    done.Wait();
    EXPECT_EQ(m_effects, "102again");
    task->Stop();
    task->Queue()->Join();
}

TEST_P(TaskTest, ACallbackOutlivesItsTaskAndIsDroppedThen)
{
    auto task = IL::CreateTask("task", "");
    ConditionSemaphore done(0);
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> isHeld = held;
    const AsyncCallback<std::string> callback(
        [this, &done](const std::string& text) {
            m_effects += text;
            done.Signal();
        },
        task.get());
    callback("first");
    done.Wait();
    // A work that refers to the queue itself must not keep it alive.
    task->Queue()->Post([queue = task->Queue(), held] { queue->Stop(); });
    task->Queue()->Post([queue = task->Queue(), held] {});
    held.reset();
    task->Queue()->Join();
    task.reset();
    callback("second");
    AsyncCallback<std::string>()("into nothing");
    EXPECT_EQ(m_effects, "first");
    EXPECT_TRUE(isHeld.expired());
}

INSTANTIATE_TEST_SUITE_P(Runtimes, TaskTest, testing::Bool(),
                         [](const auto& param) { return param.param ? "Virtual" : "Threads"; });

}  // namespace
