// SPDX-License-Identifier: Apache-2.0

#include "Consumer.h"

#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>

#include <algorithm>
#include <cstdlib>

namespace PorticoApi {

namespace asio = boost::asio;

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
    auto text = m_bytes.substr(0, error ? m_bytes.size() : size);
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

void Consumer::Request(const std::string& method, const std::string& path, const std::string& body,
                       const std::string& more)
{
    const std::string own = "localhost:" + std::to_string(m_port);
    Send(method + " " + path + " HTTP/1.1\r\nHost: " + own + "\r\nOrigin: http://" + own + "\r\n" +
         (body.empty() ? "" : "Content-Type: application/json\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n" + more + "\r\n" + body);
}

std::string Consumer::Ask(const std::string& method, const std::string& path,
                          const std::string& body, const std::string& more)
{
    Request(method, path, body, more);
    return Read();
}

}  // namespace PorticoApi
