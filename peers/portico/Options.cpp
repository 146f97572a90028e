// SPDX-License-Identifier: Apache-2.0

#include "portico/Options.h"

#include "common/CommandLine.h"
#include "common/ServerProgram.h"

#include <CLI/CLI.hpp>

namespace PorticoApi {

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    Options options;
    CLI::App app("The product's local API", "PorticoServer");
    app.set_version_flag("--version", std::string("PorticoServer ") + TRELLAN_VERSION);
    Peers::AddPortOption(app, options.port);
    app.add_option("--resources", options.resources,
                   "First values of the product's resources: {\"/network/status\": {...}, ...}; "
                   "null: not ready")
        ->type_name("FILE");
    app.add_option("--events", options.events, "Add each usage event to it as a JSON line")
        ->type_name("FILE");
    app.add_option("--web", options.web, "Serve the files of this folder too")->type_name("DIR");
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return std::nullopt;
    }
    return options;
}

}  // namespace PorticoApi
