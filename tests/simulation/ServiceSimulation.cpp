// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "common/CommandLine.h"
#include "orlu/DPrint.h"
#include "simulation/ServiceRun.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t first = 1;
    std::uint64_t seeds = 200;
    double seconds = 0;
    std::uint32_t minutes = 20;
    bool plants = false;
    bool log = false;
};

void PrintLogLine(int level, std::string_view logger, std::string_view text)
{
    std::printf(
        "%s\n",
        fmt::format("{} {} {}: {}", Orlu::Runtime().Now().count(), level, logger, text).c_str());
}

void DropLogLine(int /*level*/, std::string_view /*logger*/, std::string_view /*text*/) {}

class Tally {
public:
    explicit Tally(const Options& options) : m_options(options), m_begin(Clock::now()) {}

    /// False if the run of the seed broke a rule.
    bool Run(std::uint64_t seed)
    {
        Simulation::ServiceRun run(seed);
        const std::string broken = run.Run(m_options.minutes);
        if (!broken.empty()) {
            return Tell(seed, broken);
        }
        const auto counts = run.Count();
        m_runs += 1;
        m_ready += counts.readyByItself ? 1 : 0;
        m_sum.acts += counts.acts;
        m_sum.posts += counts.posts;
        m_sum.answers += counts.answers;
        m_sum.syncs += counts.syncs;
        m_sum.emissions += counts.emissions;
        m_sum.restarts += counts.restarts;
        m_trace = run.Trace();
        return true;
    }

    bool RunTwice(std::uint64_t seed)
    {
        if (!Run(seed)) {
            return false;
        }
        const auto trace = m_trace;
        return Run(seed) && (trace == m_trace || Tell(seed, "it went otherwise the second time"));
    }

    bool IsOver(std::uint64_t seed) const
    {
        return m_options.seconds > 0 ? Elapsed() >= m_options.seconds
                                     : seed >= m_options.first + m_options.seeds;
    }

    void Print() const
    {
        const double hours = static_cast<double>(m_runs * m_options.minutes) / 60;
        std::printf(
            "%s", fmt::format("{} runs, {:.0f} hours, {:.0f} a minute: {} acts, {} posts, {} "
                              "answers, {} syncs, {} lights, {} restarts; ready by itself at the "
                              "end {}\n",
                              m_runs, hours, hours / Elapsed() * 60, m_sum.acts, m_sum.posts,
                              m_sum.answers, m_sum.syncs, m_sum.emissions, m_sum.restarts, m_ready)
                      .c_str());
    }

private:
    double Elapsed() const { return std::chrono::duration<double>(Clock::now() - m_begin).count(); }

    bool Tell(std::uint64_t seed, const std::string& what) const
    {
        std::printf(
            "seed %llu: %s\nagain: ServiceSimulation --first %llu --seeds 1 --minutes %u --log\n",
            static_cast<unsigned long long>(seed), what.c_str(),
            static_cast<unsigned long long>(seed), m_options.minutes);
        return false;
    }

    const Options& m_options;
    Clock::time_point m_begin;
    std::uint64_t m_runs = 0;
    std::uint64_t m_ready = 0;
    std::uint64_t m_trace = 0;
    Simulation::ServiceRun::Counts m_sum;
};

/// Whether each rule finds the fault planted for it, within the given number of seeds.
bool FindPlants(const Options& options)
{
    using Simulation::Plant;
    bool all = true;
    for (const auto& [plant, name] : {std::pair(Plant::kLongBursts, "long bursts"),
                                      std::pair(Plant::kForgottenCodeset, "a forgotten code set"),
                                      std::pair(Plant::kTornStore, "a torn store")}) {
        std::string broken;
        auto seed = options.first;
        for (; broken.empty() && seed < options.first + options.seeds; ++seed) {
            broken = Simulation::ServiceRun(seed, plant).Run(options.minutes);
        }
        std::printf(
            "%s: %s\n", name,
            broken.empty() ? "not found" : fmt::format("seed {}, {}", seed - 1, broken).c_str());
        all = all && !broken.empty();
    }
    return all;
}

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    Options options;
    CLI::App app("Lives of the whole service under virtual time, among peers that misbehave.",
                 "ServiceSimulation");
    app.add_option("--first", options.first, "The first seed");
    app.add_option("--seeds", options.seeds, "How many");
    app.add_option("--seconds", options.seconds, "As many as fit into so many seconds");
    app.add_option("--minutes", options.minutes, "Virtual minutes of trouble in each");
    app.add_flag("--plants", options.plants, "See that planted faults are found");
    app.add_flag("--log", options.log, "Print the service's log");
    return Peers::ParseCommandLine(app, argc, argv, exitCode) ? std::optional(options)
                                                              : std::nullopt;
}

int Simulate(const Options& options)
{
    if (std::filesystem::is_directory("/dev/shm")) {
        setenv("TMPDIR", "/dev/shm", 0);
    }
    Simulation::SimulatedCloud::BuildCatalogue();
    DPrint::SetLevel(options.log ? 4 : 2);
    DPrint::SetSink(options.log ? &PrintLogLine : &DropLogLine);
    if (options.plants) {
        return FindPlants(options) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    Tally tally(options);
    if (!options.log && !tally.RunTwice(options.first)) {
        return EXIT_FAILURE;
    }
    for (auto seed = options.first; !tally.IsOver(seed); ++seed) {
        if (!tally.Run(seed)) {
            return EXIT_FAILURE;
        }
    }
    tally.Print();
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        int exitCode = EXIT_SUCCESS;
        const auto options = ParseOptions(argc, argv, exitCode);
        return options ? Simulate(*options) : exitCode;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ServiceSimulation: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
