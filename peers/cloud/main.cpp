// SPDX-License-Identifier: Apache-2.0

#include "cloud/Catalogue.h"
#include "cloud/CloudService.h"
#include "cloud/HttpServer.h"
#include "cloud/Options.h"
#include "common/ServerProgram.h"
#include "orlu/SystemUtils.h"

#include <boost/asio/io_context.hpp>

#include <filesystem>
#include <utility>

namespace {

constexpr const char* kProgram = "UeiCloud";

/// Beside the folder bin: where it was installed, else where it was built.
std::string OwnCatalogue()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto prefix = program.parent_path().parent_path();
    const auto own = std::filesystem::path("catalogue") / "own.sqlite";
    const auto installed = prefix / "share" / "trellan" / own;
    return (std::filesystem::exists(installed, error) ? installed : prefix / own).string();
}

int Serve(const Cloud::Options& options)
{
    const std::string path = options.catalogue.empty() ? OwnCatalogue() : options.catalogue;
    std::string why;
    const auto catalogue = Cloud::Catalogue::Open(path, why);
    if (!catalogue) {
        return Peers::Fail(kProgram, path + ": " + why);
    }
    Cloud::ReplyScript script;
    if (!options.script.empty()) {
        const auto text = SystemUtils::ReadFile(options.script);
        if (!text) {
            return Peers::Fail(kProgram, options.script + ": it cannot be read");
        }
        if (!script.Load(*text, why)) {
            return Peers::Fail(kProgram, options.script + ": " + why);
        }
    }
    Cloud::CloudService service(*catalogue, std::move(script));
    boost::asio::io_context context(1);
    Cloud::HttpServer server(context, service);
    return Peers::RunServer(
        kProgram, context, options.port,
        [&server, &options](std::string& reason) { return server.Listen(options.port, reason); });
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): only for want of memory
int main(int argc, char** argv)
{
    int exitCode = 0;
    const auto options = Cloud::ParseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    Peers::PrepareServer();
    return Serve(*options);
}
