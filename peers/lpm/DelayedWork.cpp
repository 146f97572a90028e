// SPDX-License-Identifier: Apache-2.0

#include "lpm/DelayedWork.h"

#include <utility>

namespace Lpm {

void DelayedWork::Run(std::chrono::milliseconds delay, Orlu::Work work)
{
    if (delay.count() == 0) {
        work();
        return;
    }
    // A multimap keeps works of the same time in the order of their insertion.
    m_waiting.emplace(Orlu::Runtime().Now() + delay, std::move(work));
    Arm();
}

void DelayedWork::Arm()
{
    if (!m_waiting.empty()) {
        m_alarm->Arm(m_waiting.begin()->first, [this] { RunDue(); });
    }
}

void DelayedWork::RunDue()
{
    const auto now = Orlu::Runtime().Now();
    while (!m_waiting.empty() && m_waiting.begin()->first <= now) {
        // Extracted before it runs: the work may call Run and so change the map.
        m_waiting.extract(m_waiting.begin()).mapped()();
    }
    Arm();
}

}  // namespace Lpm
