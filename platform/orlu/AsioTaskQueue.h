// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include "orlu/AlarmList.h"
#include "orlu/Runtime.h"
#include "orlu/WaitAllocator.h"

namespace Orlu {

/// A task's queue with a thread and a Boost.Asio loop of its own.
///
/// A wake-up is one event of the loop and all work that follows from it. Then the work of
/// `AtEndOfWakeUp` runs, and the thread sleeps. Work that is posted from the queue's own thread
/// costs no system call. Work from another thread wakes the loop once, however much is posted
/// meanwhile.
class AsioTaskQueue final : public TaskQueueIF, public std::enable_shared_from_this<AsioTaskQueue> {
public:
    explicit AsioTaskQueue(std::string name);
    ~AsioTaskQueue() override;
    AsioTaskQueue(const AsioTaskQueue&) = delete;
    AsioTaskQueue& operator=(const AsioTaskQueue&) = delete;

    bool Post(Work work) override;
    void Start(Work entry) override;
    void Stop() override;
    void Join() override;
    bool IsCurrent() const override;
    std::unique_ptr<AlarmIF> CreateAlarm() override;
    void AtEndOfWakeUp(Work work) override;

    boost::asio::io_context& Context() { return m_context; }
    bool IsStopped() const { return m_stopped; }

    /// For waits that are repeated on this queue.
    WaitAllocator<void> ForWaits() { return WaitAllocator<void>(m_waitMemory); }

    /// The buffer into which the sockets of this queue read, `Limits::kReadBytes` long. One for all
    /// of them, as no two read at the same time.
    std::span<std::uint8_t> ReadBuffer();

private:
    class Alarm;

    void Run(const Work& entry);
    void WorkOff();
    void TakeForeign();
    void EndWakeUp();
    void Sleep();
    void SetTimer();
    void RunDue();
    void DropAll();

    const std::string m_name;
    WaitMemory m_waitMemory;
    boost::asio::io_context m_context{1};
    boost::asio::steady_timer m_timer{m_context};
    MonotonicMs m_timerDue = MonotonicMs::max();

    std::deque<Work> m_work;
    std::vector<Work> m_endOfWakeUp;
    std::vector<Work> m_ending;  ///< Those that run now; otherwise empty, with its memory.
    AlarmList m_alarms;
    std::unique_ptr<std::uint8_t[]> m_readBuffer;

    std::mutex m_mutex;
    std::deque<Work> m_foreign;
    std::atomic<bool> m_hasForeign = false;
    std::atomic<bool> m_stopped = false;
    bool m_started = false;
    std::thread m_thread;
};

}  // namespace Orlu
