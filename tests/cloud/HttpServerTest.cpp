// SPDX-License-Identifier: Apache-2.0

#include "cloud/HttpServer.h"

#include "OwnCatalogue.h"

#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

namespace Cloud {
namespace {

using boost::asio::ip::tcp;

std::string Post(const std::string& target, const std::string& body)
{
    return "POST " + target +
           " HTTP/1.1\r\nHost: cloud\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

/// Sends bytes on one connection and gives the first line of the next answer; runs the server
/// meanwhile.
class Client {
public:
    Client(boost::asio::io_context& context, std::uint16_t port)
        : m_context(context), m_socket(context)
    {
        m_socket.connect({boost::asio::ip::address_v4::loopback(), port});
    }

    std::string Ask(const std::string& bytes)
    {
        boost::asio::write(m_socket, boost::asio::buffer(bytes));
        bool done = false;
        m_line.clear();
        boost::asio::async_read_until(
            m_socket, boost::asio::dynamic_buffer(m_line), "\r\n\r\n",
            [&done](boost::system::error_code, std::size_t) { done = true; });
        while (!done) {
            m_context.run_one();
        }
        return m_line.substr(0, m_line.find('\r'));
    }

private:
    boost::asio::io_context& m_context;
    tcp::socket m_socket;
    std::string m_line;
};

TEST(HttpServerTest, AnswersOnOneConnectionAndRefusesWhatIsNotTheProtocol)
{
    const auto catalogue = OpenOwn();
    CloudService service(*catalogue);
    boost::asio::io_context context;
    HttpServer server(context, service);
    std::string why;
    const auto port = server.Listen(0, why);
    ASSERT_TRUE(port) << why;
    HttpServer second(context, service);
    EXPECT_FALSE(second.Listen(*port, why));

    Client vanished(context, *port);
    Client client(context, *port);
    const std::string good = R"({"operation":"version","identity":"me","vector":""})";
    EXPECT_EQ(client.Ask(Post("/qsp/v1", good)), "HTTP/1.1 200 OK");
    EXPECT_EQ(client.Ask(Post("/qsp/v1", "{")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(client.Ask(Post("/qsp/v2", good)), "HTTP/1.1 404 Not Found");
    EXPECT_EQ(client.Ask("GET /qsp/v1 HTTP/1.1\r\n\r\n"), "HTTP/1.1 405 Method Not Allowed");
    EXPECT_EQ(client.Ask(Post("/qsp/v1", std::string(kRequestBytes + 1, ' '))),
              "HTTP/1.1 413 Payload Too Large");
    EXPECT_EQ(Client(context, *port).Ask("nonsense\r\n\r\n"), "HTTP/1.1 400 Bad Request");
}

}  // namespace
}  // namespace Cloud
