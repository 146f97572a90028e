// SPDX-License-Identifier: Apache-2.0

#include "support/VirtualRuntime.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <stdexcept>
#include <utility>

#include "orlu/AlarmList.h"
#include "orlu/CurrentQueue.h"

using Orlu::AlarmList;
using Orlu::MonotonicMs;
using Orlu::Work;

namespace {

constexpr MonotonicMs kStart{1'000'000};
constexpr std::chrono::seconds kWallClockStart{1'700'000'000};

/// Longer than every wait of a test.
constexpr MonotonicMs kTimeout = std::chrono::hours(1);

/// More works in a row than any test has: beyond it two works post each other for ever.
constexpr std::size_t kWorksInOneGo = 10'000'000;

class VirtualQueue;

}  // namespace

/// The clock and the order of the tasks. Queues share it, since they may outlive the runtime.
class VirtualRuntime::Scheduler {
public:
    MonotonicMs now = kStart;

    void Add(const std::shared_ptr<VirtualQueue>& queue) { m_queues.push_back(queue); }

    /// Runs the next task that has work; false if none has.
    bool RunOne();

    /// Moves the clock to the next alarm up to `limit` and runs it; false if there is none.
    bool RunNextAlarm(MonotonicMs limit);

    void RunUntilIdle()
    {
        while (RunOne()) {
        }
    }

    /// Runs tasks, and moves the clock if all wait for it, until `done`.
    template <class Done>
    void RunUntil(Done done, const char* what)
    {
        const auto limit = now + kTimeout;
        while (!done()) {
            if (!RunOne() && !RunNextAlarm(limit)) {
                throw std::runtime_error(what);
            }
        }
    }

private:
    std::vector<std::shared_ptr<VirtualQueue>> Queues();

    std::vector<std::weak_ptr<VirtualQueue>> m_queues;
    std::size_t m_next = 0;
};

namespace {

using SchedulerPtr = std::shared_ptr<VirtualRuntime::Scheduler>;

class VirtualQueue final : public Orlu::TaskQueueIF,
                           public std::enable_shared_from_this<VirtualQueue> {
public:
    explicit VirtualQueue(SchedulerPtr scheduler) : m_scheduler(std::move(scheduler)) {}

    bool Post(Work work) override
    {
        if (!m_stopped) {
            m_work.push_back(std::move(work));
        }
        return !m_stopped;
    }

    void Start(Work entry) override
    {
        if (!m_started && entry) {
            m_work.push_front(std::move(entry));
        }
        m_started = true;
    }

    void Stop() override
    {
        m_stopped = true;
        const auto work = std::exchange(m_work, {});
        const auto endOfWakeUp = std::exchange(m_endOfWakeUp, {});
        alarms.Clear();
    }

    void Join() override
    {
        if (m_started && !m_busy) {
            m_scheduler->RunUntil([this] { return m_stopped; }, "a joined task never stops");
        }
    }

    bool IsCurrent() const override { return Orlu::CurrentTaskQueue() == this; }

    std::unique_ptr<Orlu::AlarmIF> CreateAlarm() override;

    void AtEndOfWakeUp(Work work) override { m_endOfWakeUp.push_back(std::move(work)); }

    bool MayRun() const { return m_started && !m_stopped && !m_busy; }
    bool HasWork() const { return !m_work.empty() || !m_endOfWakeUp.empty(); }
    bool IsStopped() const { return m_stopped; }

    /// One wake-up, which starts with `first`.
    void TakeTurn(const Work& first)
    {
        const auto self = shared_from_this();
        const Orlu::CurrentQueueScope scope(this);
        const BusyScope busy(m_busy);
        if (first) {
            first();
        }
        for (std::size_t count = 0; HasWork(); ++count) {
            if (count == kWorksInOneGo) {
                throw std::runtime_error("a task never comes to rest");
            }
            RunNext();
        }
    }

    AlarmList alarms;

private:
    class BusyScope {
    public:
        explicit BusyScope(bool& busy) : m_busy(busy) { m_busy = true; }
        ~BusyScope() { m_busy = false; }
        BusyScope(const BusyScope&) = delete;
        BusyScope& operator=(const BusyScope&) = delete;

    private:
        bool& m_busy;
    };

    void RunNext()
    {
        if (!m_work.empty()) {
            const Work work = std::move(m_work.front());
            m_work.pop_front();
            work();
            return;
        }
        while (!m_endOfWakeUp.empty()) {
            for (const auto& work : std::exchange(m_endOfWakeUp, {})) {
                work();
            }
        }
    }

    SchedulerPtr m_scheduler;
    std::deque<Work> m_work;
    std::vector<Work> m_endOfWakeUp;
    bool m_started = false;
    bool m_stopped = false;
    bool m_busy = false;
};

class VirtualAlarm final : public Orlu::AlarmIF {
public:
    explicit VirtualAlarm(std::shared_ptr<VirtualQueue> queue) : m_queue(std::move(queue)) {}
    ~VirtualAlarm() override { Cancel(); }
    VirtualAlarm(const VirtualAlarm&) = delete;
    VirtualAlarm& operator=(const VirtualAlarm&) = delete;

