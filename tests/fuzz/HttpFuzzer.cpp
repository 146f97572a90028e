// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <sys/socket.h>
#include <unistd.h>

#include "orlu/DPrint.h"
#include "portico/ConnectionContext.h"
#include "portico/EventLog.h"
#include "portico/EventStream.h"
#include "portico/HttpSession.h"
#include "portico/Product.h"
#include "portico/PublishedFiles.h"
#include "portico/WebFolder.h"
#include "support/TemporaryRoot.h"

namespace {

using namespace PorticoApi;

constexpr std::uint16_t kPort = 8084;

void RequireAnswer(int consumer)
{
    std::array<char, 16> begin{};
    const ssize_t got = recv(consumer, begin.data(), begin.size(), MSG_DONTWAIT);
    if (got > 0 &&
        !std::string(begin.data(), static_cast<std::size_t>(got)).starts_with("HTTP/1.")) {
        __builtin_trap();
    }
}

}  // namespace

// The bytes that a consumer of the local API sends, in two pieces, before it closes. All that it
// gets back begins as an HTTP answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    DPrint::SetLevel(0);
    boost::asio::io_context loop;
    Resources resources;
    EventStreams events;
    PublishedFiles files(loop);
    const WebFolder web(root.Path());
    EventLog log;
    Product product(resources, files, log, root.Path());
    const ConnectionContext context{resources, events, files, web, {}, kPort};
    product.AddResources(kPort);
    resources.SetListener(
        [&events](const std::string& path, const std::string& json) { events.Notify(path, json); });
    std::array<int, 2> pair{};
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()) != 0) {
        return 0;
    }
    ServeConnection(Socket(loop, Protocol::v4(), pair[0]), std::make_shared<int>(0), context);
    const std::size_t half = size == 0 ? 0 : data[0] % size;
    for (const auto& [from, to] : {std::pair(std::size_t{0}, half), std::pair(half, size)}) {
        send(pair[1], data + from, to - from, MSG_DONTWAIT | MSG_NOSIGNAL);
        loop.restart();
        loop.poll();
    }
    RequireAnswer(pair[1]);
    close(pair[1]);
    loop.restart();
    loop.poll();
    return 0;
}
