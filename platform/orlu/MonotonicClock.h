// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

class MonotonicClock {
public:
    /// Milliseconds since a fixed point in time; never goes back.
    static std::uint64_t NowMs();
};
