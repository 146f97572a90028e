// SPDX-License-Identifier: Apache-2.0

#include "common/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <string>

namespace Peers {

bool ParseCommandLine(CLI::App& app, int argc, const char* const* argv, int& exitCode)
{
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::Success& asked) {
        exitCode = app.exit(asked);
    } catch (const CLI::ParseError& error) {
        std::string what = error.what();
        std::ranges::replace(what, '\n', ' ');
        std::cerr << app.get_name() << ": " << what << '\n';
        exitCode = kUsage;
    }
    return false;
}

}  // namespace Peers
