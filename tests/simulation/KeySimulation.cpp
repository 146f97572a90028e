// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <optional>
#include <string>

#include <unistd.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "ProtoBufs/KeyValues.h"
#include "common/CommandLine.h"
#include "orlu/DPrint.h"
#include "simulation/KeyRun.h"

namespace {

using Clock = std::chrono::steady_clock;
using Simulation::BlastChecker;
using Simulation::KeyRun;
using Simulation::Presser;

/// Schedules of one seed, which run one after the other on the same handler.
constexpr std::uint64_t kSchedulesOfARun = 500;

struct Options {
    std::uint64_t first = 1;
    std::uint64_t runs = 4;
    double seconds = 0;
    bool plant = false;
    bool allowed = false;
    bool rates = false;
};

void DropLogLine(int /*level*/, std::string_view /*logger*/, std::string_view /*text*/) {}

struct Tally {
    std::uint64_t schedules = 0;
    std::uint64_t acts = 0;
    BlastChecker::Figures seen;

    void Add(const KeyRun& run)
    {
        const auto figures = run.Seen();
        acts += run.Acts();
        seen.bursts += figures.bursts;
        seen.longestOn = std::max(seen.longestOn, figures.longestOn);
        seen.shortestPause = std::min(seen.shortestPause, figures.shortestPause);
        seen.worstDuty = std::max(seen.worstDuty, figures.worstDuty);
    }

