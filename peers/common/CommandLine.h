// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace Peers {

/// The exit code for a command line that can't be read.
inline constexpr int kUsage = 2;

/// Reads a program's command line into what `app` was given. False if the program is to end with
/// `exitCode`: help or version have been printed (0), or one line on standard error, behind the
/// program's name, says what is wrong (`kUsage`).
bool ParseCommandLine(CLI::App& app, int argc, const char* const* argv, int& exitCode);

}  // namespace Peers
