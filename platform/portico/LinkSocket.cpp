// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkSocket.h"

#include "orlu/Limits.h"
#include "portico/LinkStream.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <chrono>
#include <deque>
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
        : m_loop(loop), m_stream(loop.Context()), m_port(port), m_events(std::move(events))
    {
        m_stream.set_option({kHandshakeLimit, websocket::stream_base::none(), false});
        m_stream.read_message_max(Orlu::Limits::kFrameBytes);
    }

    void Connect()
    {
        m_stream.next_layer().async_connect(
            tcp::endpoint(asio::ip::address_v4::loopback(), m_port),
            [self = shared_from_this()](beast::error_code error) { self->OnConnected(error); });
    }

    void Send(std::string text) override
    {
        m_waiting += text.size();
        if (m_waiting > Orlu::Limits::kSendQueueBytes) {
            // Later: the caller is in the midst of its own work.
            asio::post(m_stream.get_executor(), [self = shared_from_this()] {
                self->GoDown("the other side does not read");
            });
            return;
        }
        m_queue.push_back(std::move(text));
        if (m_queue.size() == 1) {
            Write();
        }
    }

    void Close() override
    {
        m_closed = true;
        beast::error_code ignored;
        m_stream.next_layer().close(ignored);
    }

private:
    void OnConnected(beast::error_code error)
    {
        if (error) {
            GoDown(error.message());
            return;
        }
        m_stream.next_layer().set_option(tcp::no_delay(true), error);
        ShakeHands(m_stream, m_port,
                   [self = shared_from_this()](beast::error_code failure) { self->OnUp(failure); });
    }

    void OnUp(beast::error_code error)
    {
        if (error || m_closed) {
            GoDown(error.message());
            return;
        }
        m_stream.text(true);
        Read();
        m_events.up();
    }

    void Read()
    {
        m_stream.async_read(m_buffer,
                            [self = shared_from_this()](beast::error_code error, std::size_t) {
                                self->OnRead(error);
                            });
    }

    void OnRead(beast::error_code error)
    {
        if (error || m_closed) {
            GoDown(error.message());
            return;
        }
        const auto bytes = m_buffer.cdata();
        m_events.text({static_cast<const char*>(bytes.data()), bytes.size()});
        m_buffer.consume(m_buffer.size());
        if (!m_closed) {
            // Behind the answers that the task's work may have at once: this asks the system again.
            m_loop.AtEndOfWakeUp([self = shared_from_this()] { self->Read(); });
        }
    }

    void Write()
    {
        m_stream.async_write(asio::buffer(m_queue.front()),
                             [self = shared_from_this()](beast::error_code error, std::size_t) {
                                 self->OnWritten(error);
                             });
    }

    void OnWritten(beast::error_code error)
    {
        if (error) {
            GoDown(error.message());
            return;
        }
        m_waiting -= m_queue.front().size();
        m_queue.pop_front();
        if (!m_queue.empty()) {
            Write();
        }
    }

    void GoDown(const std::string& why)
    {
        if (!m_closed) {
            Close();
            m_events.down(why);
        }
    }

    Orlu::AsioTaskQueue& m_loop;
    LinkStream m_stream;
    const std::uint16_t m_port;
    const LinkEvents m_events;
    bool m_closed = false;
    beast::flat_buffer m_buffer;
    std::deque<std::string> m_queue;
    std::size_t m_waiting = 0;
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
