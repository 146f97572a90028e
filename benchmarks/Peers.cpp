// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <filesystem>

#include "benchmarks/LircChain.h"
#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

constexpr std::size_t kWindow = 64;

struct Rounds {
    std::vector<double> median;
    std::vector<double> tail;
    std::vector<double> rate;
    std::vector<double> start;
    std::vector<double> pss;
};

template <class Time>
double Micros(Time time)
{
    return std::chrono::duration<double, std::micro>(time).count();
}

/// `one` sends a key and returns the time until its frame, `many` sends the given number of keys.
template <class One, class Many>
void Measure(const Effort& effort, const Program& program, One one, Many many, Rounds& rounds)
{
    rounds.pss.push_back(static_cast<double>(program.ReadMemory().pss));
    many(effort.keysOneByOne, 1);
    std::vector<double> times;
    for (std::size_t i = 0; i < effort.keysOneByOne; ++i) {
        times.push_back(Micros(one()));
    }
    rounds.median.push_back(Median(times));
    rounds.tail.push_back(Quantile(times, 0.99));
    rounds.rate.push_back(static_cast<double>(effort.keysInFlight) * 1e6 /
                          Micros(many(effort.keysInFlight, kWindow)));
}

void MeasureService(const Place& place, const Effort& effort, Rounds& rounds)
{
    const auto root = place.roots / "beside";
    const std::vector<std::string> command = {place.ProgramPath("TrellanService")};
    LayOutRoot(root);
    {
        std::filesystem::remove(SocketPath(root, "TrellanService"));
        const auto begin = Clock::now();
        const Program program(command, root, effort.logLevel);
        const KeyClient client(root);
        rounds.start.push_back(Micros(Clock::now() - begin) / 1000);
    }
    std::filesystem::remove(SocketPath(root, "TrellanService"));
    Chain chain(root, command, effort.logLevel);
    Measure(
        effort, chain.program, [&chain] { return chain.client.SendKey(chain.sink).toFrame; },
        [&chain](std::size_t count, std::size_t window) {
            return chain.client.SendKeys(count, window);
        },
        rounds);
}

void MeasureLircd(const Place& place, const Effort& effort, Rounds& rounds)
{
    LircChain chain(place.roots / "lirc", place.lircd);
    rounds.start.push_back(Micros(chain.Start()) / 1000);
    Measure(
        effort, chain.Process(), [&chain] { return chain.SendKey().toFrame; },
        [&chain](std::size_t count, std::size_t window) { return chain.SendKeys(count, window); },
        rounds);
}

}  // namespace

std::vector<Figure> MeasurePeers(const Place& place, const Effort& effort)
{
    if (place.lircd.empty()) {
        return {};
    }
    Rounds ours;
    Rounds lircd;
    for (std::size_t round = 0; round < effort.rounds; ++round) {
        MeasureService(place, effort, ours);
        MeasureLircd(place, effort, lircd);
    }
    using enum Goal::Kind;
    return {
        CompareRounds("key to frame, p50, beside lircd", "µs", 1, ours.median, lircd.median,
                      Goal{AtMost, 1.15}),
        CompareRounds("key to frame, p99, beside lircd", "µs", 1, ours.tail, lircd.tail,
                      Goal{AtMost, 1.1}),
        CompareRounds("keys a second, 64 in flight, beside lircd", "1/s", 0, ours.rate, lircd.rate,
                      Goal{AtLeast, 4}),
        CompareRounds("exec to connection, beside lircd", "ms", 2, ours.start, lircd.start,
                      Goal{AtMost, 0.4}),
        CompareRounds("PSS before the first key, beside lircd", "KiB", 0, ours.pss, lircd.pss),
    };
}

}  // namespace Bench