    void Print(const char* presser) const
    {
        std::printf("%s",
                    fmt::format("{}: {} schedules, {} acts, {} bursts: longest {} ms, shortest "
                                "pause {} ms, on for at most {:.1f} % of ten seconds\n",
                                presser, schedules, acts, seen.bursts, seen.longestOn,
                                seen.shortestPause, seen.worstDuty * 100)
                        .c_str());
    }
};

/// False if a schedule broke a rule.
bool Run(std::uint64_t seed, Presser presser, bool plant, Tally& tally)
{
    KeyRun run(seed, presser);
    if (plant) {
        run.Keys().SetKeyDelay(200, 140);
    }
    for (std::uint64_t i = 0; i < kSchedulesOfARun; ++i) {
        if (const auto broken = run.Play(); !broken.empty()) {
            std::printf("seed %llu, schedule %llu of a %s hand: %s\n",
                        static_cast<unsigned long long>(seed), static_cast<unsigned long long>(i),
                        presser == Presser::kOneHand ? "calm" : "wild", broken.c_str());
            return false;
        }
        ++tally.schedules;
    }
    tally.Add(run);
    return true;
}

constexpr std::uint32_t kTenSeconds = 10'000;
constexpr std::uint32_t kKey = IpcProtocol::ORLU_NUMBER_1;

void Hold(KeyRun& run)
{
    run.Press(kKey);
    run.Wait(kTenSeconds);
}

void PressInBatches(KeyRun& run)
{
    run.Press(kKey);
    for (std::uint32_t ms = 0; ms < kTenSeconds; ms += 121) {
        run.Wait(121);
        for (int i = 0; i < 20; ++i) {
            run.Press(kKey);
        }
    }
}

void PressSingly(KeyRun& run)
{
    for (std::uint32_t ms = 0; ms < kTenSeconds; ms += 50) {
        run.PressOnce(kKey);
        run.Wait(50);
    }
}

void HoldPermitted(KeyRun& run)
{
    run.Keys().m_allowContinuous = true;
    Hold(run);
}

/// The end press finds a sync under way, and goes by CEC.
void ReleaseInASync(KeyRun& run)
{
    run.Press(kKey);
    run.SetReady(false);
    run.Release();
    run.Wait(kTenSeconds);
}

void ReleasePermittedInASync(KeyRun& run)
{
    run.Keys().m_allowContinuous = true;
    ReleaseInASync(run);
}

void HoldWithoutDelay(KeyRun& run)
{
    run.Keys().SetKeyDelay(0, 120);
    Hold(run);
}

void HoldUnbounded(KeyRun& run)
{
    run.Keys().SetKeyDelay(200, static_cast<std::uint32_t>(-1));
    Hold(run);
}

/// Prints how long keys are on where the rules allow it; none of it is a fault of the service.
void PrintAllowed()
{
    static constexpr struct {
        const char* what;
        void (*play)(KeyRun& run);
    } kRows[] = {
        {"a key is held", &Hold},
        {"20 presses at once every 121 ms", &PressInBatches},
        {"a single press every 50 ms", &PressSingly},
        {"a key that may go on is held and never released", &HoldPermitted},
        {"a key is released while a sync runs", &ReleaseInASync},
        {"a key that may go on is released while a sync runs", &ReleasePermittedInASync},
        {"a key is held, key delay 0", &HoldWithoutDelay},
        {"a key is held, maximum blast time 4294967295", &HoldUnbounded},
    };
    for (const auto& [what, play] : kRows) {
        KeyRun run(1, Presser::kRandom);
        play(run);
        const double onMs = run.OnMs();
        std::printf("%s: on for %.0f of %u ms\n", what, onMs, kTenSeconds);
    }
}

std::uint64_t ResidentKiB()
{
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * static_cast<std::uint64_t>(::getpagesize()) / 1024;
}

/// Presses a key for an hour at several rates: the cost of a press must not depend on the number of
/// presses before it.
void PrintRates()
{
    constexpr std::uint32_t kHour = 3'600'000;
    for (const std::uint32_t rate : {1U, 2U, 5U, 10U, 20U, 50U}) {
        KeyRun run(1, Presser::kRandom);
        const std::uint64_t memory = ResidentKiB();
        const auto start = std::clock();
        for (std::uint32_t ms = 0; ms < kHour; ms += 1000 / rate) {
            run.PressOnce(kKey);
            run.Wait(1000 / rate);
        }
        const double micros = 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        const std::uint32_t presses = kHour / 1000 * rate;
        std::printf("%s", fmt::format("{} a second: {} presses, on for {:.1f} % of the "
                                      "hour, {:.2f} us a press, {} KiB more memory\n",
                                      rate, presses, run.OnMs() / kHour * 100, micros / presses,
                                      ResidentKiB() - memory)
                              .c_str());
    }
}

int Simulate(const Options& options)
{
    DPrint::SetLevel(1);
    DPrint::SetSink(&DropLogLine);
    if (options.allowed) {
        PrintAllowed();
        return EXIT_SUCCESS;
    }
    if (options.rates) {
        PrintRates();
        return EXIT_SUCCESS;
    }
    Tally oneHand;
    Tally random;
    if (options.plant) {
        const bool found = !Run(options.first, Presser::kOneHand, true, oneHand) &&
                           !Run(options.first, Presser::kRandom, true, random);
        return found ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const auto end = Clock::now() + std::chrono::duration<double>(options.seconds);
    for (auto seed = options.first;
         options.seconds > 0 ? Clock::now() < end : seed < options.first + options.runs; ++seed) {
        // One seed in ten presses as one hand.
        const bool isOneHand = seed % 10 == 1;
        if (!Run(seed, isOneHand ? Presser::kOneHand : Presser::kRandom, false,
                 isOneHand ? oneHand : random)) {
            return EXIT_FAILURE;
        }
    }
    oneHand.Print("calm");
    random.Print("wild");
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        Options options;
        CLI::App app(
            "Presses keys at random and judges the blaster's light by LpmService's record.",
            "KeySimulation");
        app.add_option("--first", options.first, "The first seed; each plays 500 schedules");
        app.add_option("--runs", options.runs, "How many seeds");
        app.add_option("--seconds", options.seconds, "As many as fit into so many seconds");
        app.add_flag("--plant", options.plant, "See that bursts that are too long are found");
        app.add_flag("--allowed", options.allowed, "Print how long the light is on where it may");
        app.add_flag("--rates", options.rates, "Print what a press costs at 1 to 50 a second");
        int exitCode = EXIT_SUCCESS;
        return Peers::ParseCommandLine(app, argc, argv, exitCode) ? Simulate(options) : exitCode;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "KeySimulation: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
