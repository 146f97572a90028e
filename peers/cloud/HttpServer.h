// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "cloud/CloudService.h"

namespace Cloud {

/// Serves `POST /qsp/v1` on the loopback address. A connection may send any number of requests. It
/// is closed if it is idle or slow for too long, and at once if there are too many connections.
/// Everything runs on the context's thread.
class HttpServer {
public:
    static constexpr const char* kTarget = "/qsp/v1";

    /// Both are borrowed. The context must not run after the server has been destroyed.
    HttpServer(boost::asio::io_context& context, CloudService& service);

    /// Port 0 means any free port. Returns the port, or nothing and the reason in `why`.
    std::optional<std::uint16_t> Listen(std::uint16_t port, std::string& why);

private:
    void Accept();

    CloudService& m_service;
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_pause;
    /// Each connection holds a copy, so the use count is the number of connections and one.
    std::shared_ptr<int> m_connections = std::make_shared<int>(0);
};

}  // namespace Cloud
