// SPDX-License-Identifier: Apache-2.0

#include "GuidedTestPlay.h"

#include <utility>

namespace Bench {

GuidedTestPlay::GuidedTestPlay(std::vector<QSP::GuidedTest::Candidate> candidates)
    : m_candidates(std::move(candidates)), m_test(m_candidates)
{
    std::erase_if(m_candidates, [](const auto& candidate) { return candidate.signals.empty(); });
    for (const QSP::GuidedTest::Candidate& candidate : m_candidates) {
        m_indices.emplace(candidate.name, m_signals.size());
        m_signals.emplace_back(candidate.signals.begin(), candidate.signals.end());
    }
}

bool GuidedTestPlay::Reacts(std::size_t truth, std::size_t codeset, std::uint32_t key) const
{
    const auto signal = m_signals[truth].find(key);
    return signal != m_signals[truth].end() && signal->second == m_signals[codeset].at(key);
}

GuidedTestPlay::Outcome GuidedTestPlay::Guided(std::size_t truth, std::optional<std::size_t> lie)
{
    m_test.Restart();
    std::size_t keys = 0;
    while (const std::optional<std::uint32_t> key = m_test.Key()) {
        const bool works = Reacts(truth, m_indices.at(m_test.CodesetName()), *key);
        m_test.Report(works != (lie == keys));
        ++keys;
    }
    const auto found = m_indices.find(m_test.CodesetName());
    return {keys, found != m_indices.end() && m_signals[found->second] == m_signals[truth]};
}

GuidedTestPlay::Outcome GuidedTestPlay::Plain(std::size_t truth,
                                              std::optional<std::size_t> lie) const
{
    for (std::size_t i = 0; i < m_candidates.size(); ++i) {
        if (Reacts(truth, i, m_candidates[i].signals.front().first) != (lie == i)) {
            return {i + 1, m_signals[i] == m_signals[truth]};
        }
    }
    return {m_candidates.size(), false};
}

}  // namespace Bench
