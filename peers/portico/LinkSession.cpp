// SPDX-License-Identifier: Apache-2.0

#include "portico/LinkSession.h"

#include "orlu/DPrint.h"
#include "orlu/Limits.h"
#include "orlu/StrictJson.h"
#include "portico/ConnectionContext.h"
#include "portico/LinkChannel.h"
#include "portico/LinkMessage.h"
#include "portico/Resources.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <chrono>
#include <map>
#include <utility>

namespace PorticoApi {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = boost::beast::websocket;
namespace Limits = Orlu::Limits;
using Clock = std::chrono::steady_clock;
using Portico::LinkMessage;

constexpr DPrint kLog("PorticoServer");

class LinkSession : public std::enable_shared_from_this<LinkSession> {
public:
    LinkSession(Socket socket, HttpRequest request, Share share, const ConnectionContext& context)
        : m_channel(std::make_shared<Portico::LinkChannel>(Portico::LinkStream(std::move(socket)),
                                                           "it does not read")),
          m_timer(m_channel->Stream().get_executor()),
          m_request(std::move(request)),
          m_share(std::move(share)),
          m_resources(context.resources),
          m_timeouts(context.timeouts)
    {
        m_channel->Stream().set_option({m_timeouts.request, websocket::stream_base::none(), false});
    }

    void Accept()
    {
        m_channel->Stream().async_accept(m_request,
                                         [self = shared_from_this()](beast::error_code error) {
                                             if (!error) {
                                                 self->Start();
                                             }
                                         });
    }

private:
    /// The channel holds the session from here on, until one of the two ends the link.
    void Start()
    {
        const auto self = shared_from_this();
        m_channel->Start({.message = [self](std::string_view bytes,
                                            bool isText) { self->TakeText(bytes, isText); },
                          .down =
                              [self](const std::string& why) {
                                  self->End(why);
                              }});
    }

    void TakeText(std::string_view text, bool isText)
    {
        std::string why = "a binary message";
        auto message = isText ? Portico::ReadLinkMessage(text, why) : std::nullopt;
        const bool isHello = message && message->type == LinkMessage::Type::kHello;
        if (message && isHello == m_name.empty()) {
            Dispatch(std::move(*message));
        } else {
            End(message ? "hello comes first, and once" : why);
        }
    }

    void Dispatch(LinkMessage message)
    {
        using Type = LinkMessage::Type;
        switch (message.type) {
            case Type::kHello:
                m_name = message.name.empty() ? "?" : std::move(message.name);
                kLog.Log(3, "{}: link up", m_name);
                return;
            case Type::kRegister:
            case Type::kInterest:
            case Type::kSubscribe:
                Register(message);
                return;
            case Type::kWithdraw:
                m_registered -= m_registered > 0 ? 1 : 0;
                m_resources.Withdraw(this, message.id);
                return;
            case Type::kRequest:
                TakeRequest(message);
                return;
            case Type::kAnswer:
                TakeAnswer(std::move(message));
                return;
            case Type::kChanged:
                TakeChange(message);
                return;
            default:
                End("a message that only the local API sends");
        }
    }

    void Register(const LinkMessage& message)
    {
        m_registered += 1 + message.paths.size();
        if (m_registered > Limits::kLinkPaths) {
            End("it registers too much");
            return;
        }
        const auto id = message.id;
        const auto weak = weak_from_this();
        if (message.type == LinkMessage::Type::kInterest) {
            m_resources.AddInterest(message.paths, this, id, [weak, id](bool isReady) {
                Tell(weak, isReady ? LinkMessage::Type::kReady : LinkMessage::Type::kNotReady, id,
                     {});
            });
        } else if (message.type == LinkMessage::Type::kSubscribe) {
            m_resources.Subscribe(message.path, this, id, [weak, id](const std::string& json) {
                Tell(weak, LinkMessage::Type::kNotify, id, json);
            });
        } else {
            Serve(message);
        }
    }

    void Serve(const LinkMessage& message)
    {
        const auto handler = [weak = weak_from_this(), method = message.method,
                              path = message.path](const std::string& body, const ReplyPtr& reply) {
            if (const auto self = weak.lock()) {
                self->Relay(method, path, body, reply);
            }
        };
        if (m_resources.Serve(message.method, message.path, handler, this, message.id)) {
            kLog.Log(4, "{}: serves {} {}", m_name, message.method, message.path);
        } else {
            kLog.Log(2, "{}: may not serve {} {}", m_name, message.method, message.path);
        }
    }

