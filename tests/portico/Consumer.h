// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <cstdint>
#include <string>

namespace PorticoApi {

/// A blocking connection of one consumer; a wait without an end is the runner's to end.
class Consumer {
public:
    explicit Consumer(std::uint16_t port);

    void Send(const std::string& bytes);
    /// What comes up to `end`; shorter, if the server closes before.
    std::string ReadTo(const std::string& end);
    /// The next whole answer: "200 BODY", with "Allow" before the body if it has one; "closed".
    std::string Read();
    /// A request with the head that a browser of our own page would send.
    void Request(const std::string& method, const std::string& path, const std::string& body = {},
                 const std::string& more = {});
    /// The same, and its answer.
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
