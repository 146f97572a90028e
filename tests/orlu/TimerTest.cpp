// SPDX-License-Identifier: Apache-2.0

#include "orlu/Timer.h"

#include <gtest/gtest.h>

#include "orlu/ConditionSemaphore.h"
#include "support/Effects.h"

namespace {

class TimerTest : public testing::Test {
protected:
    std::shared_ptr<APTimer> MakeTimer(std::uint32_t first, std::uint32_t repeat = 0)
    {
        auto timer = APTimer::Create(m_task.get(), "timer");
        timer->SetTimeouts(first, repeat);
        return timer;
    }

    /// Moves the clock by `ms` during a work of the task.
    void StandStill(std::uint32_t ms)
    {
        ConditionSemaphore over(0);
        const auto timer = APTimer::Create(m_other.get(), "other");
        timer->SetTimeouts(ms, 0);
        timer->Start([&over] { over.Signal(); });
        over.Wait();
    }

    VirtualRuntime m_runtime;
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("task", "");
    std::shared_ptr<NotifyTargetTaskIF> m_other = IL::CreateTask("other", "");
    Effects m_effects{m_runtime};
};

TEST_F(TimerTest, AChainOfStepsDoesNotDriftWithTheLoad)
{
    const auto timer = MakeTimer(10);
    int step = 0;
    std::function<void()> next = [this, &timer, &step, &next] {
        m_effects.Add("step");
        StandStill(step == 1 ? 7 : 3);
        if (++step < 4) {
            timer->Start(next);
        }
    };
    timer->Start(next);
    m_runtime.Advance(100);
    EXPECT_EQ(m_effects.Take(), "+10 step\n+20 step\n+30 step\n+40 step\n");
}

TEST_F(TimerTest, ABlockedTaskDoesNotReplayMissedTicks)
{
    const auto timer = MakeTimer(1000, 1000);
    timer->Start([this] {
        m_effects.Add("tick");
        if (m_runtime.Elapsed() == 1000) {
            StandStill(55000);
        }
    });
    m_runtime.Advance(58000);
    EXPECT_EQ(m_effects.Take(), "+1000 tick\n+56000 tick\n+56900 tick\n+57900 tick\n");
}

TEST_F(TimerTest, StoppedInItsOwnCallbackItCountsFromNow)
{
    const auto timer = MakeTimer(10);
    timer->Start([this, &timer] {
        StandStill(7);
        timer->Stop();
        timer->Start([this] { m_effects.Add("from now"); });
    });
    m_runtime.Advance(100);
    EXPECT_EQ(m_effects.Take(), "+27 from now\n");
}

TEST_F(TimerTest, NoCallComesAfterStop)
{
    const auto first = MakeTimer(10);
    const auto second = MakeTimer(10);
    auto repeating = MakeTimer(4, 4);
    first->Start([this, &second] {
        m_effects.Add("first stops second");
        second->Stop();
    });
    second->Start([this] { m_effects.Add("second"); });
    repeating->Start([this, &repeating] {
        m_effects.Add("repeating");
        if (m_runtime.Elapsed() == 8) {
            repeating.reset();
        }
    });
    m_runtime.Advance(50);
    second->Shutdown();
    second->Start([this] { m_effects.Add("after shutdown"); });
    m_runtime.Advance(50);
    EXPECT_EQ(m_effects.Take(), "+4 repeating\n+8 repeating\n+10 first stops second\n");
}

}  // namespace
