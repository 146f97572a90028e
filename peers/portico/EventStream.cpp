// SPDX-License-Identifier: Apache-2.0

#include "portico/EventStream.h"

#include "orlu/DPrint.h"
#include "orlu/Limits.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include <array>
#include <deque>
#include <utility>

namespace PorticoApi {

namespace {

namespace asio = boost::asio;

constexpr DPrint kLog("PorticoServer");

using Text = std::shared_ptr<const std::string>;

constexpr const char* kHead =
    "HTTP/1.1 200 OK\r\n"
    "Content-Type: text/event-stream\r\n"
    "Cache-Control: no-store\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "Connection: close\r\n"
    "\r\n";

}  // namespace

/// One consumer. The pending read of WaitForEnd owns it until the connection ends.
class EventStreams::Stream : public std::enable_shared_from_this<Stream> {
public:
    Stream(Socket socket, Share share) : m_socket(std::move(socket)), m_share(std::move(share)) {}

    void Start()
    {
        Push(std::make_shared<const std::string>(kHead));
        WaitForEnd();
    }

    void Push(Text text)
    {
        m_waiting += text->size();
        if (m_waiting > Orlu::Limits::kEventQueueBytes) {
            // Push may be called again before the pending read releases the stream.
            if (m_socket.is_open()) {
                kLog.Put(2, "a consumer of events does not read and is cut off");
            }
            Close();
            return;
        }
        m_queue.push_back(std::move(text));
        if (m_queue.size() == 1) {
            Write();
        }
    }

private:
    /// Reads only to notice the end: what a consumer sends behind its request is ignored.
    void WaitForEnd()
    {
        m_socket.async_read_some(
            asio::buffer(m_ignored),
            [self = shared_from_this()](boost::system::error_code error, std::size_t) {
                if (error) {
                    self->Close();
                } else {
                    self->WaitForEnd();
                }
            });
    }

    void Write()
    {
        asio::async_write(m_socket, asio::buffer(*m_queue.front()),
                          [self = shared_from_this()](boost::system::error_code error,
                                                      std::size_t) { self->OnWritten(error); });
    }

    void OnWritten(boost::system::error_code error)
    {
        if (error) {
            Close();
            return;
        }
        m_waiting -= m_queue.front()->size();
        m_queue.pop_front();
        if (!m_queue.empty()) {
            Write();
        }
    }

    void Close()
    {
        boost::system::error_code ignored;
        m_socket.close(ignored);
    }

    Socket m_socket;
    const Share m_share;
    std::array<char, 512> m_ignored{};
    std::deque<Text> m_queue;
    std::size_t m_waiting = 0;
};

void EventStreams::Add(Socket socket, Share share)
{
    auto stream = std::make_shared<Stream>(std::move(socket), std::move(share));
    stream->Start();
    m_streams.push_back(stream);
}

void EventStreams::Notify(const std::string& path, const std::string& json)
{
    std::erase_if(m_streams, [](const auto& stream) { return stream.expired(); });
    if (m_streams.empty()) {
        return;
    }
    // One text for all consumers, whose queues share it.
    const auto text = std::make_shared<const std::string>(
        R"(data: {"path":")" + path + R"(","body":)" + (json.empty() ? "null" : json) + "}\n\n");
    for (const auto& weak : m_streams) {
        if (const auto stream = weak.lock()) {
            stream->Push(text);
        }
    }
}

}  // namespace PorticoApi
