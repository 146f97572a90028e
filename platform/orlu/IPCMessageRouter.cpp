// SPDX-License-Identifier: Apache-2.0

#include "orlu/IPCMessageRouter.h"

#include <map>
#include <unordered_map>
#include <utility>

#include <google/protobuf/message.h>

#include "orlu/DPrint.h"
#include "orlu/IPCFrames.h"
#include "orlu/Limits.h"

void SetPayload(IPCMessageEnvelope& envelope, const google::protobuf::Message& message)
{
    envelope.set_payload_type(message.GetDescriptor()->name());
    message.SerializePartialToString(envelope.mutable_payload());
}

bool GetPayload(const IPCMessageEnvelope& envelope, google::protobuf::Message& message)
{
    return NamesType(envelope, message.GetDescriptor()->name()) &&
           message.ParseFromString(envelope.payload());
}

bool NamesType(const IPCMessageEnvelope& envelope, const std::string& typeName)
{
    return envelope.payload_type().empty() || envelope.payload_type() == typeName;
}

namespace {

const DPrint s_log("IPC");

/// A type name from outside is cut to this length in a log line.
constexpr std::size_t kLoggedName = 64;

class Router final : public IPCMessageRouterIF, public std::enable_shared_from_this<Router> {
public:
    explicit Router(std::string name) : m_name(std::move(name)) {}
    ~Router() override { Disconnect(); }
    Router(const Router&) = delete;
    Router& operator=(const Router&) = delete;

    void Connect(Orlu::SocketPtr socket, std::function<void()> disconnected) override;
    void Disconnect() override;
    bool IsConnected() const override { return m_socket != nullptr; }
    bool Send(std::uint32_t id, IPCMessageEnvelope envelope) override;
    bool SendMessage(std::uint32_t id, const google::protobuf::Message& message) override;
    CallbackConnection SendRequest(std::uint32_t id, IPCMessageEnvelope envelope,
                                   EnvelopeHandler reply) override;
    CallbackConnection SendRequest(std::uint32_t id, const google::protobuf::Message& message,
                                   EnvelopeHandler reply) override;
    bool Reply(std::uint32_t id, IPCMessageEnvelope envelope, std::uint32_t token) override;
    bool ReplyMessage(std::uint32_t id, const google::protobuf::Message& message,
                      std::uint32_t token) override;
    void Flush() override;
    CallbackConnection AddHandler(std::uint32_t id, EnvelopeHandler handler) override;
    void Unexpected(const IPCMessageEnvelope& envelope) override;

private:
    using HandlerPtr = std::shared_ptr<const EnvelopeHandler>;

    struct Pending {
        std::uint32_t id;
        EnvelopeHandler reply;
    };

    /// The reader of one connection. The socket holds it, so it outlives a router that is
    /// destroyed, or gets another socket, in one of its own handlers.
    struct Link {
        std::weak_ptr<Router> router;
        IPCFrames::Reader reader;
        IPCMessageEnvelope envelope;
    };

    static void TakeBytes(Link& link, std::span<const std::uint8_t> bytes);
    void Dispatch(const IPCMessageEnvelope& envelope);
    void TakeReply(const IPCMessageEnvelope& envelope);
    void End();
    bool Put(std::uint32_t id, IPCMessageEnvelope& envelope, std::uint32_t kind,
             std::uint32_t token);
    bool Put(const IPCFrames::Head& head, const google::protobuf::Message& message);
    bool LoseReply(std::uint32_t id) const;
    CallbackConnection AwaitReply(std::uint32_t id, std::uint32_t token, EnvelopeHandler reply);
    std::uint32_t NewToken();

