// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Consumer.h"
#include "portico/Server.h"
#include "support/TemporaryRoot.h"

#include <gtest/gtest.h>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace PorticoApi {

/// A service at the end of a link, driven by the test.
class Service {
public:
    explicit Service(std::uint16_t port);

    void Send(const std::string& message, bool binary = false);
    /// Sends and waits until the server has handled all messages up to this one.
    void Settle(const std::string& message);
    /// The next message, or "closed" after the end.
    std::string Read();

private:
    boost::asio::io_context m_context;
    boost::beast::websocket::stream<boost::asio::ip::tcp::socket> m_stream{m_context};
    boost::beast::flat_buffer m_buffer;
};

/// A local API on a free port and a thread of its own.
class ApiFixture : public testing::Test {
protected:
    ~ApiFixture() override { Stop(); }

    void Start();
    void Stop();
    std::uint16_t Port() const { return m_options.port; }

    TemporaryRoot m_root;
    Options m_options{0, {}, {}, {}};
    Timeouts m_timeouts;

private:
    std::unique_ptr<boost::asio::io_context> m_context;
    std::unique_ptr<Server> m_server;
    std::thread m_thread;
};

}  // namespace PorticoApi
