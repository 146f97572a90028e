// SPDX-License-Identifier: Apache-2.0

#include "portico/Listener.h"

#include "orlu/DPrint.h"
#include "orlu/Limits.h"

#include <boost/asio/ip/v6_only.hpp>

#include <chrono>
#include <utility>

namespace PorticoApi {

namespace {

namespace asio = boost::asio;

constexpr DPrint kLog("PorticoServer");
constexpr std::chrono::milliseconds kAcceptPause(100);

}  // namespace

Listener::Listener(asio::io_context& context, Accepted accepted)
    : m_four(context), m_six(context), m_accepted(std::move(accepted))
{
}

std::optional<std::uint16_t> Listener::Listen(std::uint16_t port, std::string& why)
{
    auto error = Open(m_four, {asio::ip::address_v4::loopback(), port});
    if (error) {
        why = "port " + std::to_string(port) + ": " + error.message();
        return std::nullopt;
    }
    const auto chosen = m_four.acceptor.local_endpoint(error).port();
    error = Open(m_six, {asio::ip::address_v6::loopback(), chosen});
    if (error) {
        kLog.Log(4, "no IPv6: {}", error.message());
    }
    return chosen;
}

boost::system::error_code Listener::Open(Acceptor& acceptor, const Protocol::endpoint& endpoint)
{
    boost::system::error_code error;
    acceptor.acceptor.open(endpoint.protocol(), error);
    if (!error && endpoint.address().is_v6()) {
        acceptor.acceptor.set_option(asio::ip::v6_only(true), error);
    }
    if (!error) {
        acceptor.acceptor.set_option(asio::socket_base::reuse_address(true), error);
    }
    if (!error) {
        acceptor.acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        boost::system::error_code ignored;
        acceptor.acceptor.close(ignored);
    }
    return error;
}

void Listener::Start()
{
    Accept(m_four);
    if (m_six.acceptor.is_open()) {
        Accept(m_six);
    }
}

void Listener::Accept(Acceptor& acceptor)
{
    acceptor.acceptor.async_accept(
        [this, &acceptor](boost::system::error_code error, Socket socket) {
            if (error == asio::error::operation_aborted) {
                return;
            }
            if (error) {
                // Without free descriptors, for example, accepting fails at once again and again.
                acceptor.pause.expires_after(kAcceptPause);
                acceptor.pause.async_wait([this, &acceptor](boost::system::error_code stopped) {
                    if (!stopped) {
                        Accept(acceptor);
                    }
                });
                return;
            }
            Admit(std::move(socket));
            Accept(acceptor);
        });
}

void Listener::Admit(Socket socket)
{
    // This listener holds one of the shares.
    const bool isFull =
        static_cast<std::size_t>(m_connections.use_count()) > Orlu::Limits::kConnections;
    if (isFull && !m_isFull) {
        kLog.Log(2, "{} connections, no more are taken", Orlu::Limits::kConnections);
    }
    m_isFull = isFull;
    if (isFull) {
        return;
    }
    boost::system::error_code ignored;
    // An answer is one write: waiting to fill a packet would only delay it.
    socket.set_option(Protocol::no_delay(true), ignored);
    m_accepted(std::move(socket), m_connections);
}

}  // namespace PorticoApi
