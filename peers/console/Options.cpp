// SPDX-License-Identifier: Apache-2.0

#include "console/Options.h"

#include "common/CommandLine.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace OrluConsole {

namespace {

constexpr const char* kFooter =
    "COMMAND is one of the service's, such as `trs get_version`; --help comes before it.\n"
    "Without COMMAND a prompt: line editing, history, completion with the tab key, `help`,\n"
    "`help COMMAND`, and `exit` or the end of input to leave. Words with blanks stand in quotes.\n"
    "Exit status: 0 a known command, 1 an unknown one, 2 a line that can't be one, 3 the service\n"
    "can't be reached; of a prompt that of its last line.";

}  // namespace

std::optional<CommandWords> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    CLI::App app("The engineer's terminal: sends commands to TrellanService, prints the answers",
                 "OrluConsole");
    app.footer(kFooter);
    app.set_version_flag("--version", std::string("OrluConsole ") + CONSOLE_VERSION);
    // Words behind the first one belong to the command, even if they look like options.
    app.prefix_command();
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return std::nullopt;
    }
    CommandWords words = app.remaining();
    if (!words.empty() && words.front().starts_with('-')) {
        std::cerr << "OrluConsole: there is no option " << words.front() << '\n';
        exitCode = Peers::kUsage;
        return std::nullopt;
    }
    return words;
}

}  // namespace OrluConsole
