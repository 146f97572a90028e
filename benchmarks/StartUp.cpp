// SPDX-License-Identifier: Apache-2.0

#include <filesystem>

#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

/// One value for each start, in ms.
struct Starts {
    std::vector<double> connected;
    std::vector<double> answered;
};

double Millis(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

void Start(const std::string& program, const std::filesystem::path& root, int logLevel,
           Starts& starts)
{
    std::filesystem::remove(SocketPath(root, "TrellanService"));
    const auto start = Clock::now();
    const Program running({program}, root, logLevel);
    KeyClient client(root);
    starts.connected.push_back(Millis(Clock::now() - start));
    client.AskCloudState();
    starts.answered.push_back(Millis(Clock::now() - start));
}

}  // namespace

std::vector<Figure> MeasureStartUp(const Place& place, const Effort& effort)
{
    const auto root = place.roots / "start";
    LayOutRoot(root);
    Starts service;
    Starts floor;
    for (std::size_t round = 0; round <= 2 * effort.rounds; ++round) {
        Start(place.ProgramPath("TrellanService"), root, effort.logLevel, service);
        Start(place.ProgramPath("BareListener"), root, effort.logLevel, floor);
        if (round == 0) {
            service = {};
            floor = {};
        }
    }
    const Goal goal{Goal::Kind::AtMost, 1.15};
    return {
        CompareRounds("exec to connection", "ms", 2, service.connected, floor.connected),
        CompareRounds("exec to first answer", "ms", 2, service.answered, floor.answered, goal),
    };
}

}  // namespace Bench
