// SPDX-License-Identifier: Apache-2.0

#include "cloud/Catalogue.h"
#include "cloud/CloudService.h"
#include "cloud/HttpServer.h"
#include "cloud/Options.h"
#include "orlu/Process.h"
#include "orlu/SystemUtils.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace {

int Fail(const std::string& why)
{
    std::fprintf(stderr, "UeiCloud: %s\n", why.c_str());
    return 1;
}

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
        return Fail(path + ": " + why);
    }
    Cloud::ReplyScript script;
    if (!options.script.empty()) {
        const auto text = SystemUtils::ReadFile(options.script);
        if (!text) {
            return Fail(options.script + ": it cannot be read");
        }
        if (!script.Load(*text, why)) {
            return Fail(options.script + ": " + why);
        }
    }
    Cloud::CloudService service(*catalogue, std::move(script));
    boost::asio::io_context context(1);
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&context](boost::system::error_code, int) { context.stop(); });
    Cloud::HttpServer server(context, service);
    const auto port = server.Listen(options.port, why);
    if (!port) {
        return Fail(why);
    }
    if (options.port == 0) {
        std::printf("port %u\n", static_cast<unsigned>(*port));
    }
    Orlu::SayReady();
    context.run();
    return 0;
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
    // Paths on a command line mean what they say, in whatever root a product is running.
    unsetenv("ORLU_ROOT");
    std::signal(SIGPIPE, SIG_IGN);
    return Serve(*options);
}
