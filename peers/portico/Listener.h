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

/// A connection. The executor has its concrete type, because the general type costs an indirection
/// for each operation.
using Socket = boost::asio::basic_stream_socket<Protocol, boost::asio::io_context::executor_type>;

/// Held by each connection; its use count is the number of connections and one.
using Share = std::shared_ptr<const int>;

/// Accepts connections at a port of the loopback addresses. A connection above the limit is closed
/// at once; the first one is logged.
class Listener {
public:
    using Accepted = std::function<void(Socket, Share)>;

    Listener(boost::asio::io_context& context, Accepted accepted);

    /// Port 0 means any free port. Returns the port, or nothing and the reason in `why`. Also
    /// listens at the IPv6 address if the machine has one.
    std::optional<std::uint16_t> Listen(std::uint16_t port, std::string& why);
    /// Starts to accept connections.
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
