// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "benchmarks/KeyClient.h"
#include "benchmarks/Program.h"
#include "benchmarks/Stream.h"

namespace Bench {

/// The device of lircd's `default` driver: a socket, read on a thread.
class PulseSink {
public:
    explicit PulseSink(const std::string& path);
    ~PulseSink();
    PulseSink(const PulseSink&) = delete;
    PulseSink& operator=(const PulseSink&) = delete;

    /// From any thread.
    Clock::time_point LastArrival() const;
    std::uint64_t Bytes() const { return m_bytes; }

private:
    void Run();

    Descriptor m_listener;
    Descriptor m_stop;
    std::atomic<Clock::rep> m_lastArrival = 0;
    std::atomic<std::uint64_t> m_bytes = 0;
    std::thread m_thread;
};

/// A client, lircd and its device, with a remote control whose gap is so short that lircd never
/// sleeps before a key. One key has been sent.
class LircChain {
public:
    /// `folder` is created anew. Throws `std::runtime_error` if lircd fails.
    LircChain(const std::filesystem::path& folder, const std::string& lircd);

    KeyClient::Times SendKey();
    Clock::duration SendKeys(std::size_t count, std::size_t window);

    const Program& Process() const { return m_program; }
    /// From exec to the client's connection.
    Clock::duration Start() const { return m_start; }

private:
    static std::vector<std::string> LayOut(const std::filesystem::path& folder,
                                           const std::string& lircd);
    std::size_t TakeReplies();

    std::vector<std::string> m_command;
    PulseSink m_sink;
    Clock::time_point m_begin = Clock::now();
    Program m_program;
    Stream m_stream;
    Clock::duration m_start = Clock::now() - m_begin;
    std::string m_in;
    std::uint64_t m_frameBytes = 0;
};

}  // namespace Bench
