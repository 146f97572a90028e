// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

namespace Lpm {

/// The options of the command line. An empty path was not given.
struct Options {
    std::string record;
    std::string script;
    std::string codesets;
    std::string devices;
    std::string lirc;  ///< the device that sends frames; empty: none
    std::string cec;   ///< the kernel's device; empty: a simulated bus
    std::string render;
    bool toggle = false;
    unsigned repeats = 0;
};

/// Reads the command line. Nothing if the program is to end with `exitCode`: help or version have
/// been printed (0), or one line on standard error says what is wrong (2).
std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace Lpm
