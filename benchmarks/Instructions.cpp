// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

constexpr std::size_t kFewKeys = 500;
constexpr std::size_t kManyKeys = 4500;

std::uint64_t TotalOf(const std::filesystem::path& profile)
{
    const std::string name = "totals:";
    std::ifstream lines(profile);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name)) {
            return std::stoull(line.substr(name.size()));
        }
    }
    throw std::runtime_error("callgrind has counted nothing");
}

/// Instructions of a whole run of a program with that many keys, one by one.
double CountLife(const Place& place, std::vector<std::string> command, int logLevel,
                 std::size_t keys)
{
    const auto root = place.roots / "counted";
    const auto profile = root / "profile";
    std::filesystem::remove_all(root);
    command.insert(command.begin(), {place.valgrind, "--quiet", "--tool=callgrind",
                                     "--callgrind-out-file=" + profile.string()});
    Chain chain(root, command, logLevel);
    chain.client.SendKeys(keys, 1);
    chain.program.Terminate();
    return static_cast<double>(TotalOf(profile));
}

/// The difference between a run with many keys and one with few is the cost of the other keys.
double CountKey(const Place& place, const std::vector<std::string>& command, int logLevel)
{
    const double few = CountLife(place, command, logLevel, kFewKeys);
    const double many = CountLife(place, command, logLevel, kManyKeys);
    return (many - few) / static_cast<double>(kManyKeys - kFewKeys);
}

}  // namespace

std::vector<Figure> MeasureInstructions(const Place& place, const Effort& /*effort*/)
{
    if (place.valgrind.empty()) {
        return {};
    }
    const double relay = CountKey(place, {place.ProgramPath("BareRelay"), "messages"}, 2);
    std::vector<Figure> figures;
    for (const auto& [logLevel, goal] : {std::pair{2, 2.0}, std::pair{3, 3.0}}) {
        const double ours = CountKey(place, {place.ProgramPath("TrellanService")}, logLevel);
        figures.push_back({fmt::format("a key at log level {}", logLevel), "instructions", 0, ours,
                           relay, ours / relay, Goal{Goal::Kind::AtMost, goal}});
    }
    return figures;
}

}  // namespace Bench
