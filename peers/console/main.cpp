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

bool IsSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool MayColour()
{
    const char* terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) == 1 && !IsSet("NO_COLOR") && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

/// In the user's own folder of such things; empty where there is none.
std::string HistoryPath()
{
    if (IsSet("XDG_STATE_HOME")) {
        return std::string(std::getenv("XDG_STATE_HOME")) + "/orlu-console/history";
    }
    return IsSet("HOME") ? std::string(std::getenv("HOME")) + "/.local/state/orlu-console/history"
                         : "";
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
