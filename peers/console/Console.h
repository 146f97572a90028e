// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "console/Console.pb.h"
#include "console/InputIF.h"
#include "console/ServiceConnection.h"

namespace OrluConsole {

/// Exit codes of the program.
enum ExitCode : int { kKnown = 0, kUnknown = 1, kRefused = 2, kUnreachable = 3 };

/// Sends lines to the service and prints its answers.
class Console {
public:
    /// `colour`: the output may contain colour codes.
    Console(ServiceConnection& service, bool colour) : m_service(service), m_colour(colour) {}

    /// Executes one line. Prints the answer on standard output, or the reason of a failure on
    /// standard error.
    ExitCode Execute(const std::vector<std::string>& words);

    /// Executes lines until the end of input, `exit` or a signal. Returns 0 after a signal, else
    /// the code of the last line.
    ExitCode ExecuteAll(InputIF& input);

    /// Completions of a text: commands, and `help` with a command behind it.
    std::vector<std::string> Complete(std::string_view text);

private:
    ExitCode Send(const std::vector<std::string>& words);
    ExitCode Help(std::string command);
    /// Fetches the commands once: the table does not change while a service runs.
    ServiceConnection::Outcome FetchCommands();
    ExitCode Failed(ServiceConnection::Outcome outcome);
    void Print(const std::string& text) const;

    ServiceConnection& m_service;
    bool m_colour;
    bool m_interrupted = false;
    Commands m_commands;
};

}  // namespace OrluConsole
