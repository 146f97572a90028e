// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "console/Console.pb.h"
#include "console/InputIF.h"
#include "console/ServiceConnection.h"

namespace OrluConsole {

/// How the program ends.
enum ExitCode : int { kKnown = 0, kUnknown = 1, kRefused = 2, kUnreachable = 3 };

/// Takes lines to the service and its answers to the user.
class Console {
public:
    /// `colour`: standard output may have some.
    Console(ServiceConnection& service, bool colour) : m_service(service), m_colour(colour) {}

    /// Carries out one line and prints what came of it: the answer on standard output, what kept
    /// it from being one on standard error.
    ExitCode Execute(const std::vector<std::string>& words);

    /// Carries out lines to their end, to `exit` or to a signal, which gives 0; else the code of
    /// the last one.
    ExitCode ExecuteAll(InputIF& input);

    /// What a text may go on to: a command, or `help` with one behind it.
    std::vector<std::string> Complete(std::string_view text);

private:
    ExitCode Send(const std::vector<std::string>& words);
    ExitCode Help(std::string command);
    /// Once: the table does not change while a service runs.
    ServiceConnection::Outcome FetchCommands();
    ExitCode Failed(ServiceConnection::Outcome outcome);
    void Print(const std::string& text) const;

    ServiceConnection& m_service;
    bool m_colour;
    bool m_interrupted = false;
    Commands m_commands;
};

}  // namespace OrluConsole
