// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orlu/Network.h"

/// One end of a connection in memory. Bytes are sent at the end of the sender's wake-up and are
/// delivered as work on the receiver's queue.
class VirtualSocket final : public Network::ConnectorSocket,
                            public std::enable_shared_from_this<VirtualSocket> {
public:
    VirtualSocket(Orlu::TaskQueuePtr queue, std::string peerText);
    ~VirtualSocket() override;
    VirtualSocket(const VirtualSocket&) = delete;
    VirtualSocket& operator=(const VirtualSocket&) = delete;

    static void Join(const std::shared_ptr<VirtualSocket>& one,
                     const std::shared_ptr<VirtualSocket>& other);

    /// While stalled, this end reads nothing, as a process that hangs.
    void Stall(bool stalled);

    /// After `bytes` more bytes to the peer the connection breaks for both ends.
    void CutAfter(std::size_t bytes);

    bool IsOpen() const { return m_open; }

    Network::AddrInfo GetPeer() const override { return Network::AddrInfo(m_peerText); }
    void Receive(OnBytes bytes, OnClosed closed) override;
    std::uint8_t* Extend(std::size_t size) override;
    void Flush() override;
    void Close() override { Release(); }
    void NotifyGone(Orlu::Work gone) override { m_gone = std::move(gone); }

private:
    void Post(void (VirtualSocket::*step)());
    void Deliver();
    void EndOfStream();
    void Fail();
    void Release();

    const Orlu::TaskQueuePtr m_queue;
    const std::string m_peerText;
    std::weak_ptr<VirtualSocket> m_peer;
    std::shared_ptr<const OnBytes> m_bytes;
    OnClosed m_closed;
    Orlu::Work m_gone;
    std::string m_out;
    std::string m_in;
    std::optional<std::size_t> m_cutAfter;
    bool m_open = true;
    bool m_flushing = false;
    bool m_stalled = false;
    bool m_ended = false;
    bool m_cutOff = false;
};

/// Connections in memory, by path.
class VirtualTransport final : public Orlu::TransportIF {
public:
    using Sockets = std::vector<std::shared_ptr<VirtualSocket>>;

    VirtualTransport();
    ~VirtualTransport() override;

    /// The open sockets that the listener at `path` was given, oldest first.
    Sockets Served(const std::string& path) const;

    std::unique_ptr<Orlu::TransportHandle> Listen(
        const std::string& path, const Orlu::TaskQueuePtr& queue,
        std::function<void(Orlu::SocketPtr)> accepted) override;

    std::unique_ptr<Orlu::TransportHandle> Connect(
        const std::string& path, const Orlu::TaskQueuePtr& queue,
        std::function<void(Orlu::SocketPtr)> done) override;

    struct Places;

private:
    std::shared_ptr<Places> m_places;
};
