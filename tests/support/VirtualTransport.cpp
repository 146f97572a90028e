// SPDX-License-Identifier: Apache-2.0

#include "support/VirtualTransport.h"

#include <algorithm>
#include <utility>

#include "orlu/Limits.h"

VirtualSocket::VirtualSocket(Orlu::TaskQueuePtr queue, std::string peerText)
    : m_queue(std::move(queue)), m_peerText(std::move(peerText))
{
}

VirtualSocket::~VirtualSocket()
{
    Release();
}

void VirtualSocket::Join(const std::shared_ptr<VirtualSocket>& one,
                         const std::shared_ptr<VirtualSocket>& other)
{
    one->m_peer = other;
    other->m_peer = one;
}

void VirtualSocket::Stall(bool stalled)
{
    m_stalled = stalled;
    Post(&VirtualSocket::Deliver);
}

void VirtualSocket::CutAfter(std::size_t bytes)
{
    m_cutAfter = bytes;
}

void VirtualSocket::Receive(OnBytes bytes, OnClosed closed)
{
    m_bytes = std::make_shared<const OnBytes>(std::move(bytes));
    m_closed = std::move(closed);
    Post(&VirtualSocket::Deliver);
}

std::uint8_t* VirtualSocket::Extend(std::size_t size)
{
    if (!m_open || m_cutOff) {
        return nullptr;
    }
    const auto peer = m_peer.lock();
    const auto unread = m_out.size() + (peer ? peer->m_in.size() : 0);
    if (unread + size > Orlu::Limits::kSendQueueBytes) {
        m_cutOff = true;
        Post(&VirtualSocket::Fail);
        return nullptr;
    }
    const auto end = m_out.size();
    m_out.resize(end + size);
    if (!std::exchange(m_flushing, true)) {
        m_queue->AtEndOfWakeUp([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->Flush();
            }
        });
    }
    return reinterpret_cast<std::uint8_t*>(m_out.data() + end);
}

void VirtualSocket::Post(void (VirtualSocket::*step)())
{
    m_queue->Post([weak = weak_from_this(), step] {
        if (const auto self = weak.lock()) {
            ((*self).*step)();
        }
    });
}

void VirtualSocket::Flush()
{
    m_flushing = false;
    const auto out = std::exchange(m_out, {});
    const auto peer = m_peer.lock();
    if (!m_open || !peer) {
        return;
    }
    const auto size = std::min(out.size(), m_cutAfter.value_or(out.size()));
    peer->m_in.append(out, 0, size);
    peer->Post(&VirtualSocket::Deliver);
    if (m_cutAfter) {
        *m_cutAfter -= size;
    }
    if (size < out.size()) {
        peer->EndOfStream();
        EndOfStream();
    }
}

void VirtualSocket::Deliver()
{
    while (m_open && !m_stalled && m_bytes && !m_in.empty()) {
        const auto size = std::min(m_in.size(), Orlu::Limits::kReadBytes);
        const auto piece = m_in.substr(0, size);
        m_in.erase(0, size);
        const auto bytes = m_bytes;
        (*bytes)({reinterpret_cast<const std::uint8_t*>(piece.data()), size});
    }
    if (m_ended && m_bytes && !m_stalled) {
        Fail();
    }
}

void VirtualSocket::EndOfStream()
{
    m_ended = true;
    Post(&VirtualSocket::Deliver);
}

void VirtualSocket::Fail()
{
    const auto closed = std::exchange(m_closed, nullptr);
    const bool wasOpen = m_open;
    Release();
    if (wasOpen && closed) {
        closed();
    }
}

void VirtualSocket::Release()
{
    if (!std::exchange(m_open, false)) {
        return;
    }
    if (const auto peer = m_peer.lock()) {
        peer->EndOfStream();
    }
    const auto bytes = std::exchange(m_bytes, nullptr);
    const auto closed = std::exchange(m_closed, nullptr);
    if (const auto gone = std::exchange(m_gone, nullptr)) {
        gone();
    }
}

struct VirtualTransport::Places {
    struct Place {
        Orlu::TaskQueuePtr queue;
        std::function<void(Orlu::SocketPtr)> accepted;
    };
    std::map<std::string, Place> listening;
    std::map<std::string, std::vector<std::weak_ptr<VirtualSocket>>> served;
    unsigned connections = 0;

    /// The client's end of a new connection; empty if there is no listener.
    Orlu::SocketPtr Open(const std::string& path, const Orlu::TaskQueuePtr& queue)
    {
        const auto place = listening.find(path);
        if (place == listening.end()) {
            return nullptr;
        }
        const auto peerText = "uid 1000 pid " + std::to_string(100 + ++connections);
        const auto server = std::make_shared<VirtualSocket>(place->second.queue, peerText);
        const auto client = std::make_shared<VirtualSocket>(queue, "uid 1000 pid 1");
        VirtualSocket::Join(server, client);
        served[path].push_back(server);
        place->second.queue->Post(
            [accepted = place->second.accepted, server] { accepted(server); });
        return client;
    }
};

namespace {

using PlacesPtr = std::shared_ptr<VirtualTransport::Places>;

class ListenHandle final : public Orlu::TransportHandle {
public:
    ListenHandle(PlacesPtr places, std::string path)
        : m_places(std::move(places)), m_path(std::move(path))
    {
    }
    ~ListenHandle() override { m_places->listening.erase(m_path); }
    ListenHandle(const ListenHandle&) = delete;
    ListenHandle& operator=(const ListenHandle&) = delete;

private:
    PlacesPtr m_places;
    std::string m_path;
};

class Attempt final : public Orlu::TransportHandle {
public:
    explicit Attempt(std::function<void(Orlu::SocketPtr)> done)
        : m_done(std::make_shared<std::function<void(Orlu::SocketPtr)>>(std::move(done)))
    {
    }

    std::weak_ptr<std::function<void(Orlu::SocketPtr)>> Done() const { return m_done; }

private:
    std::shared_ptr<std::function<void(Orlu::SocketPtr)>> m_done;
};

}  // namespace

VirtualTransport::VirtualTransport() : m_places(std::make_shared<Places>()) {}

VirtualTransport::~VirtualTransport() = default;

VirtualTransport::Sockets VirtualTransport::Served(const std::string& path) const
{
    Sockets sockets;
    for (const auto& weak : m_places->served[path]) {
        if (auto socket = weak.lock(); socket && socket->IsOpen()) {
            sockets.push_back(std::move(socket));
        }
    }
    return sockets;
}

std::unique_ptr<Orlu::TransportHandle> VirtualTransport::Listen(
    const std::string& path, const Orlu::TaskQueuePtr& queue,
    std::function<void(Orlu::SocketPtr)> accepted)
{
    if (!m_places->listening.try_emplace(path, Places::Place{queue, std::move(accepted)}).second) {
        return nullptr;
    }
    return std::make_unique<ListenHandle>(m_places, path);
}

std::unique_ptr<Orlu::TransportHandle> VirtualTransport::Connect(
    const std::string& path, const Orlu::TaskQueuePtr& queue,
    std::function<void(Orlu::SocketPtr)> done)
{
    auto attempt = std::make_unique<Attempt>(std::move(done));
    queue->Post([places = m_places, path, queue, weak = attempt->Done()] {
        if (const auto wanted = weak.lock()) {
            (*wanted)(places->Open(path, queue));
        }
    });
    return attempt;
}
