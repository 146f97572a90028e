// SPDX-License-Identifier: Apache-2.0

#include "orlu/Network.h"

#include <algorithm>
#include <utility>

#include "orlu/DPrint.h"
#include "orlu/Limits.h"

namespace Network {

bool ConnectorSocket::Send(std::string_view bytes)
{
    auto* const end = Extend(bytes.size());
    if (end == nullptr) {
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), end);
    return true;
}

}  // namespace Network

namespace {

const DPrint s_log("IPC");

class ServerListener final : public APServerSocketListenerIF,
                             public std::enable_shared_from_this<ServerListener> {
public:
    explicit ServerListener(std::string name) : m_name(std::move(name)) {}

    Network::Address Serve(const Network::Address& address,
                           const AsyncCallback<SocketPtr>& accepted) override
    {
        if (!address || !accepted) {
            return Network::Address();
        }
        m_accepted = accepted;
        // The earlier listener must free its path before the new one takes it.
        m_handle.reset();
        m_handle = Orlu::Runtime().Transport().Listen(
            address.Path(), accepted.Queue(), [weak = weak_from_this()](const SocketPtr& socket) {
                if (const auto self = weak.lock()) {
                    self->Take(socket);
                }
            });
        return m_handle ? address : Network::Address();
    }

private:
    void Take(const SocketPtr& socket)
    {
        if (m_connections == Orlu::Limits::kConnections) {
            s_log.Log(2, "{}: refused {}, {} connections are open", m_name,
                      socket->GetPeer().ToString(), m_connections);
            socket->Close();
            return;
        }
        ++m_connections;
        // Queued, because the socket may be destroyed in the middle of other work.
        socket->NotifyGone([weak = weak_from_this(), queue = m_accepted.Queue()] {
            queue->Post([weak] {
                if (const auto self = weak.lock()) {
                    --self->m_connections;
                }
            });
        });
        m_accepted(socket);
    }

    const std::string m_name;
    AsyncCallback<SocketPtr> m_accepted;
    std::size_t m_connections = 0;
    std::unique_ptr<Orlu::TransportHandle> m_handle;
};

class ClientListener final : public APClientSocketListenerIF,
                             public std::enable_shared_from_this<ClientListener> {
public:
    ClientListener(std::string name, std::uint32_t retryMs)
        : m_name(std::move(name)), m_retry(retryMs)
    {
    }

    Network::Address Serve(const Network::Address& address,
                           const AsyncCallback<Orlu::SocketPtr>& connected) override
    {
        if (!address || !connected) {
            return Network::Address();
        }
        const bool queued = connected.Queue()->Post([weak = weak_from_this(), address, connected] {
            if (const auto self = weak.lock()) {
                self->Begin(address, connected);
            }
        });
        return queued ? address : Network::Address();
    }

private:
    void Begin(const Network::Address& address, const AsyncCallback<Orlu::SocketPtr>& connected)
    {
        m_address = address;
        m_connected = connected;
        m_alarm = connected.Queue()->CreateAlarm();
        Try();
    }

    void Try()
    {
        m_lastTry = Orlu::Runtime().Now();
        m_attempt = Orlu::Runtime().Transport().Connect(
            m_address.Path(), m_connected.Queue(),
            [weak = weak_from_this()](const Orlu::SocketPtr& socket) {
                if (const auto self = weak.lock()) {
                    self->Finish(socket);
                }
            });
    }

    void Finish(const Orlu::SocketPtr& socket)
    {
        if (!socket) {
            // Logged once: a peer that is not there yet is a normal state.
            if (!std::exchange(m_failing, true)) {
                s_log.Log(3, "{}: nobody serves {} yet, trying every {} ms", m_name,
                          m_address.Path(), m_retry.count());
            }
            TryLater();
            return;
        }
        m_failing = false;
        // Queued, because the socket may be destroyed in the middle of other work.
        socket->NotifyGone([weak = weak_from_this(), queue = m_connected.Queue()] {
            queue->Post([weak] {
                if (const auto self = weak.lock()) {
                    self->TryLater();
                }
            });
        });
        m_connected(socket);
    }

    /// Tries at once after a connection that lasted longer than the interval, but never more often
    /// than once an interval.
    void TryLater()
    {
        const auto due = std::max(Orlu::Runtime().Now(), m_lastTry + m_retry);
        m_alarm->Arm(due, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->Try();
            }
        });
    }

    const std::string m_name;
    const Orlu::MonotonicMs m_retry;
    Network::Address m_address;
    AsyncCallback<Orlu::SocketPtr> m_connected;
    Orlu::MonotonicMs m_lastTry{0};
    bool m_failing = false;
    std::unique_ptr<Orlu::AlarmIF> m_alarm;
    std::unique_ptr<Orlu::TransportHandle> m_attempt;
};

}  // namespace

namespace IL {

std::shared_ptr<APServerSocketListenerIF> CreateServerListener(const std::string& name,
                                                               NotifyTargetTaskIF* /*task*/)
{
    return std::make_shared<ServerListener>(name);
}

std::shared_ptr<APClientSocketListenerIF> CreateClientListener(const std::string& name,
                                                               std::uint32_t retryMs)
{
    return std::make_shared<ClientListener>(name, retryMs);
}

}  // namespace IL