    /// A consumer's request to the service.
    void Relay(const std::string& method, const std::string& path, const std::string& body,
               const ReplyPtr& reply)
    {
        if (m_pending.size() >= Limits::kPendingRequests) {
            reply->Give(Failure(503, "too many requests wait for the service"));
            return;
        }
        const auto id = ++m_lastId;
        m_pending.emplace(id, Pending{reply, Clock::now() + m_timeouts.answer});
        reply->OnDrop([weak = weak_from_this(), id] {
            if (const auto self = weak.lock()) {
                self->m_pending.erase(id);
            }
        });
        LinkMessage request;
        request.type = LinkMessage::Type::kRequest;
        request.id = id;
        request.method = method;
        request.path = path;
        request.body = body;
        Send(request);
        Time();
    }

    void TakeAnswer(LinkMessage answer)
    {
        auto pending = m_pending.extract(answer.id);
        if (pending.empty()) {
            kLog.Log(4, "{}: an answer that nobody waits for", m_name);
        } else if (answer.isError) {
            pending.mapped().reply->Give(ServiceFailure(answer.body));
        } else {
            pending.mapped().reply->Give({200, std::move(answer.body), {}});
        }
    }

    /// Consumers get the body as it stands, in one line of an event.
    void TakeChange(const LinkMessage& message)
    {
        std::string why = "more than a line";
        const bool isLine = message.body.find_first_of("\r\n") == std::string::npos;
        if (isLine && Orlu::ParseStrictJson(message.body, why)) {
            m_resources.Change(message.path, message.body, this);
        } else {
            kLog.Log(2, "{}: {} changed to what is no JSON: {}", m_name, message.path, why);
        }
    }

    /// A request of the service itself.
    void TakeRequest(const LinkMessage& message)
    {
        const auto reply =
            std::make_shared<Reply>([weak = weak_from_this(), id = message.id](Answer answer) {
                const auto self = weak.lock();
                if (self && !self->m_hasEnded) {
                    LinkMessage response;
                    response.type = LinkMessage::Type::kAnswer;
                    response.id = id;
                    response.isError = answer.status != 200;
                    response.body = std::move(answer.body);
                    self->Send(response);
                }
            });
        m_resources.Request(message.method, message.path, message.body, reply);
    }

    static void Tell(const std::weak_ptr<LinkSession>& weak, LinkMessage::Type type,
                     std::uint64_t id, const std::string& json)
    {
        if (const auto self = weak.lock()) {
            LinkMessage message;
            message.type = type;
            message.id = id;
            message.body = json;
            self->Send(message);
        }
    }

    void Send(const LinkMessage& message) { m_channel->Send(Portico::WriteLinkMessage(message)); }

    void End(const std::string& why)
    {
        if (std::exchange(m_hasEnded, true)) {
            return;
        }
        kLog.Log(2, "{}: link lost: {}", m_name.empty() ? "?" : m_name, why);
        m_channel->Close();
        m_timer.cancel();
        m_resources.WithdrawAll(this);
        for (auto& [id, pending] : std::exchange(m_pending, {})) {
            pending.reply->Give(Failure(503, "the resource's service has left"));
        }
    }

    /// The first one pending is the first to be due. Armed once for as long as any is pending.
    void Time()
    {
        if (std::exchange(m_isTimed, true)) {
            return;
        }
        m_timer.expires_at(m_pending.begin()->second.due);
        m_timer.async_wait([weak = weak_from_this()](beast::error_code stopped) {
            const auto self = weak.lock();
            if (self && !stopped) {
                self->OnTime();
            }
        });
    }

    void OnTime()
    {
        m_isTimed = false;
        while (!m_pending.empty() && m_pending.begin()->second.due <= Clock::now()) {
            const auto late = m_pending.extract(m_pending.begin());
            kLog.Log(2, "{}: no answer in {} ms", m_name, m_timeouts.answer.count());
            late.mapped().reply->Give(Failure(504, "the resource's service does not answer"));
        }
        if (!m_pending.empty()) {
            Time();
        }
    }

    struct Pending {
        ReplyPtr reply;
        Clock::time_point due;
    };

    const std::shared_ptr<Portico::LinkChannel> m_channel;
    asio::steady_timer m_timer;
    const HttpRequest m_request;
    const Share m_share;
    Resources& m_resources;
    const Timeouts m_timeouts;
    std::string m_name;  ///< Empty until hello.
    std::size_t m_registered = 0;
    std::map<std::uint64_t, Pending> m_pending;  ///< By id, so by time.
    std::uint64_t m_lastId = 0;
    bool m_isTimed = false;
    bool m_hasEnded = false;
};

}  // namespace

void ServeLink(Socket socket, HttpRequest request, const Share& share,
               const ConnectionContext& context)
{
    std::make_shared<LinkSession>(std::move(socket), std::move(request), share, context)->Accept();
}

}  // namespace PorticoApi
