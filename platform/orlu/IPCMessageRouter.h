// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "orlu/Callback.h"
#include "orlu/IPCMessageEnvelope.pb.h"
#include "orlu/Network.h"

/// Serialises `message` into the envelope and names its type, without the package.
void SetPayload(IPCMessageEnvelope& envelope, const google::protobuf::Message& message);

/// False if the payload is not a `message`: another type is named, or the bytes do not parse.
/// An envelope that names no type is taken as any.
bool GetPayload(const IPCMessageEnvelope& envelope, google::protobuf::Message& message);

/// Whether the envelope may hold a message of that type, given without its package.
bool NamesType(const IPCMessageEnvelope& envelope, const std::string& typeName);

/// Sends and receives messages by id on one connection. Bound to one task and used there. Usable
/// before it has a socket and between sockets: what is sent then is dropped.
///
/// On the socket: 4 bytes length, big-endian, then an `IPCMessageEnvelope` of that many bytes.
class IPCMessageRouterIF {
public:
    using EnvelopeHandler = std::function<void(const IPCMessageEnvelope&)>;

    virtual ~IPCMessageRouterIF() = default;

    /// Uses this socket from now on, in place of the one before. `disconnected` is called once if
    /// the peer closes the connection or sends something that is not a frame. Requests that wait
    /// then are dropped; their replies are never called.
    virtual void Connect(Orlu::SocketPtr socket, std::function<void()> disconnected) = 0;

    /// Closes the socket; `disconnected` is not called.
    virtual void Disconnect() = 0;

    virtual bool IsConnected() const = 0;

    /// Sends an event. False without a socket, or for a message that is too large.
    virtual bool Send(std::uint32_t id, IPCMessageEnvelope envelope) = 0;
    /// The same with the message that the envelope would hold.
    virtual bool SendMessage(std::uint32_t id, const google::protobuf::Message& message) = 0;

    /// Sends a request with a new token. `reply` gets the envelope that answers it, at most once.
    /// If the request cannot be sent, an empty connection is returned and `reply` is never called.
    virtual CallbackConnection SendRequest(std::uint32_t id, IPCMessageEnvelope envelope,
                                           EnvelopeHandler reply) = 0;
    virtual CallbackConnection SendRequest(std::uint32_t id,
                                           const google::protobuf::Message& message,
                                           EnvelopeHandler reply) = 0;

    /// Sends the answer to the request with that id and token. False if it cannot be sent.
    virtual bool Reply(std::uint32_t id, IPCMessageEnvelope envelope, std::uint32_t token) = 0;
    virtual bool ReplyMessage(std::uint32_t id, const google::protobuf::Message& message,
                              std::uint32_t token) = 0;

    /// Writes at once what was sent up to now, for a task that is about to block; otherwise it is
    /// written at the end of the wake-up.
    virtual void Flush() = 0;

    /// `handler` gets each event and request of that id. A second handler replaces the first.
    virtual CallbackConnection AddHandler(std::uint32_t id, EnvelopeHandler handler) = 0;

    /// Takes each message without a receiver: an id without a handler, a payload of another type or
    /// one that does not parse, a reply without its request. Logs it at level 2.
    virtual void Unexpected(const IPCMessageEnvelope& envelope) = 0;

    /// The same with messages: the handler gets the parsed message and the envelope's token.
    template <class Message, class Handler>
    requires std::is_invocable_v<Handler&, const Message&, std::uint32_t> CallbackConnection
    AddHandler(std::uint32_t id, Handler handler)
    {
        return AddHandler(
            id, EnvelopeHandler([this, handler](const IPCMessageEnvelope& envelope) mutable {
                Message message;
                if (!GetPayload(envelope, message)) {
                    Unexpected(envelope);
                    return;
                }
                handler(message, envelope.token());
            }));
    }

    /// Sends `message` as a request; a reply of another type goes to `Unexpected`.
    template <class Response>
    CallbackConnection SendRequestMessage(std::uint32_t id,
                                          const google::protobuf::Message& message,
                                          Callback<Response> callback)
    {
        return SendRequest(id, message,
                           [this, callback = std::move(callback)](const IPCMessageEnvelope& reply) {
                               Response response;
                               if (!GetPayload(reply, response)) {
                                   Unexpected(reply);
                               } else if (callback) {
                                   callback(response);
                               }
                           });
    }
};

using IPCMessageRouterPtr = std::shared_ptr<IPCMessageRouterIF>;

class IPCMessageRouterFactory {
public:
    /// The name is for logs. `socket` may be empty: `Connect` brings one later.
    static IPCMessageRouterPtr CreateRouter(const std::string& name, NotifyTargetTaskIF* task,
                                            Orlu::SocketPtr socket);
};
