// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "benchmarks/Chain.h"
#include "benchmarks/Figures.h"

namespace Bench {

/// How much is measured.
struct Effort {
    std::size_t rounds = 15;
    std::size_t keysOneByOne = 2000;
    std::size_t keysInFlight = 40'000;
    std::size_t gets = 2000;
    std::chrono::seconds idle{30};
    int logLevel = 2;
};

/// A key's way from the client through the service to LpmService and back, beside the same chain
/// with an empty relay in the service's place.
std::vector<Figure> MeasureKeyPath(const Place& place, const Effort& effort);

/// How much dirty memory a million keys leave behind.
std::vector<Figure> MeasureKeyGrowth(const Place& place, const Effort& effort);

/// How many instructions in user space a key and its answer take, at log levels 2 and 3, beside the
/// empty relay. Nothing without a valgrind.
std::vector<Figure> MeasureInstructions(const Place& place, const Effort& effort);

/// From exec to a client's first connection and first answer, beside a program that has the
/// service's libraries and only listens.
std::vector<Figure> MeasureStartUp(const Place& place, const Effort& effort);

/// GET of the control resource through PorticoServer, beside an nginx that relays to a second one.
/// Nothing without an nginx.
std::vector<Figure> MeasureLocalApi(const Place& place, const Effort& effort);

/// A sync of twenty code sets, from the source list to the word that it is done, beside a program
/// that posts, loads and asks for the same; and what of it store and log take.
std::vector<Figure> MeasureSyncs(const Place& place, const Effort& effort);

/// What a code set of a source list takes as the list grows.
std::vector<Figure> MeasureGrowingLists(const Place& place, const Effort& effort);

/// How much dirty memory a thousand syncs leave behind.
std::vector<Figure> MeasureSyncGrowth(const Place& place, const Effort& effort);

/// A key's way to its frame, the start and the memory beside lircd, which writes its pulses to a
/// socket and is kept from sleeping. Nothing without an lircd.
std::vector<Figure> MeasurePeers(const Place& place, const Effort& effort);

/// Memory and wake-ups with a client, LpmService and the local API connected and nothing to do.
std::vector<Figure> MeasureIdle(const Place& place, const Effort& effort);

}  // namespace Bench
