// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Bench {

/// Memory of a process, in KiB.
struct Memory {
    std::uint64_t rss = 0;
    std::uint64_t pss = 0;
    std::uint64_t dirty = 0;
};

/// A process under a root of its own, with its log in the root's file `log`. Ends with the object.
class Program {
public:
    /// `command` is a program's path and its arguments. Throws `std::system_error` if it can't run.
    /// `settings` are further lines of the environment, "NAME=value".
    Program(const std::vector<std::string>& command, const std::filesystem::path& root,
            int logLevel, const std::vector<std::string>& settings = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until the process ends. Throws `std::runtime_error` if its exit code is not 0.
    void Join();

    /// Asks the process to end and waits for the end.
    void Terminate();

    /// User and system time of all threads of the process.
    std::chrono::nanoseconds CpuTime() const;

    Memory ReadMemory() const;

    /// The number of voluntary context switches of all threads.
    std::uint64_t CountSleeps() const;

private:
    pid_t m_pid = -1;
};

/// The folders that a program needs below its root, and a store that holds the code set T2051.
void LayOutRoot(const std::filesystem::path& root);

}  // namespace Bench
