// SPDX-License-Identifier: Apache-2.0

#include "orlu/Runtime.h"

#include <condition_variable>
#include <mutex>
#include <random>
#include <utility>

#include "orlu/AsioTaskQueue.h"
#include "orlu/CurrentQueue.h"
#include "orlu/UnixTransport.h"

namespace Orlu {

namespace {

class ThreadSemaphore final : public SemaphoreIF {
public:
    explicit ThreadSemaphore(unsigned count) : m_count(count) {}

    void Signal() override
    {
        // Notified under the lock: the waiting thread may destroy the semaphore as soon as it gets
        // the lock.
        const std::lock_guard lock(m_mutex);
        ++m_count;
        m_changed.notify_one();
    }

    void Wait() override
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count > 0; });
        --m_count;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_count;
};

class RealRuntime final : public RuntimeIF {
public:
    TaskQueuePtr CreateTaskQueue(const std::string& name) override
    {
        return std::make_shared<AsioTaskQueue>(name);
    }

    MonotonicMs Now() override
    {
        return std::chrono::floor<MonotonicMs>(std::chrono::steady_clock::now().time_since_epoch());
    }

    std::chrono::system_clock::time_point WallClock() override
    {
        return std::chrono::system_clock::now();
    }

    std::uint64_t Random() override
    {
        std::random_device device;
        return std::uniform_int_distribution<std::uint64_t>()(device);
    }

    TransportIF& Transport() override { return m_transport; }

    std::unique_ptr<SemaphoreIF> CreateSemaphore(unsigned count) override
    {
        return std::make_unique<ThreadSemaphore>(count);
    }

private:
    UnixTransport m_transport;
};

RuntimeIF* s_installed = nullptr;
thread_local TaskQueueIF* t_current = nullptr;

}  // namespace

RuntimeIF& Runtime()
{
    static RealRuntime real;
    return s_installed != nullptr ? *s_installed : real;
}

void InstallRuntime(RuntimeIF* runtime)
{
    s_installed = runtime;
}

TaskQueueIF* CurrentTaskQueue()
{
    return t_current;
}

CurrentQueueScope::CurrentQueueScope(TaskQueueIF* queue) : m_before(std::exchange(t_current, queue))
{
}

CurrentQueueScope::~CurrentQueueScope()
{
    t_current = m_before;
}

}  // namespace Orlu
