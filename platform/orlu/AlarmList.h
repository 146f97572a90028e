// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "orlu/Runtime.h"

namespace Orlu {

/// Works that wait for their time, ordered by (due, sequence): of two that are due at the same
/// time, the one that was added first goes first, in whichever list. One thread.
class AlarmList {
public:
    using Key = std::pair<MonotonicMs, std::uint64_t>;

    Key Add(MonotonicMs due, Work work);
    void Remove(const Key& key);

    /// Nothing if none waits.
    std::optional<Key> First() const;

    /// A mark between what has been added and what comes.
    static std::uint64_t Mark() { return s_nextSequence; }

    /// Takes out the first, if it is due by `now` and was added before `mark`. With a mark from the
    /// start of a round, work that arms itself for a time gone by waits for the next round.
    std::optional<Work> TakeDue(MonotonicMs now, std::uint64_t mark);

    void Clear();

private:
    std::map<Key, Work> m_entries;
    static inline std::atomic<std::uint64_t> s_nextSequence = 0;
};

}  // namespace Orlu
