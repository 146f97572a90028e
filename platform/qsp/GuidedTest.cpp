// SPDX-License-Identifier: Apache-2.0

#include "qsp/GuidedTest.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace QSP {

namespace {

constexpr unsigned kAnswersAgainst = 2;
/// Keeps the sums of masses within 64 bits for any answer of the cloud.
constexpr std::uint32_t kMaximumWeight = 10000;

/// Keeps the first of several signals of one key.
std::vector<GuidedTest::Signal> OneForEachKey(const std::vector<GuidedTest::Signal>& signals)
{
    std::vector<GuidedTest::Signal> kept;
    std::set<std::uint32_t> keys;
    for (const GuidedTest::Signal& signal : signals) {
        if (keys.insert(signal.first).second) {
            kept.push_back(signal);
        }
    }
    return kept;
}

}  // namespace

bool GuidedTest::Class::IsLeft() const
{
    return against < kAnswersAgainst;
}

bool GuidedTest::Class::Sends(std::size_t question) const
{
    return std::find(questions.begin(), questions.end(), question) != questions.end();
}

GuidedTest::GuidedTest(const std::vector<Candidate>& candidates)
{
    std::map<std::vector<std::size_t>, std::size_t> classOf;
    std::map<Signal, std::size_t> questionOf;
    for (const Candidate& candidate : candidates) {
        std::vector<std::size_t> questions;
        for (const Signal& signal : OneForEachKey(candidate.signals)) {
            const auto [found, isNew] = questionOf.try_emplace(signal, m_questions.size());
            if (isNew) {
                m_questions.push_back({signal, false});
            }
            questions.push_back(found->second);
        }
        // No question could ever tell whether it is the right one.
        if (questions.empty()) {
            continue;
        }
        const std::uint32_t weight = std::clamp(candidate.weight, 1U, kMaximumWeight);
        m_totalWeight += weight;
        // The class is known by its set of signals; the order of questions is that of its commonest
        // member.
        std::vector<std::size_t> sorted = questions;
        std::sort(sorted.begin(), sorted.end());
        const auto [found, isNew] = classOf.try_emplace(std::move(sorted), m_classes.size());
        if (isNew) {
            m_classes.push_back({candidate.name, 0, std::move(questions)});
        }
        m_classes[found->second].weight += weight;
    }
    Choose();
}

void GuidedTest::Restart()
{
    for (Class& one : m_classes) {
        one.against = 0;
        one.worked = one.tested = false;
    }
    for (Question& question : m_questions) {
        question.asked = false;
    }
    m_codeset.reset();
    Choose();
}

GuidedTest::Status GuidedTest::Report(bool worked)
{
    if (!m_question) {
        return Status::Error;
    }
    m_questions[*m_question].asked = true;
    for (Class& one : m_classes) {
        const bool sends = one.Sends(*m_question);
        one.tested = one.tested || sends;
        one.worked = one.worked || (sends && worked);
        // A device that reacts to one signal does not react to another one for the same key. So
        // "yes" counts against each class without this signal, "no" against each class with it.
        one.against += sends != worked ? 1 : 0;
    }
    Choose();
    if (m_question) {
        return Status::GoOn;
    }
    return m_codeset ? Status::Found : Status::NoneLeft;
}

void GuidedTest::Choose()
{
    std::vector<std::size_t> left;
    for (std::size_t i = 0; i < m_classes.size(); ++i) {
        if (m_classes[i].IsLeft()) {
            left.push_back(i);
        }
    }
    m_question.reset();
    if (left.empty()) {
        m_codeset.reset();
        return;
    }
    // The last class counts as found only if one of its keys worked: all other answers may have
    // been "no".
    if (left.size() == 1 && m_classes[left[0]].worked) {
        m_codeset = left[0];
        return;
    }
    // There is always a question: two classes differ in at least one signal, so some signal splits
    // them.
    m_question = left.size() == 1 ? NextOf(m_classes[left[0]]) : BestSplit(left);
    if (!m_codeset || !m_classes[*m_codeset].IsLeft() ||
        !m_classes[*m_codeset].Sends(*m_question)) {
        // The loaded code set is kept if it can send the question: loading another takes longer
        // than a key.
        m_codeset = Heaviest(left, *m_question);
    }
}

std::optional<std::size_t> GuidedTest::NextOf(const Class& one) const
{
    for (const std::size_t question : one.questions) {
        if (!m_questions[question].asked) {
            return question;
        }
    }
    // A class with a single signal can get its second answer only by the same question again.
    return one.questions.front();
}

std::optional<std::size_t> GuidedTest::BestSplit(const std::vector<std::size_t>& left) const
{
    std::vector<Split> splits(m_questions.size());
    std::uint64_t mass = 0;
    for (const std::size_t i : left) {
        mass += Mass(m_classes[i]);
        Add(m_classes[i], m_codeset == i, splits);
    }
    const auto rank = [this, &splits, mass](std::size_t question) {
        const Split& split = splits[question];
        // A question that was asked counts for a class only if the class has no other question
        // left.
        const std::uint64_t counted = m_questions[question].asked ? split.exhausted : split.share;
        return std::tuple(std::min(counted, mass - split.share), split.share, split.loaded,
                          SIZE_MAX - split.place);
    };
    std::optional<std::size_t> best;
    for (std::size_t question = 0; question < splits.size(); ++question) {
        const std::size_t senders = splits[question].senders;
        const bool isSplit = senders > 0 && senders < left.size();
        if (isSplit && (!best || rank(question) > rank(*best))) {
            best = question;
        }
    }
    return best;
}

void GuidedTest::Add(const Class& one, bool loaded, std::vector<Split>& splits) const
{
    const bool exhausted = IsExhausted(one);
    for (std::size_t place = 0; place < one.questions.size(); ++place) {
        Split& split = splits[one.questions[place]];
        split.share += Mass(one);
        split.exhausted += exhausted ? Mass(one) : 0;
        ++split.senders;
        split.place = std::min(split.place, place);
        split.loaded = split.loaded || loaded;
    }
}

bool GuidedTest::IsExhausted(const Class& one) const
{
    return std::all_of(one.questions.begin(), one.questions.end(),
                       [this](std::size_t question) { return m_questions[question].asked; });
}

/// A class without an answer against it weighs more than all others with one together.
std::uint64_t GuidedTest::Mass(const Class& one) const
{
    return one.weight * (one.against == 0 ? m_totalWeight + 1 : 1);
}

std::size_t GuidedTest::Heaviest(const std::vector<std::size_t>& left, std::size_t question) const
{
    std::size_t heaviest = left.front();
    std::uint64_t most = 0;
    for (const std::size_t i : left) {
        if (m_classes[i].Sends(question) && Mass(m_classes[i]) > most) {
            most = Mass(m_classes[i]);
            heaviest = i;
        }
    }
    return heaviest;
}

std::optional<std::uint32_t> GuidedTest::Key() const
{
    return m_question ? std::optional(m_questions[*m_question].signal.first) : std::nullopt;
}

const std::string& GuidedTest::CodesetName() const
{
    static const std::string none;
    return m_codeset ? m_classes[*m_codeset].name : none;
}

std::uint32_t GuidedTest::KeysTotal() const
{
    std::set<std::uint32_t> keys;
    for (const Question& question : m_questions) {
        keys.insert(question.signal.first);
    }
    return static_cast<std::uint32_t>(keys.size());
}

std::uint32_t GuidedTest::CodesetsTested() const
{
    return static_cast<std::uint32_t>(std::count_if(m_classes.begin(), m_classes.end(),
                                                    [](const Class& one) { return one.tested; }));
}

}  // namespace QSP
