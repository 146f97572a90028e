// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <string>
#include <thread>

#include <fmt/format.h>

#include "benchmarks/HttpReader.h"
#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

/// The wait before idle time is measured. The longest deadline of the start is that of the link to
/// the local API, 5 s.
constexpr std::chrono::seconds kSettle{6};

Figure Kibibytes(const std::string& what, std::uint64_t service, std::uint64_t floor,
                 std::optional<Goal> goal = std::nullopt)
{
    return {what, "KiB", 0, static_cast<double>(service), static_cast<double>(floor), {}, goal};
}

}  // namespace

std::vector<Figure> MeasureIdle(const Place& place, const Effort& effort)
{
    const auto root = place.roots / "idle";
    LayOutRoot(root);
    const auto resources = root / "resources.json";
    // With a network and without a cloud the service would try to connect once a second.
    std::ofstream(resources) << R"({"/network/status": {"isPrimaryUp": false}})";
    const auto port = std::to_string(FreePort());
    const Program api(
        {place.ProgramPath("PorticoServer"), "--port", port, "--resources", resources}, root,
        effort.logLevel);
    const Chain chain(root, {place.ProgramPath("TrellanService")}, effort.logLevel,
                      {"ORLU_PORTICO_PORT=" + port});
    const auto floorRoot = place.roots / "empty";
    LayOutRoot(floorRoot);
    const Program floor({place.ProgramPath("BareListener")}, floorRoot, effort.logLevel);
    KeyClient client(floorRoot);
    client.AskCloudState();
    std::this_thread::sleep_for(kSettle);
    const auto sleeps = chain.program.CountSleeps();
    const auto floorSleeps = floor.CountSleeps();
    const auto cpu = chain.program.CpuTime();
    std::this_thread::sleep_for(effort.idle);
    const auto memory = chain.program.ReadMemory();
    const auto floorMemory = floor.ReadMemory();
    using enum Goal::Kind;
    return {
        Kibibytes("PSS, idle", memory.pss, floorMemory.pss, Goal{AtMost, 4096}),
        Kibibytes("private dirty memory, idle", memory.dirty, floorMemory.dirty),
        Kibibytes("RSS, idle", memory.rss, floorMemory.rss),
        {fmt::format("wake-ups in {} s", effort.idle.count()), "count", 0,
         static_cast<double>(chain.program.CountSleeps() - sleeps),
         static_cast<double>(floor.CountSleeps() - floorSleeps), std::nullopt, Goal{AtMost, 0}},
        {fmt::format("CPU in {} s", effort.idle.count()), "µs", 0,
         static_cast<double>((chain.program.CpuTime() - cpu).count()) / 1000, std::nullopt,
         std::nullopt, std::nullopt},
    };
}

}  // namespace Bench
