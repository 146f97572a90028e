// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstdint>
#include <functional>

namespace Portico {

/// A service's WebSocket. The executor has its own type, because a general one costs each step an
/// indirection. Without compression, which brings nothing on one machine.
using LinkStream = boost::beast::websocket::stream<
    boost::asio::basic_stream_socket<boost::asio::ip::tcp, boost::asio::io_context::executor_type>,
    false>;

/// Asks the local API at `port`, to which the stream is connected, for a link. `done` is called
/// once, after this function has returned.
void ShakeHands(LinkStream& stream, std::uint16_t port,
                std::function<void(boost::system::error_code)> done);

}  // namespace Portico
