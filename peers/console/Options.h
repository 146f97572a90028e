// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace OrluConsole {

/// The words of one command. Without words the program shows a prompt.
using CommandWords = std::vector<std::string>;

/// Reads the command line. Nothing if the program is to end with `exitCode`: help or version have
/// been printed (0), or one line on standard error says what is wrong (2).
std::optional<CommandWords> ParseOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace OrluConsole
