// SPDX-License-Identifier: Apache-2.0

#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>

#include <unistd.h>

#include "console/Console.h"
#include "console/LineEditor.h"
#include "console/Options.h"
#include "console/PlainInput.h"
#include "orlu/Network.h"

namespace {

constexpr const char* kServiceName = "TrellanServiceCommandLineClient";

/// The value of a variable; empty if it is not set.
std::string Environment(const char* variable)
{
    const char* value = std::getenv(variable);
    return value == nullptr ? "" : value;
}

bool MayColour()
{
    const std::string terminal = Environment("TERM");
    return ::isatty(STDOUT_FILENO) == 1 && Environment("NO_COLOR").empty() && !terminal.empty() &&
           terminal != "dumb";
}

/// A path in the user's folder for state files; empty if there is no such folder.
std::string HistoryPath()
{
    constexpr const char* kFile = "/orlu-console/history";
    if (const std::string state = Environment("XDG_STATE_HOME"); !state.empty()) {
        return state + kFile;
    }
    const std::string home = Environment("HOME");
    return home.empty() ? "" : home + "/.local/state" + kFile;
}

OrluConsole::ExitCode Prompt(OrluConsole::Console& console, OrluConsole::Signals& signals)
{
    if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDOUT_FILENO) != 1) {
        OrluConsole::PlainInput input(STDIN_FILENO, signals);
        return console.ExecuteAll(input);
    }
    OrluConsole::LineEditor editor(
        signals, HistoryPath(), MayColour(),
        [&console](std::string_view text) { return console.Complete(text); });
    const auto code = console.ExecuteAll(editor);
    editor.KeepHistory();
    return code;
}

}  // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "");
    int exitCode = 0;
    const auto words = OrluConsole::ParseOptions(argc, argv, exitCode);
    if (!words) {
        return exitCode;
    }
    OrluConsole::Signals signals;
    OrluConsole::ServiceConnection service(IPCDirectory::Get().Lookup(kServiceName).Path(),
                                           signals);
    OrluConsole::Console console(service, MayColour());
    return words->empty() ? Prompt(console, signals) : console.Execute(*words);
}
