// SPDX-License-Identifier: Apache-2.0

#include "common/ServerProgram.h"
#include "orlu/DPrint.h"
#include "portico/Options.h"
#include "portico/Server.h"

// NOLINTNEXTLINE(bugprone-exception-escape): only for want of memory
int main(int argc, char** argv)
{
    int exitCode = 0;
    const auto options = PorticoApi::ParseOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    const std::string root = Peers::PrepareServer();
    DPrint::ReadLevel();
    boost::asio::io_context context(1);
    PorticoApi::Server server(context, *options, root, {});
    return Peers::RunServer("PorticoServer", context, options->port,
                            [&server](std::string& why) { return server.Start(why); });
}