    const std::string m_name;
    Orlu::SocketPtr m_socket;
    std::shared_ptr<Link> m_link;
    std::function<void()> m_disconnected;
    std::unordered_map<std::uint32_t, HandlerPtr> m_handlers;
    std::map<std::uint32_t, Pending> m_pending;
    std::uint32_t m_lastToken = 0;
};

void Router::Connect(Orlu::SocketPtr socket, std::function<void()> disconnected)
{
    Disconnect();
    if (!socket) {
        return;
    }
    m_socket = std::move(socket);
    m_disconnected = std::move(disconnected);
    m_link = std::make_shared<Link>();
    m_link->router = weak_from_this();
    m_socket->Receive(
        [link = m_link](std::span<const std::uint8_t> bytes) { TakeBytes(*link, bytes); },
        // Compared with the current link: the router may have another socket by now.
        [link = std::weak_ptr<Link>(m_link)] {
            const auto current = link.lock();
            const auto router = current ? current->router.lock() : nullptr;
            if (router && router->m_link == current) {
                router->End();
            }
        });
}

void Router::Disconnect()
{
    // Moved out of the members first, because each of them may hold the last reference to this
    // router.
    const auto self = weak_from_this().lock();
    const auto disconnected = std::exchange(m_disconnected, nullptr);
    const auto pending = std::exchange(m_pending, {});
    const auto link = std::exchange(m_link, nullptr);
    if (const auto socket = std::exchange(m_socket, nullptr)) {
        socket->Close();
    }
}

void Router::End()
{
    // Held, because the callback may drop the last reference.
    const auto self = shared_from_this();
    const auto disconnected = std::exchange(m_disconnected, nullptr);
    Disconnect();
    if (disconnected) {
        disconnected();
    }
}

void Router::TakeBytes(Link& link, std::span<const std::uint8_t> bytes)
{
    using Status = IPCFrames::Reader::Status;
    link.reader.Feed(bytes);
    while (true) {
        // Looked up for each frame: a handler may have disconnected or destroyed the router, and
        // the rest of the bytes then has no receiver.
        const auto router = link.router.lock();
        if (!router || router->m_link.get() != &link) {
            return;
        }
        const auto status = link.reader.Next(link.envelope);
        if (status == Status::kMore) {
            return;
        }
        if (status != Status::kFrame) {
            s_log.Log(2, "{}: {}, the connection ends", router->m_name,
                      IPCFrames::Describe(status));
            router->End();
            return;
        }
        router->Dispatch(link.envelope);
        // One large message must not hold its memory for the life of the connection.
        if (link.envelope.payload().capacity() > Orlu::Limits::kReadBytes) {
            link.envelope = IPCMessageEnvelope();
        }
    }
}

void Router::Dispatch(const IPCMessageEnvelope& envelope)
{
    if (envelope.kind() == IPCFrames::kReply) {
        TakeReply(envelope);
        return;
    }
    const auto found = m_handlers.find(envelope.id());
    if (found == m_handlers.end()) {
        Unexpected(envelope);
        return;
    }
    // A copy of the pointer, because the handler may remove or replace itself.
    const auto handler = found->second;
    (*handler)(envelope);
}

void Router::TakeReply(const IPCMessageEnvelope& envelope)
{
    const auto found = m_pending.find(envelope.token());
    // A reply with the wrong id does not end the request.
    if (found == m_pending.end() || found->second.id != envelope.id()) {
        Unexpected(envelope);
        return;
    }
    // Removed before the call, which may send the next request.
    const auto reply = std::move(found->second.reply);
    m_pending.erase(found);
    reply(envelope);
}

bool Router::Put(std::uint32_t id, IPCMessageEnvelope& envelope, std::uint32_t kind,
                 std::uint32_t token)
{
    if (!m_socket) {
        return false;
    }
    envelope.set_id(id);
    envelope.set_kind(kind);
    envelope.clear_token();
    if (token != 0) {
        envelope.set_token(token);
    }
    return IPCFrames::Write(envelope, *m_socket);
}

bool Router::Put(const IPCFrames::Head& head, const google::protobuf::Message& message)
{
    return m_socket && IPCFrames::Write(head, message, *m_socket);
}

bool Router::Send(std::uint32_t id, IPCMessageEnvelope envelope)
{
    return Put(id, envelope, IPCFrames::kEvent, 0);
}

bool Router::SendMessage(std::uint32_t id, const google::protobuf::Message& message)
{
    return Put({id, IPCFrames::kEvent, 0}, message);
}

bool Router::Reply(std::uint32_t id, IPCMessageEnvelope envelope, std::uint32_t token)
{
    return Put(id, envelope, IPCFrames::kReply, token) || LoseReply(id);
}

bool Router::ReplyMessage(std::uint32_t id, const google::protobuf::Message& message,
                          std::uint32_t token)
{
    return Put({id, IPCFrames::kReply, token}, message) || LoseReply(id);
}

/// Logs a reply that could not be sent: the peer waits for it without limit. Returns false.
bool Router::LoseReply(std::uint32_t id) const
{
    if (m_socket) {
        s_log.Log(2, "{}: a reply with id {} is too large, or its reader too far behind", m_name,
                  id);
    }
    return false;
}

void Router::Flush()
{
    if (m_socket) {
        m_socket->Flush();
    }
}

CallbackConnection Router::SendRequest(std::uint32_t id, IPCMessageEnvelope envelope,
                                       EnvelopeHandler reply)
{
    const auto token = NewToken();
    return Put(id, envelope, IPCFrames::kRequest, token) ? AwaitReply(id, token, std::move(reply))
                                                         : CallbackConnection();
}

CallbackConnection Router::SendRequest(std::uint32_t id, const google::protobuf::Message& message,
                                       EnvelopeHandler reply)
{
    const auto token = NewToken();
    return Put({id, IPCFrames::kRequest, token}, message) ? AwaitReply(id, token, std::move(reply))
                                                          : CallbackConnection();
}

CallbackConnection Router::AwaitReply(std::uint32_t id, std::uint32_t token, EnvelopeHandler reply)
{
    // Giving up the oldest keeps a peer that never replies from blocking all later requests.
    if (m_pending.size() == Orlu::Limits::kPendingRequests) {
        s_log.Log(2, "{}: request {} is given up, {} wait for their reply", m_name,
                  m_pending.begin()->second.id, m_pending.size());
        m_pending.erase(m_pending.begin());
    }
    m_pending.emplace(token, Pending{id, std::move(reply)});
    return CallbackConnection([weak = weak_from_this(), token] {
        if (const auto self = weak.lock()) {
            // Out of the map before it is destroyed: what the reply holds may disconnect others.
            const auto given = self->m_pending.extract(token);
        }
    });
}

std::uint32_t Router::NewToken()
{
    do {
        ++m_lastToken;
        // Token 0 means that there is none. After a wrap an old request may still hold its token.
    } while (m_lastToken == 0 || m_pending.contains(m_lastToken));
    return m_lastToken;
}

CallbackConnection Router::AddHandler(std::uint32_t id, EnvelopeHandler handler)
{
    const auto added = std::make_shared<const EnvelopeHandler>(std::move(handler));
    m_handlers[id] = added;
    return CallbackConnection(
        [weak = weak_from_this(), id, mine = std::weak_ptr<const EnvelopeHandler>(added)] {
            const auto self = weak.lock();
            const auto found = self ? self->m_handlers.find(id) : decltype(m_handlers)::iterator();
            // Only the handler of this connection: a later one may have replaced it.
            if (self && found != self->m_handlers.end() && found->second == mine.lock()) {
                self->m_handlers.erase(found);
            }
        });
}

void Router::Unexpected(const IPCMessageEnvelope& envelope)
{
    s_log.Log(2, "{}: unexpected message, id {}, kind {}, type \"{}\", {} bytes", m_name,
              envelope.id(), envelope.kind(),
              std::string_view(envelope.payload_type()).substr(0, kLoggedName),
              envelope.payload().size());
}

}  // namespace

IPCMessageRouterPtr IPCMessageRouterFactory::CreateRouter(const std::string& name,
                                                          NotifyTargetTaskIF* /*task*/,
                                                          Orlu::SocketPtr socket)
{
    auto router = std::make_shared<Router>(name);
    router->Connect(std::move(socket), nullptr);
    return router;
}
