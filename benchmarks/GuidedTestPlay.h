// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qsp/GuidedTest.h"

namespace Bench {

/// One guided test, played with a user whose device reacts to exactly the lights of one of its
/// code sets.
class GuidedTestPlay {
public:
    struct Outcome {
        std::size_t keys;
        /// What was found sends the lights of the user's code set for all keys.
        bool right;
    };

    /// Candidates without a signal are left out, here as in the test.
    explicit GuidedTestPlay(std::vector<QSP::GuidedTest::Candidate> candidates);

    std::size_t Size() const { return m_candidates.size(); }
    double Weight(std::size_t truth) const { return m_candidates[truth].weight; }

    /// `lie`: the number of the answer that is wrong, from 0.
    Outcome Guided(std::size_t truth, std::optional<std::size_t> lie);
    /// Each code set in the catalogue's order by its first key, until one works.
    Outcome Plain(std::size_t truth, std::optional<std::size_t> lie) const;

private:
    using Lights = std::map<std::uint32_t, std::uint32_t>;

    bool Reacts(std::size_t truth, std::size_t codeset, std::uint32_t key) const;

    std::vector<QSP::GuidedTest::Candidate> m_candidates;
    std::vector<Lights> m_lights;
    std::map<std::string, std::size_t> m_indices;
    QSP::GuidedTest m_test;
};

}  // namespace Bench
