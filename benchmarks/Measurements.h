// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "benchmarks/Chain.h"
#include "benchmarks/Figures.h"

namespace Bench {

/// The number of repetitions.
struct Effort {
    std::size_t rounds = 15;
    std::size_t keysOneByOne = 2000;
    std::size_t keysInFlight = 40'000;
    std::size_t gets = 2000;
    std::chrono::seconds idle{30};
    int logLevel = 2;
};

/// A key's path from the client through the service to LpmService and back, compared with the same
/// chain with an empty relay in place of the service.
std::vector<Figure> MeasureKeyPath(const Place& place, const Effort& effort);

/// The growth of dirty memory after a million keys.
std::vector<Figure> MeasureKeyGrowth(const Place& place, const Effort& effort);

/// Instructions in user space for a key and its answer, at log levels 2 and 3, compared with the
/// empty relay. Nothing without valgrind.
std::vector<Figure> MeasureInstructions(const Place& place, const Effort& effort);

/// The time from exec to a client's first connection and first answer, compared with a program that
/// has the service's libraries and only listens.
std::vector<Figure> MeasureStartUp(const Place& place, const Effort& effort);

/// GET of the control resource through PorticoServer, compared with an nginx that relays to a
/// second one. Nothing without nginx.
std::vector<Figure> MeasureLocalApi(const Place& place, const Effort& effort);

/// A sync of twenty code sets, from the source list to the event of its end, compared with a
/// program that sends the same posts, loads and requests; and the share of store and log.
std::vector<Figure> MeasureSyncs(const Place& place, const Effort& effort);

/// The time for one code set of a source list as the list grows.
std::vector<Figure> MeasureGrowingLists(const Place& place, const Effort& effort);

/// The growth of dirty memory after a thousand syncs.
std::vector<Figure> MeasureSyncGrowth(const Place& place, const Effort& effort);

/// A key's path to its frame, the start and the memory, compared with lircd, which writes its
/// pulses to a socket and is configured so that it never sleeps. Nothing without lircd.
std::vector<Figure> MeasurePeers(const Place& place, const Effort& effort);

/// Memory and wake-ups with a client, LpmService and the local API connected and nothing to do.
std::vector<Figure> MeasureIdle(const Place& place, const Effort& effort);

}  // namespace Bench
