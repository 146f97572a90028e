// SPDX-License-Identifier: Apache-2.0

#include "cloud/Options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace Cloud {

namespace {

constexpr int kUsage = 2;

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv, int& exitCode)
{
    Options options;
    CLI::App app("The vendor's cloud: devices, brands, models and code sets", "UeiCloud");
    app.set_version_flag("--version", std::string("UeiCloud ") + TRELLAN_VERSION);
    app.add_option("--port", options.port,
                   "Of the loopback address; 0: a free one, said as `port N`")
        ->capture_default_str()
        ->type_name("PORT");
    app.add_option("--catalogue", options.catalogue, "In place of the small one beside the program")
        ->type_name("FILE");
    app.add_option("--script", options.script, "Answer otherwise than normal: {\"replies\": [...]}")
        ->type_name("FILE");
    try {
        app.parse(argc, argv);
        return options;
    } catch (const CLI::Success& asked) {
        exitCode = app.exit(asked);
    } catch (const CLI::ParseError& error) {
        std::string what = error.what();
        std::ranges::replace(what, '\n', ' ');
        std::cerr << "UeiCloud: " << what << '\n';
        exitCode = kUsage;
    }
    return std::nullopt;
}

}  // namespace Cloud
