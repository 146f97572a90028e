// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include <boost/asio/local/stream_protocol.hpp>

#include "orlu/AsioTaskQueue.h"
#include "orlu/Network.h"

namespace Orlu {

using LocalSocket = boost::asio::local::stream_protocol::socket;

/// A `ConnectorSocket` on a Unix socket. Reads into the queue's buffer, writes once a wake-up.
class UnixSocket final : public Network::ConnectorSocket,
                         public std::enable_shared_from_this<UnixSocket> {
public:
    UnixSocket(std::shared_ptr<AsioTaskQueue> queue, LocalSocket socket, std::string peer);
    ~UnixSocket() override;
    UnixSocket(const UnixSocket&) = delete;
    UnixSocket& operator=(const UnixSocket&) = delete;

    Network::AddrInfo GetPeer() const override { return Network::AddrInfo(m_peer); }
    void Receive(OnBytes bytes, OnClosed closed) override;
    std::uint8_t* Extend(std::size_t size) override;
    void Flush() override;
    void Close() override;
    void NotifyGone(Work gone) override;

private:
    void WaitReadable();
    void ReadOnce();
    /// Reads once; true if there were bytes and the socket is still open.
    bool Read();
    void WaitWritable();
    /// Ends the connection, which the peer closed or which failed: `closed` is called.
    void Fail();
    /// Does the same in a later piece of work; until then nothing more is sent.
    void PostFail();
    void Release();

    const std::shared_ptr<AsioTaskQueue> m_queue;
    LocalSocket m_socket;
    const std::string m_peer;
    std::shared_ptr<const OnBytes> m_bytes;
    OnClosed m_closed;
    Work m_gone;
    std::string m_out;
    std::size_t m_sent = 0;
    bool m_open = true;
    bool m_failed = false;
    bool m_flushing = false;
    bool m_blocked = false;  ///< The peer takes no more for now; waiting until it does.
};

}  // namespace Orlu
