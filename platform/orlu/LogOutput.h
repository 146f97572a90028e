// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace Orlu {

/// The log's output on standard error: a reader that stops reading never blocks a task for long.
/// Any thread.
class LogOutput {
public:
    /// The output of the process, on descriptor 2.
    static LogOutput& Get();

    /// Writes to `fd`, which stays the caller's property.
    explicit LogOutput(int fd);
    ~LogOutput();
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// Writes whole lines, each with its line feed. What cannot be written now waits for the next
    /// call, up to 64 KiB. Lines beyond that are dropped; one line reports their number once the
    /// reader goes on.
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
