// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "orlu/ConditionSemaphore.h"

namespace TrellanService {

/// A value that another task gives, and this task's wait for it.
template <class Value>
class Awaited {
    struct State {
        ConditionSemaphore semaphore{0};
        std::optional<Value> value;
    };

public:
    /// For the other task. The callbacks that may give the value share one sender.
    class Sender {
    public:
        explicit Sender(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        /// Ends the wait if `Give` was not called, so that a dropped callback cannot block the
        /// waiting task for ever.
        ~Sender() { m_state->semaphore.Signal(); }
        Sender(const Sender&) = delete;
        Sender& operator=(const Sender&) = delete;

        /// Ends the wait. Only the first value counts.
        void Give(Value value) const
        {
            if (!m_state->value) {
                m_state->value = std::move(value);
                m_state->semaphore.Signal();
            }
        }

    private:
        std::shared_ptr<State> m_state;
    };

    /// To be called once. The waiting task must not keep a reference to the sender.
    std::shared_ptr<const Sender> MakeSender() const
    {
        return std::make_shared<const Sender>(m_state);
    }

    /// Blocks until there is a value, or until the last reference to the sender is gone.
    std::optional<Value> Wait() const
    {
        m_state->semaphore.Wait();
        return m_state->value;
    }

private:
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace TrellanService
