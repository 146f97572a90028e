// SPDX-License-Identifier: Apache-2.0

#include "qsp/GuidedTest.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using QSP::GuidedTest;
using Candidates = std::vector<GuidedTest::Candidate>;

struct Outcome {
    std::string found;
    unsigned questions;
};

bool Sends(const GuidedTest::Candidate& candidate, std::uint32_t key, std::uint32_t signal)
{
    for (const GuidedTest::Signal& one : candidate.signals) {
        if (one.first == key) {
            return one.second == signal;
        }
    }
    return false;
}

const GuidedTest::Candidate& Named(const Candidates& candidates, const std::string& name)
{
    for (const GuidedTest::Candidate& candidate : candidates) {
        if (candidate.name == name) {
            return candidate;
        }
    }
    ADD_FAILURE() << "offers " << name;
    return candidates.front();
}

/// Plays a test whose device reacts to the signals of `truth`, or to none if it is null. The answer
/// with the number `lie` is wrong.
Outcome Play(const Candidates& candidates, const GuidedTest::Candidate* truth,
             std::optional<unsigned> lie = {})
{
    GuidedTest test(candidates);
    for (unsigned question = 0; question < 1000; ++question) {
        const std::uint32_t key = test.Key().value();
        std::uint32_t sent = 0;
        for (const GuidedTest::Signal& signal : Named(candidates, test.CodesetName()).signals) {
            sent = signal.first == key ? signal.second : sent;
        }
        const bool works = truth != nullptr && Sends(*truth, key, sent);
        const GuidedTest::Status status = test.Report(works != (question == lie));
        EXPECT_LE(test.CodesetsTested(), test.CodesetsTotal());
        EXPECT_EQ(status == GuidedTest::Status::GoOn, test.Key().has_value());
        if (status != GuidedTest::Status::GoOn) {
            EXPECT_EQ(test.Report(true), GuidedTest::Status::Error);
            EXPECT_LE(question + 1, test.QuestionsAtMost());
            return {test.CodesetName(), question + 1};
        }
    }
    ADD_FAILURE() << "no end";
    return {};
}

/// Five code sets share the signal of power, three that of volume, none that of mute. The last ten
/// have power alone.
Candidates SixtyCodesets()
{
    Candidates candidates;
    for (std::uint32_t i = 0; i < 60; ++i) {
        GuidedTest::Candidate candidate{"T" + std::to_string(1000 + i), 120 / (i + 1), {}};
        candidate.signals = {{1, i % 12}};
        if (i < 50) {
            candidate.signals.insert(candidate.signals.end(), {{2, i / 3}, {3, i}});
        } else {
            candidate.signals[0].second = 1000 + i;
        }
        candidates.push_back(candidate);
    }
    return candidates;
}

TEST(GuidedTest, FindsEveryCodesetByFewQuestionsEvenAfterOneWrongAnswer)
{
    const Candidates candidates = SixtyCodesets();
    unsigned sum = 0;
    for (const GuidedTest::Candidate& truth : candidates) {
        SCOPED_TRACE(truth.name);
        const Outcome honest = Play(candidates, &truth);
        EXPECT_EQ(honest.found, truth.name);
        // Twelve signals for power, ten of them of code sets with no other key, and some questions
        // to tell five code sets apart.
        EXPECT_LE(honest.questions, 28U);
        sum += honest.questions;
        for (unsigned lie = 0; lie < honest.questions; ++lie) {
            SCOPED_TRACE(lie);
            const Outcome lied = Play(candidates, &truth, lie);
            EXPECT_EQ(lied.found, truth.name);
            EXPECT_LE(lied.questions, 60U);
        }
    }
    // Tried one after the other, the code sets would take 30 questions on average.
    EXPECT_LE(sum, 60U * 14U);
    EXPECT_EQ(Play(candidates, nullptr).found, "");
}

TEST(GuidedTest, AsksASecondKeyBeforeACodesetCountsAsFound)
{
    GuidedTest test({{"A", 9, {{1, 1}, {2, 1}}}, {"B", 5, {{1, 1}, {2, 2}}}, {"C", 1, {{1, 3}}}});
    EXPECT_EQ(test.KeysTotal(), 2U);
    EXPECT_EQ(test.CodesetsTotal(), 3U);
    // The second key splits by weight 9 to 6, power by 14 to 1.
    EXPECT_EQ(test.Key(), 2U);
    EXPECT_EQ(test.CodesetName(), "A");
    EXPECT_EQ(test.Report(true), GuidedTest::Status::GoOn);
    // If that answer was wrong, B remains, by its weight.
    EXPECT_EQ(test.CodesetName(), "B");
    EXPECT_EQ(test.Report(false), GuidedTest::Status::GoOn);
    EXPECT_EQ(test.CodesetName(), "A");
    EXPECT_EQ(test.Key(), 1U);
    EXPECT_EQ(test.Report(true), GuidedTest::Status::Found);
}

TEST(GuidedTest, OfEqualCodesetsTheCommonestIsFoundAtOnce)
{
    GuidedTest test({{"A", 3, {{1, 7}, {2, 8}}}, {"B", 2, {{2, 8}, {1, 7}}}, {"C", 9, {}}});
    EXPECT_EQ(test.CodesetsTotal(), 1U);
    EXPECT_EQ(test.Report(true), GuidedTest::Status::Found);
    EXPECT_EQ(test.CodesetName(), "A");
    test.Restart();
    // After one failure it comes again, by its other key.
    EXPECT_EQ(test.Key(), 1U);
    EXPECT_EQ(test.Report(false), GuidedTest::Status::GoOn);
    EXPECT_EQ(test.Key(), 2U);
    EXPECT_EQ(test.Report(false), GuidedTest::Status::NoneLeft);
    EXPECT_EQ(GuidedTest({{"C", 9, {}}}).Key(), std::nullopt);
}

TEST(GuidedTest, AmongEqualQuestionsKeepsTheLoadedCodeset)
{
    // After A failed, B and C are equal, and so are their keys. B is asked once and stays.
    GuidedTest test({{"A", 9, {{1, 1}}}, {"B", 1, {{1, 2}, {2, 2}}}, {"C", 1, {{1, 3}, {2, 3}}}});
    test.Report(false);
    EXPECT_EQ(test.CodesetName(), "B");
    EXPECT_EQ(test.Report(true), GuidedTest::Status::GoOn);
    EXPECT_EQ(test.CodesetName(), "B");
    EXPECT_EQ(test.Key(), 2U);
    EXPECT_EQ(test.Report(true), GuidedTest::Status::Found);
}

}  // namespace