    void Arm(MonotonicMs due, Work work) override
    {
        Cancel();
        if (!m_queue->IsStopped()) {
            m_key = m_queue->alarms.Add(due, std::move(work));
        }
    }

    void Cancel() override
    {
        if (const auto key = std::exchange(m_key, std::nullopt)) {
            m_queue->alarms.Remove(*key);
        }
    }

private:
    std::shared_ptr<VirtualQueue> m_queue;
    std::optional<AlarmList::Key> m_key;
};

std::unique_ptr<Orlu::AlarmIF> VirtualQueue::CreateAlarm()
{
    return std::make_unique<VirtualAlarm>(shared_from_this());
}

class VirtualSemaphore final : public Orlu::SemaphoreIF {
public:
    VirtualSemaphore(SchedulerPtr scheduler, unsigned count)
        : m_scheduler(std::move(scheduler)), m_count(count)
    {
    }

    void Signal() override { ++m_count; }

    void Wait() override
    {
        m_scheduler->RunUntil([this] { return m_count > 0; },
                              "nothing is left that could signal a semaphore");
        --m_count;
    }

private:
    SchedulerPtr m_scheduler;
    unsigned m_count;
};

}  // namespace

std::vector<std::shared_ptr<VirtualQueue>> VirtualRuntime::Scheduler::Queues()
{
    std::vector<std::shared_ptr<VirtualQueue>> queues;
    std::erase_if(m_queues, [&queues](const std::weak_ptr<VirtualQueue>& weak) {
        queues.push_back(weak.lock());
        return queues.back() == nullptr;
    });
    std::erase(queues, nullptr);
    return queues;
}

bool VirtualRuntime::Scheduler::RunOne()
{
    const auto queues = Queues();
    for (std::size_t i = 0; i < queues.size(); ++i) {
        const auto at = (m_next + i) % queues.size();
        if (queues[at]->MayRun() && queues[at]->HasWork()) {
            m_next = at + 1;
            queues[at]->TakeTurn({});
            return true;
        }
    }
    return false;
}

bool VirtualRuntime::Scheduler::RunNextAlarm(MonotonicMs limit)
{
    std::shared_ptr<VirtualQueue> owner;
    std::optional<AlarmList::Key> earliest;
    for (const auto& queue : Queues()) {
        const auto first = queue->MayRun() ? queue->alarms.First() : std::nullopt;
        if (first && (!earliest || *first < *earliest)) {
            owner = queue;
            earliest = first;
        }
    }
    if (!earliest || earliest->first > limit) {
        return false;
    }
    now = std::max(now, earliest->first);
    owner->TakeTurn(*owner->alarms.TakeDue(now, AlarmList::Mark()));
    return true;
}

VirtualRuntime::VirtualRuntime() : m_scheduler(std::make_shared<Scheduler>())
{
    Orlu::InstallRuntime(this);
}

VirtualRuntime::~VirtualRuntime()
{
    Orlu::InstallRuntime(nullptr);
}

void VirtualRuntime::RunUntilIdle()
{
    m_scheduler->RunUntilIdle();
}

void VirtualRuntime::Advance(std::uint32_t ms)
{
    const auto end = m_scheduler->now + MonotonicMs(ms);
    RunUntilIdle();
    while (m_scheduler->RunNextAlarm(end)) {
        RunUntilIdle();
    }
    m_scheduler->now = std::max(m_scheduler->now, end);
}

std::int64_t VirtualRuntime::Elapsed() const
{
    return (m_scheduler->now - kStart).count();
}

VirtualTransport& VirtualRuntime::Net()
{
    return m_transport;
}

Orlu::TaskQueuePtr VirtualRuntime::CreateTaskQueue(const std::string& /*name*/)
{
    auto queue = std::make_shared<VirtualQueue>(m_scheduler);
    m_scheduler->Add(queue);
    return queue;
}

MonotonicMs VirtualRuntime::Now()
{
    return m_scheduler->now;
}

std::chrono::system_clock::time_point VirtualRuntime::WallClock()
{
    return std::chrono::system_clock::time_point(kWallClockStart + (m_scheduler->now - kStart));
}

std::uint64_t VirtualRuntime::Random()
{
    return m_random();
}

Orlu::TransportIF& VirtualRuntime::Transport()
{
    return m_transport;
}

std::unique_ptr<Orlu::SemaphoreIF> VirtualRuntime::CreateSemaphore(unsigned count)
{
    return std::make_unique<VirtualSemaphore>(m_scheduler, count);
}
