// SPDX-License-Identifier: Apache-2.0

#include "orlu/DPrint.h"
#include "orlu/Process.h"
#include "orlu/SystemUtils.h"
#include "portico/Options.h"
#include "portico/Server.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

int Fail(const std::string& why)
{
    std::fprintf(stderr, "PorticoServer: %s\n", why.c_str());
    return 1;
}

int Serve(const PorticoApi::Options& options, const std::string& root)
{
    boost::asio::io_context context(1);
    PorticoApi::Server server(context, options, root, {});
    std::string why;
    const auto port = server.Start(why);
    if (!port) {
        return Fail(why);
    }
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&context](boost::system::error_code, int) { context.stop(); });
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
    const auto options = PorticoApi::ParseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    // Paths on a command line mean what they say, in whatever root a product is running.
    const std::string root = SystemUtils::RootedPath("/");
    unsetenv("ORLU_ROOT");
    DPrint::ReadLevel();
    std::signal(SIGPIPE, SIG_IGN);
    return Serve(*options, root.substr(0, root.size() - 1));
}
