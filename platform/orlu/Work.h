// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Orlu {

/// A piece of work for a queue: any callable without arguments. Moved, never copied. A callable of
/// up to 48 bytes, as most are, needs no allocation. Calling an empty one does nothing.
class Work {
public:
    Work() = default;
    Work(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): empty, as with std::function

    /// Holds any callable; an empty `std::function` gives an empty one.
    template <class F>
    requires(!std::is_same_v<std::decay_t<F>, Work> && std::is_invocable_v<std::decay_t<F>&>)
        // NOLINTNEXTLINE(google-explicit-constructor,bugprone-forwarding-reference-overload)
        Work(F&& function)
    {
        if constexpr (requires { function.target_type(); }) {
            if (!function) {
                return;
            }
        }
        Hold(std::forward<F>(function));
    }

    Work(Work&& other) noexcept { Take(other); }
    Work& operator=(Work&& other) noexcept
    {
        if (this != &other) {
            // Destroyed last, because its destructor may use this object.
            const Work before = std::move(*this);
            Take(other);
        }
        return *this;
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work() { Clear(); }

    explicit operator bool() const { return m_acts != nullptr; }

    void operator()() const
    {
        if (m_acts) {
            m_acts->call(m_place);
        }
    }

private:
    static constexpr std::size_t kPlaceBytes = 48;
    static constexpr std::size_t kPlaceAlignment = alignof(void*);

    /// The operations on the callable, whose type is known only here.
    struct Acts {
        void (*call)(void* held);
        void (*move)(void* held, void* to);  ///< Destroys `held`.
        void (*destroy)(void* held);
    };

    template <class Held>
    static constexpr bool kFits = sizeof(Held) <= kPlaceBytes&& kPlaceAlignment % alignof(Held) ==
                                      0 &&
                                  std::is_nothrow_move_constructible_v<Held>;

    template <class Held>
    static constexpr Acts kActsOf = {
        [](void* held) { (*static_cast<Held*>(held))(); },
        [](void* held, void* to) {
            ::new (to) Held(std::move(*static_cast<Held*>(held)));
            static_cast<Held*>(held)->~Held();
        },
        [](void* held) { static_cast<Held*>(held)->~Held(); },
    };

    template <class F>
    void Hold(F&& function)
    {
        using Held = std::decay_t<F>;
        if constexpr (kFits<Held>) {
            ::new (static_cast<void*>(m_place)) Held(std::forward<F>(function));
            m_acts = &kActsOf<Held>;
        } else {
            Hold([held = std::make_unique<Held>(std::forward<F>(function))] { (*held)(); });
        }
    }

    void Take(Work& other) noexcept
    {
        m_acts = std::exchange(other.m_acts, nullptr);
        if (m_acts) {
            m_acts->move(other.m_place, m_place);
        }
    }

    void Clear() noexcept
    {
        if (const auto* acts = std::exchange(m_acts, nullptr)) {
            acts->destroy(m_place);
        }
    }

    const Acts* m_acts = nullptr;
    alignas(kPlaceAlignment) mutable std::byte m_place[kPlaceBytes];
};

}  // namespace Orlu
