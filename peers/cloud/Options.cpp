// SPDX-License-Identifier: Apache-2.0

#include "cloud/Options.h"

#include "common/CommandLine.h"
#include "common/ServerProgram.h"

#include <CLI/CLI.hpp>

namespace Cloud {

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    Options options;
    CLI::App app("The vendor's cloud: devices, brands, models and code sets", "UeiCloud");
    app.set_version_flag("--version", std::string("UeiCloud ") + TRELLAN_VERSION);
    Peers::AddPortOption(app, options.port);
    app.add_option("--catalogue", options.catalogue, "In place of the small one beside the program")
        ->type_name("FILE");
    app.add_option("--script", options.script, "Answer otherwise than normal: {\"replies\": [...]}")
        ->type_name("FILE");
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return std::nullopt;
    }
    return options;
}

}  // namespace Cloud
