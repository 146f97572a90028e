// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "orlu/Callback.h"
#include "orlu/Runtime.h"

namespace Network {

/// A description of the peer: "uid 0 pid 4711" for a local socket.
class AddrInfo {
public:
    explicit AddrInfo(std::string text) : m_text(std::move(text)) {}
    const std::string& ToString() const { return m_text; }

private:
    std::string m_text;
};

/// The address of a service: the path of its socket under `ORLU_ROOT`. False if it is empty.
class Address {
public:
    Address() = default;
    explicit Address(std::string path) : m_path(std::move(path)) {}
    explicit operator bool() const { return !m_path.empty(); }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

/// A connected byte stream, bound to one task and used there only.
class ConnectorSocket {
public:
    using OnBytes = std::function<void(std::span<const std::uint8_t>)>;
    using OnClosed = std::function<void()>;

    virtual ~ConnectorSocket() = default;

    virtual AddrInfo GetPeer() const = 0;

    /// Starts reading. `bytes` gets what arrives, in pieces of any size. `closed` is called once,
    /// when the peer has closed the connection or the socket failed; not after `Close`.
    virtual void Receive(OnBytes bytes, OnClosed closed) = 0;

    /// Reserves `size` bytes at the end of the send queue and gives their address; the caller fills
    /// them at once. They are written at the end of the wake-up. Null if the socket is closed. A
    /// peer that leaves more than `Limits::kSendQueueBytes` unread is disconnected: null, and
    /// `closed` follows.
    virtual std::uint8_t* Extend(std::size_t size) = 0;

    /// The same with the bytes given. False if the socket is closed or is disconnected by this
    /// call.
    bool Send(std::string_view bytes);

    /// Writes the send queue now, as far as the peer takes it: for a task that is about to block.
    virtual void Flush() = 0;

    /// Closes the connection and drops what was queued and not yet written.
    virtual void Close() = 0;

    /// `gone` is called once, however the connection ends, also by `Close` and destruction. For the
    /// listener that created the socket.
    virtual void NotifyGone(Orlu::Work gone) = 0;
};

}  // namespace Network

/// Accepts the connections of one service.
class APServerSocketListenerIF {
public:
    using SocketPtr = Orlu::SocketPtr;

    virtual ~APServerSocketListenerIF() = default;

    /// Listens at `address`. Each connection of a peer with our user id, or of root, goes to
    /// `accepted` (never with an empty pointer); another peer is refused with a log line.
    /// Gives the address, or a false one on failure.
    virtual Network::Address Serve(const Network::Address& address,
                                   const AsyncCallback<SocketPtr>& accepted) = 0;
};

/// Connects to one service, repeats the attempt until it succeeds, and again after a loss.
class APClientSocketListenerIF {
public:
    virtual ~APClientSocketListenerIF() = default;

    /// Tries at once and then each interval until connected; `connected` gets each socket. When a
    /// socket that was handed over goes down, the attempts begin again. Gives the address, or a
    /// false one on failure.
    virtual Network::Address Serve(const Network::Address& address,
                                   const AsyncCallback<Orlu::SocketPtr>& connected) = 0;
};

namespace IL {

std::shared_ptr<APServerSocketListenerIF> CreateServerListener(const std::string& name,
                                                               NotifyTargetTaskIF* task);

/// Attempts `retryMs` apart, on the task of the callback given to `Serve`. Ends when the listener
/// is destroyed.
std::shared_ptr<APClientSocketListenerIF> CreateClientListener(const std::string& name,
                                                               std::uint32_t retryMs);

}  // namespace IL

/// The addresses of the product's services.
class IPCDirectory {
public:
    static IPCDirectory& Get();

    /// The address of a service name: `$ORLU_ROOT/run/orlu/<name>.sock`.
    Network::Address Lookup(const std::string& serviceName) const;
};
