// SPDX-License-Identifier: Apache-2.0

#include "orlu/AlarmList.h"

namespace Orlu {

AlarmList::Key AlarmList::Add(MonotonicMs due, Work work)
{
    const Key key{due, s_nextSequence++};
    m_entries.emplace(key, std::move(work));
    return key;
}

void AlarmList::Remove(const Key& key)
{
    // Taken out of the map before it is destroyed, because what the work holds may remove alarms in
    // its destructor.
    const auto node = m_entries.extract(key);
}

void AlarmList::Clear()
{
    // Moved out first, for the same reason.
    const auto entries = std::exchange(m_entries, {});
}

std::optional<AlarmList::Key> AlarmList::First() const
{
    if (m_entries.empty()) {
        return std::nullopt;
    }
    return m_entries.begin()->first;
}

std::optional<Work> AlarmList::TakeDue(MonotonicMs now, std::uint64_t mark)
{
    const auto first = m_entries.begin();
    if (first == m_entries.end() || first->first.first > now || first->first.second >= mark) {
        return std::nullopt;
    }
    Work work = std::move(first->second);
    // Erased before it runs: the work may arm the same alarm again.
    m_entries.erase(first);
    return work;
}

}  // namespace Orlu
