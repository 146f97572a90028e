// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qsp/GuidedTest.h"

namespace Bench {

/// Runs guided tests for a device that reacts to exactly the signals of one code set.
class GuidedTestPlay {
public:
    struct Outcome {
        std::size_t keys;
        /// Whether the found code set sends the same signals as the device's for all keys.
        bool right;
    };

    /// Candidates without a signal are left out, as in the test.
    explicit GuidedTestPlay(std::vector<QSP::GuidedTest::Candidate> candidates);

    std::size_t Size() const { return m_candidates.size(); }
    double Weight(std::size_t truth) const { return m_candidates[truth].weight; }

    /// `lie`: the number of the answer that is wrong, from 0.
    Outcome Guided(std::size_t truth, std::optional<std::size_t> lie);
    /// Tries each code set in the catalogue's order by its first key, until one works.
    Outcome Plain(std::size_t truth, std::optional<std::size_t> lie) const;

private:
    using Signals = std::map<std::uint32_t, std::uint32_t>;

    bool Reacts(std::size_t truth, std::size_t codeset, std::uint32_t key) const;

    std::vector<QSP::GuidedTest::Candidate> m_candidates;
    std::vector<Signals> m_signals;
    std::map<std::string, std::size_t> m_indices;
    QSP::GuidedTest m_test;
};

}  // namespace Bench
