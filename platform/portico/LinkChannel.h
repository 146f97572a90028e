// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/LinkStream.h"

#include <boost/beast/core/flat_buffer.hpp>

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Portico {

/// Text messages in both directions over a WebSocket that has shaken hands: one read and one write
/// at a time, and a bounded queue of messages to write. Either side of a link has one. Used on the
/// thread of the stream's loop only. The pending read keeps the channel and its events alive, so
/// both go with the loop.
class LinkChannel : public std::enable_shared_from_this<LinkChannel> {
public:
    struct Events {
        /// A message, which may be binary.
        std::function<void(std::string_view bytes, bool isText)> message;
        /// Once, with the reason; no event follows. Not called for `Close`.
        std::function<void(const std::string& why)> down;
        /// Runs the next read later; empty: each read follows the last at once.
        std::function<void(std::function<void()> read)> defer = {};
    };

    /// `tooSlow` is the reason that `down` gets if the other side has stopped reading.
    LinkChannel(LinkStream stream, std::string tooSlow);

    /// For the handshake, before `Start`.
    LinkStream& Stream() { return m_stream; }

    /// Begins to read.
    void Start(Events events);

    /// One text message; waits for those before it. Beyond `Limits::kSendQueueBytes` the connection
    /// is closed.
    void Send(std::string text);

    /// From here on no event comes.
    void Close();

private:
    using EventsPtr = std::shared_ptr<const Events>;

    void Read(const EventsPtr& events);
    void OnRead(const EventsPtr& events, boost::system::error_code error);
    void Write();
    void OnWritten(boost::system::error_code error);
    void CloseSocket();

    LinkStream m_stream;
    const std::string m_tooSlow;
    boost::beast::flat_buffer m_buffer;
    std::deque<std::string> m_queue;
    std::size_t m_waiting = 0;
    bool m_isTooSlow = false;
    bool m_isClosed = false;
};

}  // namespace Portico
