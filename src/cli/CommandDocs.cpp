// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdio>
#include <string>

#include "cli/Trellan_ServiceCommandLine.h"

namespace {

constexpr const char* kHead =
    "# The engineers' commands\n"
    "\n"
    "Made by `scripts/command-docs` from the service's own table; `./test` fails where they differ."
    "\n"
    "\n"
    "Typed at `OrluConsole`, or given to it as words: `OrluConsole trs get_version`. A key is a\n"
    "decimal number, hexadecimal behind 0x, octal behind a leading zero; every other number is\n"
    "decimal, and text that is none counts as 0. A line has at most 4096 bytes and 16 words.\n"
    "\n"
    "One command runs at a time, for all consoles, and waits without limit for a blaster or a "
    "local\n"
    "API that does not answer: others wait behind it. \"Command failed\" means that no answer can\n"
    "come any more, because the link to the LPM service is down or was lost. A load\n"
    "and `trs get_keymap` learn of it after 30 s.\n";

/// The help text, indented, without the tabs that place it under its heading.
std::string Indented(std::string text)
{
    std::erase(text, '\t');
    std::string indented = "    ";
    for (const char next : text) {
        indented += next;
        if (next == '\n') {
            indented += "    ";
        }
    }
    return indented;
}

}  // namespace

int main()
{
    std::fputs(kHead, stdout);
    for (const auto& row : TrellanService::Trellan_ServiceCommandLine::DescribeCommands()) {
        std::printf("\n## %s\n\n%s\n", row->command.c_str(), Indented(row->help).c_str());
    }
    return 0;
}
