// SPDX-License-Identifier: Apache-2.0

#include "common/ServerProgram.h"

#include "orlu/Process.h"
#include "orlu/SystemUtils.h"

#include <CLI/CLI.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace Peers {

void AddPortOption(CLI::App& app, std::uint16_t& port)
{
    app.add_option("--port", port, "Of the loopback address; 0: a free one, said as `port N`")
        ->capture_default_str()
        ->type_name("PORT");
}

std::string PrepareServer()
{
    const std::string root = SystemUtils::RootedPath("/");
    unsetenv("ORLU_ROOT");
    std::signal(SIGPIPE, SIG_IGN);
    return root.substr(0, root.size() - 1);
}

int Fail(const char* program, const std::string& why)
{
    std::fprintf(stderr, "%s: %s\n", program, why.c_str());
    return 1;
}

int RunServer(const char* program, boost::asio::io_context& context, std::uint16_t asked,
              const StartServer& start)
{
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&context](boost::system::error_code, int) { context.stop(); });
    std::string why;
    const auto port = start(why);
    if (!port) {
        return Fail(program, why);
    }
    if (asked == 0) {
        std::printf("port %u\n", static_cast<unsigned>(*port));
    }
    Orlu::SayReady();
    context.run();
    return 0;
}

}  // namespace Peers
