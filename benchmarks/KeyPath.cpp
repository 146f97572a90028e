// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <stdexcept>

#include "benchmarks/Measurements.h"

namespace Bench {

namespace {

constexpr std::size_t kWindow = 64;
constexpr std::size_t kMillion = 1'000'000;

/// The results of one chain, one value for each round; times in µs.
struct Rounds {
    std::vector<double> frameMedian;
    std::vector<double> frameTail;
    std::vector<double> answerMedian;
    std::vector<double> answerTail;
    std::vector<double> cpu;
    std::vector<double> rate;
    std::vector<double> cpuInFlight;
};

double Micros(std::chrono::nanoseconds time)
{
    return static_cast<double>(time.count()) / 1000;
}

void MeasureOneByOne(Chain& chain, std::size_t keys, Rounds& rounds)
{
    std::vector<double> toFrame;
    std::vector<double> toAnswer;
    const auto cpu = chain.program.CpuTime();
    for (std::size_t i = 0; i < keys; ++i) {
        const auto times = chain.client.SendKey(chain.sink);
        toFrame.push_back(Micros(times.toFrame));
        toAnswer.push_back(Micros(times.toAnswer));
    }
    rounds.cpu.push_back(Micros(chain.program.CpuTime() - cpu) / static_cast<double>(keys));
    rounds.frameMedian.push_back(Median(toFrame));
    rounds.frameTail.push_back(Quantile(toFrame, 0.99));
    rounds.answerMedian.push_back(Median(toAnswer));
    rounds.answerTail.push_back(Quantile(toAnswer, 0.99));
}

void MeasureInFlight(Chain& chain, std::size_t keys, Rounds& rounds)
{
    const auto arrivals = chain.sink.Arrivals();
    const auto cpu = chain.program.CpuTime();
    const double micros = Micros(chain.client.SendKeys(keys, kWindow));
    rounds.cpuInFlight.push_back(Micros(chain.program.CpuTime() - cpu) / static_cast<double>(keys));
    rounds.rate.push_back(static_cast<double>(keys) * 1e6 / micros);
    if (chain.sink.Arrivals() - arrivals != keys) {
        throw std::runtime_error("not every answered key has arrived at LpmService");
    }
}

std::vector<Figure> Report(const Rounds& service, const Rounds& relay, const Rounds& bytes)
{
    using enum Goal::Kind;
    return {
        CompareRounds("key to frame, p50", "µs", 1, service.frameMedian, relay.frameMedian,
                      Goal{AtMost, 1.1}),
        CompareRounds("key to frame, p99", "µs", 1, service.frameTail, relay.frameTail),
        CompareRounds("key to answer, p50", "µs", 1, service.answerMedian, relay.answerMedian),
        CompareRounds("key to answer, p99", "µs", 1, service.answerTail, relay.answerTail),
        CompareRounds("CPU a key, one by one", "µs", 1, service.cpu, relay.cpu),
        CompareRounds("keys a second, 64 in flight", "1/s", 0, service.rate, relay.rate,
                      Goal{AtLeast, 0.5}),
        CompareRounds("CPU a key, 64 in flight", "µs", 2, service.cpuInFlight, relay.cpuInFlight),
        CompareRounds("key to frame, p50, floor: bytes only", "µs", 1, service.frameMedian,
                      bytes.frameMedian),
        CompareRounds("keys a second, 64 in flight, floor: bytes only", "1/s", 0, service.rate,
                      bytes.rate),
    };
}

}  // namespace

std::vector<Figure> MeasureKeyPath(const Place& place, const Effort& effort)
{
    const std::string relay = place.ProgramPath("BareRelay");
    const std::array<std::vector<std::string>, 3> commands = {{
        {place.ProgramPath("TrellanService")},
        {relay, "messages"},
        {relay, "bytes"},
    }};
    std::array<Rounds, 3> rounds;
    // The result depends on the cores on which a chain's threads run, and they rarely move, so each
    // round has chains of its own. The order rotates, so that no chain always follows the same one.
    for (std::size_t round = 0; round < effort.rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const std::size_t which = (round + i) % commands.size();
            Chain chain(place.roots / "path", commands[which], effort.logLevel);
            chain.client.SendKeys(effort.keysOneByOne, 1);
            MeasureOneByOne(chain, effort.keysOneByOne, rounds[which]);
            MeasureInFlight(chain, effort.keysInFlight, rounds[which]);
        }
    }
    return Report(rounds[0], rounds[1], rounds[2]);
}

std::vector<Figure> MeasureKeyGrowth(const Place& place, const Effort& effort)
{
    Chain chain(place.roots / "growth", {place.ProgramPath("TrellanService")}, effort.logLevel);
    chain.client.SendKeys(kMillion / 10, kWindow);
    const auto before = chain.program.ReadMemory().dirty;
    chain.client.SendKeys(kMillion, kWindow);
    const auto after = chain.program.ReadMemory().dirty;
    return {GrowthFigure("dirty memory, growth over a million keys", before, after)};
}

}  // namespace Bench
