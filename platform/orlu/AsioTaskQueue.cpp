// SPDX-License-Identifier: Apache-2.0

#include "orlu/AsioTaskQueue.h"

#include <iterator>
#include <utility>

#include <pthread.h>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>

#include "orlu/Backtrace.h"
#include "orlu/CurrentQueue.h"
#include "orlu/Limits.h"

namespace Orlu {

namespace {

using Clock = std::chrono::steady_clock;

/// An alarm runs only when the millisecond of its deadline is over: it may be late, never early.
constexpr MonotonicMs kResolution{1};

/// Linux keeps at most this many characters of a thread name.
constexpr std::size_t kThreadNameChars = 15;

/// Work may post more work. After this many rounds sockets and timers get their turn in between.
constexpr int kRounds = 64;

MonotonicMs DueBy()
{
    return Runtime().Now() - kResolution;
}

}  // namespace

class AsioTaskQueue::Alarm final : public AlarmIF {
public:
    explicit Alarm(std::shared_ptr<AsioTaskQueue> queue) : m_queue(std::move(queue)) {}
    ~Alarm() override { Cancel(); }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    void Arm(MonotonicMs due, Work work) override
    {
        Cancel();
        if (!m_queue->m_stopped) {
            m_key = m_queue->m_alarms.Add(due, std::move(work));
        }
    }

    void Cancel() override
    {
        if (const auto key = std::exchange(m_key, std::nullopt)) {
            m_queue->m_alarms.Remove(*key);
        }
    }

private:
    std::shared_ptr<AsioTaskQueue> m_queue;
    std::optional<AlarmList::Key> m_key;
};

AsioTaskQueue::AsioTaskQueue(std::string name) : m_name(std::move(name)) {}

AsioTaskQueue::~AsioTaskQueue()
{
    // Work on the queue's own thread may drop the last reference; a thread cannot join itself.
    if (IsCurrent() && m_thread.joinable()) {
        m_thread.detach();
    } else {
        Join();
    }
}

bool AsioTaskQueue::IsCurrent() const
{
    return CurrentTaskQueue() == this;
}

bool AsioTaskQueue::Post(Work work)
{
    if (IsCurrent()) {
        if (m_stopped) {
            return false;
        }
        // What other threads posted before this must also run before it.
        TakeForeign();
        m_work.push_back(std::move(work));
        return true;
    }
    bool wake = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped) {
            return false;
        }
        m_foreign.push_back(std::move(work));
        // Only the first post since the last `TakeForeign` wakes the loop; it finds the later ones
        // too.
        wake = !m_hasForeign.exchange(true);
    }
    // After the lock is released, because the woken thread needs it at once.
    if (wake) {
        boost::asio::post(m_context, [] {});
    }
    return true;
}

void AsioTaskQueue::Start(Work entry)
{
    const std::lock_guard lock(m_mutex);
    if (m_stopped || m_started) {
        return;
    }
    m_started = true;
    m_thread =
        std::thread([self = shared_from_this(), entry = std::move(entry)] { self->Run(entry); });
}

void AsioTaskQueue::Stop()
{
    // Declared before the lock, so destroyed after its release: destructors of the work may call
    // this queue.
    std::deque<Work> dropped;
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    // A started queue drops its work on its own thread, in `DropAll`.
    if (!m_started) {
        m_foreign.swap(dropped);
    }
    m_context.stop();
}

void AsioTaskQueue::Join()
{
    if (IsCurrent()) {
        return;
    }
    std::thread thread;
    {
        const std::lock_guard lock(m_mutex);
        // Joined outside of the lock, which the thread may still need.
        thread.swap(m_thread);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

std::unique_ptr<AlarmIF> AsioTaskQueue::CreateAlarm()
{
    return std::make_unique<Alarm>(shared_from_this());
}

void AsioTaskQueue::AtEndOfWakeUp(Work work)
{
    m_endOfWakeUp.push_back(std::move(work));
}

std::span<std::uint8_t> AsioTaskQueue::ReadBuffer()
{
    if (!m_readBuffer) {
        m_readBuffer = std::make_unique_for_overwrite<std::uint8_t[]>(Limits::kReadBytes);
    }
    return {m_readBuffer.get(), Limits::kReadBytes};
}

void AsioTaskQueue::Run(const Work& entry)
{
    const CurrentQueueScope scope(this);
    // Called by the thread itself: for another thread the name goes through a file of /proc.
    pthread_setname_np(pthread_self(), m_name.substr(0, kThreadNameChars).c_str());
    GiveThreadFaultStack();
    // Without a guard `run_one` returns at once if no wait is pending, and stops the context.
    const auto keepWaiting = boost::asio::make_work_guard(m_context);
    if (entry) {
        entry();
    }
    while (!m_stopped) {
        WorkOff();
        EndWakeUp();
        Sleep();
    }
    DropAll();
}

void AsioTaskQueue::WorkOff()
{
    TakeForeign();
    for (int round = 0; round < kRounds && !m_work.empty(); ++round) {
        // The size is taken once a round, so that work posted in this round belongs to the next
        // one.
        for (auto rest = m_work.size(); rest > 0 && !m_stopped; --rest) {
            const Work work = std::move(m_work.front());
            m_work.pop_front();
            work();
        }
    }
}

void AsioTaskQueue::TakeForeign()
{
    if (!m_hasForeign.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    std::move(m_foreign.begin(), m_foreign.end(), std::back_inserter(m_work));
    m_foreign.clear();
    m_hasForeign = false;
}

void AsioTaskQueue::EndWakeUp()
{
    while (!m_endOfWakeUp.empty() && !m_stopped) {
        // Swapped, because the work may add to the list; the two vectors keep their memory.
        m_ending.swap(m_endOfWakeUp);
        for (const auto& work : m_ending) {
            work();
        }
        m_ending.clear();
    }
}

void AsioTaskQueue::Sleep()
{
    SetTimer();
    if (m_work.empty() && m_endOfWakeUp.empty()) {
        m_context.run_one();
    } else {
        // Work is left: sockets and timers get one turn without waiting.
        m_context.poll_one();
    }
}

void AsioTaskQueue::SetTimer()
{
    // A timer that is set too early costs one idle wake-up. Setting it back would cost a system
    // call for each cancelled alarm, and most alarms are cancelled.
    const auto first = m_alarms.First();
    if (!first || first->first >= m_timerDue) {
        return;
    }
    m_timerDue = first->first;
    m_timer.expires_at(Clock::time_point(m_timerDue + kResolution));
    m_timer.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
            m_timerDue = MonotonicMs::max();
            RunDue();
        }
    });
}

void AsioTaskQueue::RunDue()
{
    const auto now = DueBy();
    // Alarms that are armed from here on wait for the next wake-up, so this loop ends.
    const auto mark = AlarmList::Mark();
    while (!m_stopped) {
        const auto work = m_alarms.TakeDue(now, mark);
        if (!work) {
            return;
        }
        (*work)();
    }
}

void AsioTaskQueue::DropAll()
{
    std::deque<Work> foreign;
    {
        const std::lock_guard lock(m_mutex);
        foreign.swap(m_foreign);
    }
    // Moved out before they are destroyed: their destructors may post or cancel.
    const auto work = std::exchange(m_work, {});
    const auto endOfWakeUp = std::exchange(m_endOfWakeUp, {});
    m_alarms.Clear();
}

}  // namespace Orlu
