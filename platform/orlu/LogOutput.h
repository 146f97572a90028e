// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace Orlu {

/// Standard error as the log uses it: a reader that does not read never blocks a task. Any thread.
class LogOutput {
public:
    /// The process's own, on descriptor 2.
    static LogOutput& Get();

    /// Writes to `fd`, which stays the caller's.
    explicit LogOutput(int fd);
    ~LogOutput();
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// Whole lines, each with its line feed. What cannot be written now waits for the next call, up
    /// to 64 KiB; further lines are dropped, and one line says how many once the reader reads
    /// again.
    void Write(std::string_view lines);

private:
    enum class Kind { Plain, NonBlocking, Socket, Polled };

    void Open();
    bool Flush();
    long WriteSome();
    bool WaitOnce() const;

    std::mutex m_mutex;
    int m_stderr;
    int m_fd = -1;
    Kind m_kind = Kind::Plain;
    bool m_stuck = false;
    std::string m_rest;
    std::size_t m_dropped = 0;
};

}  // namespace Orlu
