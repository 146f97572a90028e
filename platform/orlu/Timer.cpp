// SPDX-License-Identifier: Apache-2.0

#include "orlu/Timer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using Orlu::MonotonicMs;

/// The longest delay of a callback that the next ones make up for. A task that was blocked for
/// longer goes on from now: running each missed step at once would remove the pauses between them.
constexpr MonotonicMs kMaxCatchUp{100};

class QueueTimer final : public APTimer, public std::enable_shared_from_this<QueueTimer> {
public:
    explicit QueueTimer(NotifyTargetTaskIF* task) : m_alarm(task->Queue()->CreateAlarm()) {}

    void SetTimeouts(std::uint32_t firstMs, std::uint32_t repeatMs) override
    {
        m_first = MonotonicMs(firstMs);
        m_repeat = MonotonicMs(repeatMs);
    }

    void Start(std::function<void()> callback) override
    {
        if (!m_shutdown) {
            m_callback = std::make_shared<const std::function<void()>>(std::move(callback));
            Arm(Base() + m_first);
        }
    }

    void Stop() override
    {
        m_alarm->Cancel();
        m_callback.reset();
        m_running.reset();
    }

    void Shutdown() override
    {
        m_shutdown = true;
        Stop();
    }

private:
    /// The start of a delay: the deadline of the callback that is running, otherwise now.
    MonotonicMs Base() const
    {
        const auto now = Orlu::Runtime().Now();
        return m_running ? std::max(*m_running, now - kMaxCatchUp) : now;
    }

    void Arm(MonotonicMs due)
    {
        m_alarm->Arm(due, [self = weak_from_this(), due] {
            if (const auto timer = self.lock()) {
                timer->Fire(due);
            }
        });
    }

    void Fire(MonotonicMs due)
    {
        // Held, because the callback may stop the timer or start it with another one.
        const auto callback = m_callback;
        m_running = due;
        // Armed before the call, so that the callback can stop the repetition.
        if (m_repeat > MonotonicMs::zero()) {
            Arm(Base() + m_repeat);
        }
        if (*callback) {
            (*callback)();
        }
        m_running.reset();
    }

    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    MonotonicMs m_first{0};
    MonotonicMs m_repeat{0};
    std::shared_ptr<const std::function<void()>> m_callback;
    std::optional<MonotonicMs> m_running;
    bool m_shutdown = false;
};

}  // namespace

std::shared_ptr<APTimer> APTimer::Create(NotifyTargetTaskIF* task, const std::string& /*name*/)
{
    return std::make_shared<QueueTimer>(task);
}
