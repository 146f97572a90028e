// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkSocket.h"

#include "portico/LinkChannel.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <chrono>
#include <utility>

namespace Portico {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;

/// A program that takes connections but does not answer is no local API.
constexpr std::chrono::seconds kHandshakeLimit(5);

class LinkSocket final : public LinkSocketIF, public std::enable_shared_from_this<LinkSocket> {
public:
    LinkSocket(Orlu::AsioTaskQueue& loop, std::uint16_t port, LinkEvents events)
        : m_loop(loop),
          m_channel(std::make_shared<LinkChannel>(LinkStream(loop.Context()),
                                                  "the other side does not read")),
          m_port(port),
          m_events(std::move(events))
    {
        m_channel->Stream().set_option({kHandshakeLimit, websocket::stream_base::none(), false});
    }

    void Connect()
    {
        m_channel->Stream().next_layer().async_connect(
            tcp::endpoint(asio::ip::address_v4::loopback(), m_port),
            [self = shared_from_this()](beast::error_code error) { self->OnConnected(error); });
    }

    void Send(std::string text) override { m_channel->Send(std::move(text)); }

    void Close() override
    {
        m_closed = true;
        m_channel->Close();
    }

private:
    void OnConnected(beast::error_code error)
    {
        if (error) {
            GoDown(error.message());
            return;
        }
        m_channel->Stream().next_layer().set_option(tcp::no_delay(true), error);
        ShakeHands(m_channel->Stream(), m_port,
                   [self = shared_from_this()](beast::error_code failure) { self->OnUp(failure); });
    }

    void OnUp(beast::error_code error)
    {
        if (error || m_closed) {
            GoDown(error.message());
            return;
        }
        const auto self = shared_from_this();
        m_channel->Start(
            {.message = [self](std::string_view bytes, bool) { self->m_events.text(bytes); },
             .down = [self](const std::string& why) { self->GoDown(why); },
             // Behind the answers that the task's work may have at once: a read asks the system.
             .defer =
                 [self](std::function<void()> read) {
                     self->m_loop.AtEndOfWakeUp(std::move(read));
                 }});
        m_events.up();
    }

    void GoDown(const std::string& why)
    {
        if (!m_closed) {
            Close();
            m_events.down(why);
        }
    }

    Orlu::AsioTaskQueue& m_loop;
    const std::shared_ptr<LinkChannel> m_channel;
    const std::uint16_t m_port;
    const LinkEvents m_events;
    bool m_closed = false;
};

}  // namespace

std::shared_ptr<LinkSocketIF> OpenLinkSocket(Orlu::AsioTaskQueue& loop, std::uint16_t port,
                                             LinkEvents events)
{
    auto socket = std::make_shared<LinkSocket>(loop, port, std::move(events));
    socket->Connect();
    return socket;
}

}  // namespace Portico
