// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/VirtualRuntime.h"

/// The effects that a test observes, in order, as one text: a line "+<milliseconds> <what>" for
/// each. Milliseconds count from the last `Take`.
class Effects {
public:
    explicit Effects(VirtualRuntime& runtime) : m_runtime(runtime) {}

    void Add(std::string_view what)
    {
        m_text += "+" + std::to_string(m_runtime.Elapsed() - m_origin) + " ";
        m_text += what;
        m_text += "\n";
    }

    /// All effects since the last call. Time counts from now on.
    std::string Take()
    {
        m_origin = m_runtime.Elapsed();
        return std::exchange(m_text, {});
    }

private:
    VirtualRuntime& m_runtime;
    std::int64_t m_origin = 0;
    std::string m_text;
};
