// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "orlu/ConditionSemaphore.h"

namespace TrellanService {

/// What another task is to bring, and this task's wait for it.
template <class Value>
class Awaited {
    struct State {
        ConditionSemaphore semaphore{0};
        std::optional<Value> value;
    };

public:
    /// For the other task: the callbacks that may bring the value share one.
    class Sender {
    public:
        explicit Sender(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        /// Ends the wait, if `Give` has not: a callback that was dropped can't leave it for ever.
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

    /// Once. The waiting task keeps no holder of it.
    std::shared_ptr<const Sender> MakeSender() const
    {
        return std::make_shared<const Sender>(m_state);
    }

    /// Blocks until there is a value, or until the last holder of the sender has let it go.
    std::optional<Value> Wait() const
    {
        m_state->semaphore.Wait();
        return m_state->value;
    }

private:
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace TrellanService
