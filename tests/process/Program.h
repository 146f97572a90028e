// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/TemporaryRoot.h"

namespace ProcessTests {

/// The arguments of a program.
using Arguments = std::vector<std::string>;

/// One of the project's real programs, started with a product folder as its root. Each wait has a
/// deadline, after which the test fails. The destructor kills a program that still runs.
class Program {
public:
    Program(const TemporaryRoot& folder, const std::string& name, const Arguments& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The next line of standard output that contains `part`; lines before it are skipped. Empty,
    /// and a test failure, if none comes.
    std::string WaitForLine(const std::string& part) { return WaitFor(m_out, part); }

    /// The same on standard error.
    std::string WaitForLog(const std::string& part) { return WaitFor(m_err, part); }

    void WriteLine(const std::string& line) const;
    void Signal(int number) const;

    /// The exit code, or the negative number of the signal that ended it.
    int WaitForEnd();

    /// Standard output and standard error as far as they have been read.
    const std::string& Output() const { return m_out.all; }
    const std::string& Log() const { return m_err.all; }

private:
    struct Stream {
        int fd = -1;
        std::string all;
        std::size_t taken = 0;
    };

    std::optional<std::string> TakeLine(Stream& stream, const std::string& part);
    std::string WaitFor(Stream& stream, const std::string& part);
    bool ReadMore(std::chrono::steady_clock::time_point deadline);

    std::string m_name;
    pid_t m_pid = -1;
    int m_in = -1;
    Stream m_out;
    Stream m_err;
};

/// Runs a program to its end and returns its standard output. Its exit code must be `code`.
std::string RunProgram(const TemporaryRoot& folder, const std::string& name,
                       const Arguments& arguments, int code = 0);

}  // namespace ProcessTests
