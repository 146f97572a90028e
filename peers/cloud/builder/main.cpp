// SPDX-License-Identifier: Apache-2.0

// Builds a catalogue from sources.

#include "cloud/builder/CatalogueWriter.h"
#include "cloud/builder/SourceText.h"
#include "common/CommandLine.h"
#include "orlu/SystemUtils.h"

#include <google/protobuf/stubs/logging.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

int Fail(const std::string& path, const std::string& why)
{
    std::string line = path + ": " + why;
    std::ranges::replace(line, '\n', ' ');
    std::cerr << "CatalogueBuilder: " << line << '\n';
    return 1;
}

int Build(const std::string& out, const std::vector<std::string>& sources)
{
    Cloud::Collection collection;
    std::string why;
    for (const std::string& path : sources) {
        const auto text = SystemUtils::ReadFile(path);
        if (!text) {
            return Fail(path, "it cannot be read");
        }
        const std::string folder = std::filesystem::path(path).parent_path().string();
        if (!Cloud::AddSource(*text, folder.empty() ? "." : folder, collection, why)) {
            return Fail(path, why);
        }
    }
    return Cloud::WriteCatalogue(collection, out, why) ? 0 : Fail(out, why);
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): only for want of memory
int main(int argc, char** argv)
{
    // SystemUtils puts ORLU_ROOT in front of paths; paths of a command line are used as given.
    unsetenv("ORLU_ROOT");
    // protobuf warns of two pairs of key names that differ only by case or by an underscore.
    google::protobuf::SetLogHandler(nullptr);
    CLI::App app("Makes the cloud's catalogue out of sources", "CatalogueBuilder");
    app.set_version_flag("--version", std::string("CatalogueBuilder ") + TRELLAN_VERSION);
    std::string out;
    std::vector<std::string> sources;
    app.add_option("OUT", out, "The catalogue, replaced as a whole")->required();
    app.add_option("SOURCE", sources, "JSON; the first word on anything counts")->required();
    int exitCode = 0;
    if (!Peers::ParseCommandLine(app, argc, argv, exitCode)) {
        return exitCode;
    }
    return Build(out, sources);
}
