// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
#include <string>

namespace PorticoApi {

/// A blocking connection of one consumer. The test runner's timeout ends a wait without an answer.
class Consumer {
public:
    explicit Consumer(std::uint16_t port);

    void Send(const std::string& bytes);
    /// The bytes up to `end`, or those before the server closed.
    std::string ReadTo(const std::string& end);
    /// The next complete answer as "200 BODY", with its "Allow" in front of the body if it has one,
    /// or "closed".
    std::string Read();
    /// Sends a request with the headers of a browser that shows our page.
    void Request(const std::string& method, const std::string& path, const std::string& body = {},
                 const std::string& more = {});
    /// The same, and returns the answer.
    std::string Ask(const std::string& method, const std::string& path,
                    const std::string& body = {}, const std::string& more = {});
    void Close() { m_socket.close(); }

private:
    boost::asio::io_context m_context;
    boost::asio::ip::tcp::socket m_socket{m_context};
    const std::uint16_t m_port;
    std::string m_bytes;
};

}  // namespace PorticoApi
