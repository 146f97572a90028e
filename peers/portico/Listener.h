// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace PorticoApi {

using Protocol = boost::asio::ip::tcp;

/// A connection; with the executor by its own type, as a general one costs each step an
/// indirection.
using Socket = boost::asio::basic_stream_socket<Protocol, boost::asio::io_context::executor_type>;

/// A place among the connections that are served at a time; held by the connection.
using Share = std::shared_ptr<const int>;

/// Accepts connections at a port of the loopback addresses. One that is over the limit is closed
/// at once, with a log line for the first.
class Listener {
public:
    using Accepted = std::function<void(Socket, Share)>;

    Listener(boost::asio::io_context& context, Accepted accepted);

    /// Port 0: a free one. The port, or nothing and the reason in `why`. The IPv6 address joins if
    /// the machine has it.
    std::optional<std::uint16_t> Listen(std::uint16_t port, std::string& why);
    /// Accepts from here on.
    void Start();

private:
    struct Acceptor {
        explicit Acceptor(boost::asio::io_context& context) : acceptor(context), pause(context) {}
        boost::asio::basic_socket_acceptor<Protocol, boost::asio::io_context::executor_type>
            acceptor;
        boost::asio::steady_timer pause;
    };

    static boost::system::error_code Open(Acceptor& acceptor, const Protocol::endpoint& endpoint);
    void Accept(Acceptor& acceptor);
    void Admit(Socket socket);

    Acceptor m_four;
    Acceptor m_six;
    const Accepted m_accepted;
    const Share m_connections = std::make_shared<int>(0);
    bool m_isFull = false;
};

}  // namespace PorticoApi
