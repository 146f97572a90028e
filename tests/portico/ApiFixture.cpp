// SPDX-License-Identifier: Apache-2.0

#include "ApiFixture.h"

#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

namespace PorticoApi {

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

std::string ValueOf(const std::string& head, const std::string& name)
{
    const auto begin = head.find("\r\n" + name + ": ");
    if (begin == std::string::npos) {
        return {};
    }
    const auto value = begin + name.size() + 4;
    return head.substr(value, head.find("\r\n", value) - value);
}

}  // namespace

Consumer::Consumer(std::uint16_t port) : m_port(port)
{
    m_socket.connect({asio::ip::address_v4::loopback(), port});
}

void Consumer::Send(const std::string& bytes)
{
    boost::system::error_code ignored;
    asio::write(m_socket, asio::buffer(bytes), ignored);
}

std::string Consumer::ReadTo(const std::string& end)
{
    boost::system::error_code error;
    const auto size = asio::read_until(m_socket, asio::dynamic_buffer(m_bytes), end, error);
    const auto text = m_bytes.substr(0, error ? m_bytes.size() : size);
    m_bytes.erase(0, text.size());
    return text;
}

std::string Consumer::Read()
{
    const std::string head = ReadTo("\r\n\r\n");
    if (head.empty()) {
        return "closed";
    }
    const auto length =
        static_cast<std::size_t>(std::atoi(ValueOf(head, "Content-Length").c_str()));
    boost::system::error_code error;
    while (m_bytes.size() < length && !error) {
        char more[4096];
        const auto size = m_socket.read_some(asio::buffer(more), error);
        m_bytes.append(more, size);
    }
    const std::string body = m_bytes.substr(0, length);
    m_bytes.erase(0, body.size());
    const std::string allow = ValueOf(head, "Allow");
    return head.substr(9, 3) + " " + (allow.empty() ? "" : allow + " ") + body;
}

std::string Consumer::Ask(const std::string& method, const std::string& path,
                          const std::string& body, const std::string& more)
{
    const std::string own = "localhost:" + std::to_string(m_port);
    Send(method + " " + path + " HTTP/1.1\r\nHost: " + own + "\r\nOrigin: http://" + own + "\r\n" +
         (body.empty() ? "" : "Content-Type: application/json\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n" + more + "\r\n" + body);
    return Read();
}

Service::Service(std::uint16_t port, const std::string& name)
{
    m_stream.next_layer().connect({asio::ip::address_v4::loopback(), port});
    m_stream.next_layer().set_option(tcp::no_delay(true));
    m_stream.handshake("127.0.0.1:" + std::to_string(port), "/link");
    Send(R"({"type":"hello","name":")" + name + "\"}");
}

void Service::Send(const std::string& message)
{
    boost::system::error_code ignored;
    m_stream.text(true);
    m_stream.write(asio::buffer(message), ignored);
}

void Service::SendBinary(const std::string& bytes)
{
    m_stream.binary(true);
    m_stream.write(asio::buffer(bytes));
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
    m_server = std::make_unique<Server>(*m_context, m_options, m_root.Path(), m_patience);
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
