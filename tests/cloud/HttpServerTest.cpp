// SPDX-License-Identifier: Apache-2.0

#include "cloud/HttpServer.h"

#include <thread>

#include "OwnCatalogue.h"
#include "portico/Consumer.h"

namespace Cloud {
namespace {

TEST(HttpServerTest, AnswersOnOneConnectionAndRefusesWhatIsNotTheProtocol)
{
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    boost::asio::io_context context;
    HttpServer server(context, service);
    std::string why;
    const auto port = server.Listen(0, why);
    ASSERT_TRUE(port) << why;
    EXPECT_FALSE(HttpServer(context, service).Listen(*port, why));
    std::thread thread([&context] { context.run(); });

    const PorticoApi::Consumer vanished(*port);
    PorticoApi::Consumer client(*port);
    const std::string good = R"({"operation":"version","identity":"me","vector":""})";
    const struct {
        const char* method;
        const char* path;
        std::string body;
        const char* answer;
    } rows[] = {
        {"POST", "/qsp/v1", good, "200 {"},
        {"POST", "/qsp/v1", "{", "400 "},
        {"POST", "/qsp/v2", good, "404 "},
        {"GET", "/qsp/v1", "", "405 "},
        {"POST", "/qsp/v1", std::string(kRequestBytes + 1, ' '), "413 "},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(client.Ask(row.method, row.path, row.body).starts_with(row.answer))
            << row.answer;
    }
    PorticoApi::Consumer confused(*port);
    confused.Send("nonsense\r\n\r\n");
    EXPECT_EQ(confused.Read().substr(0, 3), "400");
    context.stop();
    thread.join();
}

}  // namespace
}  // namespace Cloud
