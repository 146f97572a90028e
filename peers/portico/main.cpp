// SPDX-License-Identifier: Apache-2.0

#include "orlu/DPrint.h"
#include "orlu/Process.h"
#include "orlu/SystemUtils.h"
#include "portico/EventLog.h"
#include "portico/EventStream.h"
#include "portico/HttpSession.h"
#include "portico/Listener.h"
#include "portico/Options.h"
#include "portico/Product.h"
#include "portico/PublishedFiles.h"
#include "portico/Resources.h"
#include "portico/WebFolder.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace {

using namespace PorticoApi;

int Fail(const std::string& why)
{
    std::fprintf(stderr, "PorticoServer: %s\n", why.c_str());
    return 1;
}

/// False and the reason in `why`.
bool ReadValues(Product& product, const std::string& path, std::string& why)
{
    const auto text = SystemUtils::ReadFile(path);
    if (!text) {
        why = path + ": it cannot be read";
        return false;
    }
    if (!product.ReadValues(*text, why)) {
        why = path + ": " + why;
        return false;
    }
    return true;
}

int Serve(const Options& options, const std::string& root)
{
    boost::asio::io_context context(1);
    Resources resources;
    EventStreams events;
    PublishedFiles files(context);
    EventLog log;
    const WebFolder web(options.web);
    Site site{resources, events, files, web};
    Listener listener(context, [&site](boost::asio::ip::tcp::socket socket, const Share& share) {
        ServeConnection(std::move(socket), share, site);
    });
    std::string why;
    const auto port = listener.Listen(options.port, why);
    if (!port) {
        return Fail(why);
    }
    site.port = *port;
    Product product(resources, files, log, root);
    product.PutUp(*port);
    product.PutUpDataCollection();
    if (!options.resources.empty() && !ReadValues(product, options.resources, why)) {
        return Fail(why);
    }
    if (!options.events.empty() && !log.Open(options.events)) {
        return Fail(options.events + ": " + std::generic_category().message(errno));
    }
    resources.SetListener(
        [&events](const std::string& path, const std::string& json) { events.Tell(path, json); });
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&context](boost::system::error_code, int) { context.stop(); });
    listener.Start();
    if (options.port == 0) {
        std::printf("port %u\n", static_cast<unsigned>(*port));
    }
    Orlu::SayReady();
    context.run();
    return 0;
}

}  // namespace

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
