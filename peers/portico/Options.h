// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace PorticoApi {

/// What the command line asks for; an empty path is not given.
struct Options {
    std::uint16_t port = 8084;  ///< 0: a free one
    std::string resources;
    std::string events;
    std::string web;
};

/// Reads the command line. Nothing if the program is to end with `exitCode`: help or version have
/// been printed (0), or one line on standard error says what is wrong (2).
std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace PorticoApi
