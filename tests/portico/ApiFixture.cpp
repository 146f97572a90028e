// SPDX-License-Identifier: Apache-2.0

#include "ApiFixture.h"

#include <boost/asio/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

namespace PorticoApi {

namespace asio = boost::asio;
using asio::ip::tcp;

Service::Service(std::uint16_t port)
{
    m_stream.next_layer().connect({asio::ip::address_v4::loopback(), port});
    m_stream.next_layer().set_option(tcp::no_delay(true));
    m_stream.handshake("127.0.0.1:" + std::to_string(port), "/link");
    Send(R"({"type":"hello","name":"service"})");
}

void Service::Send(const std::string& message, bool binary)
{
    boost::system::error_code ignored;
    m_stream.binary(binary);
    m_stream.write(asio::buffer(message), ignored);
}

void Service::Settle(const std::string& message)
{
    Send(message);
    Send(R"({"type":"request","id":99,"method":"GET","path":"/nothing"})");
    EXPECT_TRUE(Read().starts_with(R"({"type":"answer","id":99,"error":true})"));
}

std::string Service::Read()
{
    boost::system::error_code error;
    m_buffer.clear();
    m_stream.read(m_buffer, error);
    const auto bytes = m_buffer.cdata();
    return error ? "closed" : std::string(static_cast<const char*>(bytes.data()), bytes.size());
}

void ApiFixture::Start()
{
    unsetenv("ORLU_ROOT");
    m_context = std::make_unique<asio::io_context>(1);
    m_server = std::make_unique<Server>(*m_context, m_options, m_root.Path(), m_timeouts);
    std::string why;
    const auto port = m_server->Start(why);
    ASSERT_TRUE(port) << why;
    m_options.port = *port;
    m_thread = std::thread([this] { m_context->run(); });
}

void ApiFixture::Stop()
{
    if (m_thread.joinable()) {
        m_context->stop();
        m_thread.join();
    }
    m_server.reset();
    m_context.reset();
}

}  // namespace PorticoApi
