// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "orlu/Task.h"

/// A callback that runs on the caller's thread. `Callback<void>` takes no argument. It may be
/// empty: test it before the call.
template <class... Args>
class Callback {
public:
    using Function = std::function<void(const Args&...)>;

    Callback() = default;
    template <class F>
    requires(!std::is_same_v<std::decay_t<F>, Callback> && std::is_invocable_v<F&, const Args&...>)
        Callback(F function)  // NOLINT(google-explicit-constructor): stands in for any callable
        : m_function(std::move(function))
    {
    }

    explicit operator bool() const { return static_cast<bool>(m_function); }
    void operator()(const Args&... args) const { m_function(args...); }

private:
    Function m_function;
};

template <>
class Callback<void> : public Callback<> {
public:
    using Callback<>::Callback;
};

/// A callback for calls from any thread: copies its arguments and queues the call on a task. After
/// the task has stopped, the call is dropped; the task object itself need not exist any more. An
/// empty one ignores the call.
template <class... Args>
class AsyncCallback {
public:
    AsyncCallback() = default;
    /// From any callable; from an empty `std::function` an empty callback.
    template <class F>
    requires std::is_invocable_v<F&, const Args&...> AsyncCallback(F function,
                                                                   NotifyTargetTaskIF* task)
        : m_queue(task->Queue())
    {
        if constexpr (requires { function.target_type(); }) {
            if (!function) {
                return;
            }
        }
        m_function = std::make_shared<FunctionOf<F>>(std::move(function));
    }

    explicit operator bool() const { return m_function != nullptr; }

    /// The queue on which the call runs; empty for an empty callback.
    const Orlu::TaskQueuePtr& Queue() const { return m_queue; }

    void operator()(Args... args) const
    {
        if (!*this) {
            return;
        }
        m_queue->Post([function = m_function, args = std::make_tuple(std::move(args)...)] {
            std::apply([&function](const Args&... each) { function->Call(each...); }, args);
        });
    }

private:
    /// The callable and its reference count in one allocation.
    struct FunctionIF {
        virtual ~FunctionIF() = default;
        virtual void Call(const Args&... args) = 0;
    };

    template <class F>
    struct FunctionOf final : FunctionIF {
        explicit FunctionOf(F callable) : function(std::move(callable)) {}
        void Call(const Args&... args) override { function(args...); }
        F function;
    };

    std::shared_ptr<FunctionIF> m_function;
    Orlu::TaskQueuePtr m_queue;
};

/// Handle of a registration or a request, for one owner. Destroying it leaves the registration in
/// force.
class CallbackConnection {
public:
    CallbackConnection() = default;
    explicit CallbackConnection(Orlu::Work disconnect) : m_disconnect(std::move(disconnect)) {}

    explicit operator bool() const { return static_cast<bool>(m_disconnect); }

    /// To be called on the task of the callback: from here on the callback is not called. A second
    /// call does nothing.
    void Disconnect()
    {
        if (auto disconnect = std::exchange(m_disconnect, nullptr)) {
            disconnect();
        }
    }

private:
    Orlu::Work m_disconnect;
};
