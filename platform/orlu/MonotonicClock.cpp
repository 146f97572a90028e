// SPDX-License-Identifier: Apache-2.0

#include "orlu/MonotonicClock.h"

#include "orlu/Runtime.h"

std::uint64_t MonotonicClock::NowMs()
{
    return static_cast<std::uint64_t>(Orlu::Runtime().Now().count());
}
