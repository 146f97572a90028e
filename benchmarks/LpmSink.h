// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <thread>

#include "benchmarks/Stream.h"

namespace Bench {

using Clock = std::chrono::steady_clock;

/// The part of LpmService that a key needs, on a thread of its own. Serves any number of clients
/// and answers each request at once with success.
class LpmSink {
public:
    /// Listens for "LpmService" under `root`. Throws `std::system_error`.
    explicit LpmSink(const std::string& root);
    ~LpmSink();
    LpmSink(const LpmSink&) = delete;
    LpmSink& operator=(const LpmSink&) = delete;

    /// The time at which the last request was read. Any thread.
    Clock::time_point LastArrival() const;

    /// The number of requests so far. Any thread.
    std::uint64_t Arrivals() const { return m_arrivals; }

private:
    void Run();
    void Watch(int fd);
    bool Serve(Stream& client);

    Descriptor m_listener;
    Descriptor m_stop;
    Descriptor m_epoll;
    std::map<int, Stream> m_clients;
    IPCMessageEnvelope m_envelope;
    IPCMessageEnvelope m_reply;
    std::atomic<Clock::rep> m_lastArrival = 0;
    std::atomic<std::uint64_t> m_arrivals = 0;
    std::thread m_thread;
};

}  // namespace Bench
