// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace QSP {

/// The order of questions of one guided test: which key of which code set the user tries next, so
/// that the right code set is found by few answers, and for sure even if one of them was wrong.
///
/// A question is a signal: a key with a signal number. An answer counts against the code sets that
/// contradict it; two such answers drop a code set, one only puts it behind the others. The test is
/// over when those left send the same signal for every key. Does no input or output.
class GuidedTest {
public:
    /// A UEI key number, and the number of the signal it sends; equal numbers, equal signals.
    using Signal = std::pair<std::uint32_t, std::uint32_t>;

    struct Candidate {
        std::string name;
        /// Number of models that use it.
        std::uint32_t weight;
        /// In the order in which a user would be asked.
        std::vector<Signal> signals;
    };

    enum class Status { Error = -1, GoOn = 1, Found = 2, NoneLeft = 3 };

    /// Commonest first. Candidates without a signal take no part; of equal ones the first stands
    /// for all.
    explicit GuidedTest(const std::vector<Candidate>& candidates);

    /// Takes back all answers.
    void Restart();
    /// To the question that stands. Error if there is none; then nothing changes.
    Status Report(bool worked);

    /// Of the question that stands, or nothing.
    std::optional<std::uint32_t> Key() const;
    /// The one to load for the question, or the one found; empty if none is left.
    const std::string& CodesetName() const;

    /// Distinct keys of all candidates.
    std::uint32_t KeysTotal() const;
    /// Code sets that differ in a signal.
    std::uint32_t CodesetsTotal() const { return static_cast<std::uint32_t>(m_classes.size()); }
    /// Those of them that a question so far was about.
    std::uint32_t CodesetsTested() const;
    /// No course of answers needs more questions than this.
    std::uint32_t QuestionsAtMost() const { return 2 * CodesetsTotal(); }

private:
    /// Code sets that send the same signal for each key.
    struct Class {
        std::string name;
        std::uint64_t weight;
        /// Indices of m_questions, in the order of the commonest member.
        std::vector<std::size_t> questions;
        unsigned against = 0;
        bool worked = false;
        bool tested = false;
        bool IsLeft() const;
        bool Sends(std::size_t question) const;
    };
    struct Question {
        Signal signal;
        bool asked = false;
    };
    /// How a question would split what is left; masses are those of Mass.
    struct Split {
        std::uint64_t share = 0;
        /// That part of `share` that was asked about by all of its keys before.
        std::uint64_t exhausted = 0;
        std::size_t senders = 0;
        /// Of the key in a code set's order; the first of those that share it.
        std::size_t place = SIZE_MAX;
        bool loaded = false;
    };

    void Choose();
    std::optional<std::size_t> BestSplit(const std::vector<std::size_t>& left) const;
    std::optional<std::size_t> NextOf(const Class& one) const;
    void Add(const Class& one, bool loaded, std::vector<Split>& splits) const;
    bool IsExhausted(const Class& one) const;
    std::uint64_t Mass(const Class& one) const;
    std::size_t Heaviest(const std::vector<std::size_t>& left, std::size_t question) const;

    std::vector<Class> m_classes;
    std::vector<Question> m_questions;
    std::uint64_t m_totalWeight = 0;
    std::optional<std::size_t> m_question;
    /// Of m_classes: in the blaster, or found.
    std::optional<std::size_t> m_codeset;
};

}  // namespace QSP
