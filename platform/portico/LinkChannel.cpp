// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkChannel.h"

#include "orlu/Limits.h"

#include <boost/beast/websocket/rfc6455.hpp>

#include <utility>

namespace Portico {

namespace Limits = Orlu::Limits;

LinkChannel::LinkChannel(LinkStream stream, std::string tooSlow)
    : m_stream(std::move(stream)), m_tooSlow(std::move(tooSlow))
{
    m_stream.read_message_max(Limits::kFrameBytes);
}

void LinkChannel::Start(Events events)
{
    m_stream.text(true);
    Read(std::make_shared<const Events>(std::move(events)));
}

void LinkChannel::Send(std::string text)
{
    m_waiting += text.size();
    if (m_waiting > Limits::kSendQueueBytes) {
        // The pending read reports the end; the caller is in the midst of its own work.
        m_isTooSlow = true;
        CloseSocket();
        return;
    }
    m_queue.push_back(std::move(text));
    if (m_queue.size() == 1) {
        Write();
    }
}

void LinkChannel::Close()
{
    m_isClosed = true;
    CloseSocket();
}

void LinkChannel::CloseSocket()
{
    boost::system::error_code ignored;
    m_stream.next_layer().close(ignored);
}

void LinkChannel::Read(const EventsPtr& events)
{
    m_stream.async_read(m_buffer, [self = shared_from_this(), events](
                                      boost::system::error_code error, std::size_t) {
        self->OnRead(events, error);
    });
}

void LinkChannel::OnRead(const EventsPtr& events, boost::system::error_code error)
{
    if (m_isClosed) {
        return;
    }
    if (error) {
        Close();
        events->down(m_isTooSlow ? m_tooSlow : error.message());
        return;
    }
    const auto bytes = m_buffer.cdata();
    events->message({static_cast<const char*>(bytes.data()), bytes.size()}, m_stream.got_text());
    m_buffer.consume(m_buffer.size());
    if (m_isClosed) {
        return;
    }
    if (events->defer) {
        events->defer([self = shared_from_this(), events] { self->Read(events); });
    } else {
        Read(events);
    }
}

void LinkChannel::Write()
{
    m_stream.async_write(boost::asio::buffer(m_queue.front()),
                         [self = shared_from_this()](boost::system::error_code error, std::size_t) {
                             self->OnWritten(error);
                         });
}

void LinkChannel::OnWritten(boost::system::error_code error)
{
    // The read reports a failure too.
    if (error) {
        return;
    }
    m_waiting -= m_queue.front().size();
    m_queue.pop_front();
    if (!m_queue.empty()) {
        Write();
    }
}

}  // namespace Portico
