// SPDX-License-Identifier: Apache-2.0

// Measures TrellanService and its floors, programs that do the same without any logic, in one run.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "benchmarks/Measurements.h"
#include "benchmarks/TemporaryFolder.h"

namespace Bench {

namespace {

struct Measurement {
    std::string name;
    std::vector<Figure> (*measure)(const Place&, const Effort&);
};

const std::vector<Measurement> kMeasurements = {
    {"keys", MeasureKeyPath},         {"peers", MeasurePeers},
    {"key-growth", MeasureKeyGrowth}, {"instructions", MeasureInstructions},
    {"local-api", MeasureLocalApi},   {"syncs", MeasureSyncs},
    {"lists", MeasureGrowingLists},   {"sync-growth", MeasureSyncGrowth},
    {"start", MeasureStartUp},        {"idle", MeasureIdle},
};

/// All of them if `only` is empty.
std::vector<Figure> MeasureAll(const Effort& effort, Place place, const std::string& only)
{
    const TemporaryFolder folder;
    place.programs = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    place.roots = folder.Path();
    std::vector<Figure> figures;
    for (const auto& [name, measure] : kMeasurements) {
        if (only.empty() || only == name) {
            std::ranges::move(measure(place, effort), std::back_inserter(figures));
        }
    }
    return figures;
}

int Main(int argc, char** argv)
{
    CLI::App app("Measures TrellanService beside floors that do the same with nothing in them.");
    Effort effort;
    bool check = false;
    Place place;
    std::string only;
    std::vector<std::string> names;
    std::ranges::transform(kMeasurements, std::back_inserter(names), &Measurement::name);
    app.add_option("--rounds", effort.rounds, "Rounds of each measurement")
        ->check(CLI::Range(1, 1000));
    app.add_option("--one-by-one", effort.keysOneByOne, "Keys a round, one at a time")
        ->check(CLI::PositiveNumber);
    app.add_option("--in-flight", effort.keysInFlight, "Keys a round, 64 at a time")
        ->check(CLI::PositiveNumber);
    app.add_option("--gets", effort.gets, "Requests a round to the local API")
        ->check(CLI::PositiveNumber);
    app.add_option("--nginx", place.nginx, "The program that is the local API's floor");
    app.add_option("--lircd", place.lircd, "The program to measure keys, start and memory beside");
    app.add_option("--valgrind", place.valgrind, "The program that counts instructions");
    app.add_option("--only", only, "One measurement instead of all")->check(CLI::IsMember(names));
    app.add_option("--idle", effort.idle, "Idle time to watch, in s");
    app.add_option("--log-level", effort.logLevel, "The service's log level");
    app.add_flag("--check", check, "Exit with 1 if a goal is missed");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    const auto figures = MeasureAll(effort, place, only);
    fmt::print("{}", RenderTable(figures));
    return check && !std::ranges::all_of(figures, &Figure::IsMet) ? 1 : 0;
}

}  // namespace

}  // namespace Bench

int main(int argc, char** argv)
{
    try {
        return Bench::Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "TrellanBench: %s\n", error.what());
        return 1;
    }
}
