// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "orlu/Runtime.h"

namespace Orlu {

/// Work that waits for its time, ordered by (due, sequence). Of two entries that are due at the
/// same time, the one that was added first runs first, over all lists. Used on one thread.
class AlarmList {
public:
    using Key = std::pair<MonotonicMs, std::uint64_t>;

    Key Add(MonotonicMs due, Work work);
    void Remove(const Key& key);

    /// The key of the first entry; nothing if the list is empty.
    std::optional<Key> First() const;

    /// A mark between the entries added so far and later ones.
    static std::uint64_t Mark() { return s_nextSequence; }

    /// Removes and returns the first entry if it is due by `now` and was added before `mark`. With
    /// a mark from the start of a round, work that is armed in the round for a time in the past
    /// waits for the next round.
    std::optional<Work> TakeDue(MonotonicMs now, std::uint64_t mark);

    void Clear();

private:
    std::map<Key, Work> m_entries;
    static inline std::atomic<std::uint64_t> s_nextSequence = 0;
};

}  // namespace Orlu
