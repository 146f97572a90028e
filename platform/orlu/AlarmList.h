// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "orlu/Runtime.h"

namespace Orlu {

/// Works that wait for their time, ordered by (due, sequence): of two that are due at the same
/// time, the one that was added first goes first. One thread.
class AlarmList {
public:
    using Key = std::pair<MonotonicMs, std::uint64_t>;

    Key Add(MonotonicMs due, Work work);
    void Remove(const Key& key);

    /// The due time of the first; nothing if none waits.
    std::optional<MonotonicMs> Earliest() const;

    /// A mark between what has been added and what comes.
    std::uint64_t Mark() const { return m_nextSequence; }

    /// Takes out the first, if it is due by `now` and was added before `mark`. With a mark from the
    /// start of a round, work that arms itself for a time gone by waits for the next round.
    std::optional<Work> TakeDue(MonotonicMs now, std::uint64_t mark);

    void Clear();

private:
    std::map<Key, Work> m_entries;
    std::uint64_t m_nextSequence = 0;
};

}  // namespace Orlu
