// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

class MonotonicClock {
public:
    /// Milliseconds since some fixed point; never goes back.
    static std::uint64_t NowMs();
};
