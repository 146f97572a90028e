// SPDX-License-Identifier: Apache-2.0

// Measures the number of keys that the guided test asks for, compared with trying one code set
// after the other. Each code set of a catalogue is the right one in turn, by brand and by type
// alone.

#include "GuidedTestPlay.h"
#include "cloud/Catalogue.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Bench::GuidedTestPlay;

std::vector<QSP::GuidedTest::Candidate> Candidates(const std::vector<Cloud::TestRow>& rows)
{
    std::vector<QSP::GuidedTest::Candidate> candidates;
    for (const Cloud::TestRow& row : rows) {
        auto& candidate = candidates.emplace_back();
        candidate.name = row.codeset;
        candidate.weight =
            static_cast<std::uint32_t>(std::clamp<std::int64_t>(row.weight, 1, 10000));
        for (const auto& [key, signal] : row.signals) {
            candidate.signals.emplace_back(key, signal);
        }
    }
    return candidates;
}

/// Sums over the runs of one row.
class Row {
public:
    void Add(const GuidedTestPlay::Outcome& outcome, double weight)
    {
        ++m_plays;
        m_keys += static_cast<double>(outcome.keys);
        m_weight += weight;
        m_weightedKeys += weight * static_cast<double>(outcome.keys);
        m_worst = std::max(m_worst, outcome.keys);
        m_right += outcome.right ? 1 : 0;
    }
    void Print(const std::string& where, const char* order, const char* answers) const
    {
        const double plays = static_cast<double>(m_plays);
        std::printf("| %s | %s | %s | %.1f | %.1f | %zu | %.1f %% |\n", where.c_str(), answers,
                    order, m_keys / plays, m_weightedKeys / m_weight, m_worst,
                    100.0 * static_cast<double>(m_right) / plays);
    }

private:
    std::size_t m_plays = 0;
    double m_keys = 0;
    double m_weight = 0;
    double m_weightedKeys = 0;
    std::size_t m_worst = 0;
    std::size_t m_right = 0;
};

struct Rows {
    std::size_t tests = 0;
    std::size_t codesets = 0;
    std::size_t largest = 0;
    Row guided, plain, guidedWrong, plainWrong;
};

/// The number of the wrong answer is drawn for each run, among the answers of a run without one.
void Play(std::vector<QSP::GuidedTest::Candidate> candidates, std::mt19937& random, Rows& rows)
{
    GuidedTestPlay play(std::move(candidates));
    if (play.Size() < 2) {
        return;
    }
    ++rows.tests;
    rows.codesets += play.Size();
    rows.largest = std::max(rows.largest, play.Size());
    const auto draw = [&random](std::size_t keys) {
        return random() % keys;
    };
    for (std::size_t truth = 0; truth < play.Size(); ++truth) {
        const double weight = play.Weight(truth);
        const GuidedTestPlay::Outcome guided = play.Guided(truth, std::nullopt);
        const GuidedTestPlay::Outcome plain = play.Plain(truth, std::nullopt);
        rows.guided.Add(guided, weight);
        rows.plain.Add(plain, weight);
        rows.guidedWrong.Add(play.Guided(truth, draw(guided.keys)), weight);
        rows.plainWrong.Add(play.Plain(truth, draw(plain.keys)), weight);
    }
}

void Print(const char* what, const Rows& rows)
{
    if (rows.tests == 0) {
        return;
    }
    const std::string where = std::string(what) + ", " + std::to_string(rows.tests) + " tests, " +
                              std::to_string(rows.codesets) + " plays, up to " +
                              std::to_string(rows.largest) + " code sets";
    rows.guided.Print(where, "guided test", "all right");
    rows.plain.Print(where, "one by one", "all right");
    rows.guidedWrong.Print(where, "guided test", "one wrong");
    rows.plainWrong.Print(where, "one by one", "one wrong");
}

int Main(int argc, char** argv)
{
    CLI::App app("Counts the keys of every guided test of a catalogue");
    std::string file;
    app.add_option("CATALOGUE", file, "As CatalogueBuilder makes it")->required();
    CLI11_PARSE(app, argc, argv);

    std::string why;
    const std::unique_ptr<Cloud::Catalogue> catalogue = Cloud::Catalogue::Open(file, why);
    if (catalogue == nullptr) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), why.c_str());
        return 1;
    }
    std::mt19937 random(1);
    Rows byBrand;
    Rows byType;
    for (const std::string& type : catalogue->DeviceTypes()) {
        for (const std::string& brand : catalogue->Brands(type, "")) {
            Play(Candidates(catalogue->GuidedTest(type, brand)), random, byBrand);
        }
        Play(Candidates(catalogue->GuidedTest(type, "")), random, byType);
    }
    if (byBrand.tests + byType.tests == 0) {
        std::fprintf(stderr, "%s: no guided test of two code sets or more\n", file.c_str());
        return 1;
    }
    std::printf(
        "| tests | answers | order | mean keys | by weight | worst | right code set |\n"
        "|---|---|---|---:|---:|---:|---:|\n");
    Print("by brand", byBrand);
    Print("type alone", byType);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "GuidedTestOrder: %s\n", error.what());
        return 1;
    }
}
