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
/// that the right code set is found with few answers, and is found even if one answer was wrong.
///
/// A question is a signal: a key and a signal number. An answer counts against the code sets that
/// contradict it. Two such answers drop a code set, one only puts it behind the others. The test is
/// over when the code sets that are left send the same signal for every key. Does no input or
/// output.
class GuidedTest {
public:
    /// A UEI key number and the number of the signal that it sends; equal numbers, equal signals.
    using Signal = std::pair<std::uint32_t, std::uint32_t>;

    struct Candidate {
        std::string name;
        /// Number of models that use it.
        std::uint32_t weight;
        /// In the order in which the user is asked.
        std::vector<Signal> signals;
    };

    enum class Status { Error = -1, GoOn = 1, Found = 2, NoneLeft = 3 };

    /// `candidates` are ordered, commonest first. Candidates without a signal are left out; of
    /// several that are equal the first one stands for all.
    explicit GuidedTest(const std::vector<Candidate>& candidates);

    /// Drops all answers and starts over.
    void Restart();
    /// Answers the current question. `Error` if there is none; then nothing changes.
    Status Report(bool worked);

    /// The key of the current question, or nothing.
    std::optional<std::uint32_t> Key() const;
    /// The code set to load for the question, or the one found; empty if none is left.
    const std::string& CodesetName() const;

    /// The number of distinct keys of all candidates.
    std::uint32_t KeysTotal() const;
    /// The number of code sets that differ in a signal.
    std::uint32_t CodesetsTotal() const { return static_cast<std::uint32_t>(m_classes.size()); }
    /// The number of those that a question so far was about.
    std::uint32_t CodesetsTested() const;
    /// The upper limit of questions for any answers.
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
    /// How a question would split the classes that are left; masses are those of `Mass`.
    struct Split {
        std::uint64_t share = 0;
        /// The part of `share` whose classes were asked about by all of their keys.
        std::uint64_t exhausted = 0;
        std::size_t senders = 0;
        /// The position of the key in a class's order; the smallest of the classes that share it.
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
    /// Index of m_classes: the code set in the blaster, or the one found.
    std::optional<std::size_t> m_codeset;
};

}  // namespace QSP
