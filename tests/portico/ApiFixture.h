// SPDX-License-Identifier: Apache-2.0

#pragma once

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
    std::string Ask(const std::string& method, const std::string& path,
                    const std::string& body = {}, const std::string& more = {});
    void Close() { m_socket.close(); }

private:
    boost::asio::io_context m_context;
    boost::asio::ip::tcp::socket m_socket{m_context};
    const std::uint16_t m_port;
    std::string m_bytes;
};

/// A hand-made service at the end of a link.
class Service {
public:
    explicit Service(std::uint16_t port, const std::string& name = "service");

    void Send(const std::string& message);
    void SendBinary(const std::string& bytes);
    /// The next message; "closed".
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
    Patience m_patience;

private:
    std::unique_ptr<boost::asio::io_context> m_context;
    std::unique_ptr<Server> m_server;
    std::thread m_thread;
};

}  // namespace PorticoApi
