// SPDX-License-Identifier: Apache-2.0

#include "portico/HttpSession.h"

#include "orlu/DPrint.h"
#include "orlu/Limits.h"
#include "orlu/SystemUtils.h"
#include "portico/EventStream.h"
#include "portico/LinkSession.h"
#include "portico/OriginCheck.h"
#include "portico/PublishedFiles.h"
#include "portico/Resources.h"
#include "portico/WebFolder.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <chrono>
#include <optional>
#include <utility>

namespace PorticoApi {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using Clock = std::chrono::steady_clock;

constexpr DPrint kLog("PorticoServer");

/// An answer that takes longer makes the session watch for the consumer's close.
constexpr std::chrono::milliseconds kSwiftAnswer(500);
constexpr std::size_t kLingerBytes = std::size_t{1024} * 1024;

/// A page may load and request only resources of this server, and no other page may frame it.
constexpr std::string_view kPolicy =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
    "img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'\r\n";

constexpr std::string_view kLinkPath = "/link";
constexpr std::string_view kEventsPath = "/events";
constexpr std::string_view kFilesPath = "/payload/files/";

bool IsJson(std::string_view type)
{
    constexpr std::string_view kJson = "application/json";
    const auto name = type.substr(0, type.find_first_of("; \t"));
    return type.empty() || beast::iequals(name, kJson);
}

class HttpSession : public std::enable_shared_from_this<HttpSession> {
public:
    HttpSession(Socket socket, Share share, const ConnectionContext& context)
        : m_socket(std::move(socket)),
          m_timer(m_socket.get_executor()),
          m_share(std::move(share)),
          m_context(context)
    {
        // For the synchronous calls of Write and OnReadable, which must not block the server.
        beast::error_code ignored;
        m_socket.non_blocking(true, ignored);
    }

    void ReadHead()
    {
        m_parser.emplace();
        m_parser->header_limit(Orlu::Limits::kHeadBytes);
        m_parser->body_limit(Orlu::Limits::kBodyBytes);
        ExpiresAfter(m_context.timeouts.request);
        http::async_read_header(m_socket, m_buffer, *m_parser,
                                [self = shared_from_this()](beast::error_code error, std::size_t) {
                                    self->OnHead(error);
                                });
    }

private:
    const http::request<http::string_body>& Request() const { return m_parser->get(); }

    void OnHead(beast::error_code error)
    {
        if (error) {
            Refuse(error);
            return;
        }
        if (!MayAsk()) {
            // The body was not read, so the next request of the connection could not be found.
            m_mustClose = true;
            Send(Failure(403, "asked by or for another site"));
            return;
        }
        if (beast::iequals(Request()[http::field::expect], "100-continue")) {
            Continue();
        } else if (m_parser->is_done()) {
            OnRequest();
        } else {
            ReadBody();
        }
    }

    bool MayAsk() const
    {
        const auto& request = Request();
        const auto origin = request.find(http::field::origin);
        return request.count(http::field::host) == 1 &&
               IsOurHost(request[http::field::host], m_context.port) &&
               (origin == request.end() || IsOurOrigin(origin->value(), m_context.port));
    }

    /// A client may wait for this answer before it sends the body.
    void Continue()
    {
        m_continue = http::response<http::empty_body>(http::status::continue_, 11);
        http::async_write(m_socket, m_continue,
                          [self = shared_from_this()](beast::error_code error, std::size_t) {
                              if (!error) {
                                  self->ReadBody();
                              }
                          });
    }

    void ReadBody()
    {
        http::async_read(m_socket, m_buffer, *m_parser,
                         [self = shared_from_this()](beast::error_code error, std::size_t) {
                             if (error) {
                                 self->Refuse(error);
                             } else {
                                 self->OnRequest();
                             }
                         });
    }

    void OnRequest()
    {
        const std::string_view target = Request().target();
        const std::string path(target.substr(0, target.find('?')));
        const auto method = Request().method_string();
        if (beast::websocket::is_upgrade(Request())) {
            OnUpgrade(path);
        } else if (path == kEventsPath || path == kLinkPath) {
            OnEvents(path);
        } else if (path.starts_with(kFilesPath)) {
            SendFile(m_context.files.Find(path.substr(kFilesPath.size())));
        } else if (m_context.resources.IsKnown(path)) {
            Ask(std::string(method), path);
        } else {
            SendFile(m_context.web.Find(path));
        }
    }

    void OnUpgrade(const std::string& path)
    {
        if (path != kLinkPath) {
            Send(Failure(404, "no link here"));
            return;
        }
        ExpiresNever();
        ServeLink(std::move(m_socket), m_parser->release(), m_share, m_context);
    }

    void OnEvents(const std::string& path)
    {
        if (path == kLinkPath) {
            Send(Failure(400, "the link is a WebSocket"));
        } else if (Request().method() != http::verb::get) {
            SendNotAllowed();
        } else {
            ExpiresNever();
            m_context.events.Add(std::move(m_socket), m_share);
        }
    }

    void Ask(const std::string& method, const std::string& path)
    {
        const bool hasBody = method == "PUT" || method == "POST";
        if (hasBody && !IsJson(Request()[http::field::content_type])) {
            Send(Failure(415, "the body is to be application/json"));
            return;
        }
        if (hasBody && !StringUtils::IsUtf8(Request().body())) {
            Send(BadBody("not UTF-8 text"));
            return;
        }
        // Before the request: the handler may answer within the call.
        m_isAnswered = false;
        ExpiresAfter(kSwiftAnswer);
        const auto reply =
            std::make_shared<Reply>([self = shared_from_this()](const Answer& answer) {
                self->m_isAnswered = true;
                self->Send(answer);
            });
        m_reply = reply;
        static const std::string kNoBody;
        m_context.resources.Request(method, path, hasBody ? Request().body() : kNoBody, reply);
    }

    /// Waits for the consumer to close while the answer is pending. Starts only after kSwiftAnswer,
    /// as most answers come earlier and then save these system calls.
    void WatchForEnd()
    {
        if (std::exchange(m_isWatching, true)) {
            return;
        }
        m_socket.async_wait(Socket::wait_read, [self = shared_from_this()](beast::error_code) {
            self->m_isWatching = false;
            self->OnReadable();
        });
    }

    void OnReadable()
    {
        if (m_isAnswered) {
            return;
        }
        char byte = 0;
        beast::error_code error;
        m_socket.receive(asio::buffer(&byte, 1), Socket::message_peek, error);
        if (error == asio::error::would_block) {
            // This wait was started for an earlier request: its bytes have been read meanwhile.
            WatchForEnd();
        } else if (const auto reply = m_reply.lock(); reply && error) {
            reply->Drop();
        }
    }

    void SendFile(const std::optional<FileContent>& file)
    {
        if (!file) {
            Send(Failure(404, "no such resource"));
        } else if (Request().method() != http::verb::get) {
            SendNotAllowed();
        } else {
            Respond(200, *file->bytes, file->type, {});
        }
    }

    void SendNotAllowed()
    {
        Answer answer = Failure(405, "only GET");
        answer.allow = "GET";
        Send(answer);
    }

    /// Answers a malformed request. A client that has closed or was too slow gets no answer.
    void Refuse(beast::error_code error)
    {
        const bool isProtocol =
            error.category() == make_error_code(http::error::body_limit).category();
        if (!isProtocol || error == http::error::end_of_stream ||
            error == http::error::partial_message) {
            ExpiresNever();
            return;
        }
        kLog.Log(2, "a request is refused: {}", error.message());
        m_mustClose = true;
        Send(error == http::error::body_limit ? Failure(413, "the body is above 64 KiB")
                                              : Failure(400, "no HTTP request"));
    }

    void Send(const Answer& answer)
    {
        Respond(answer.status, answer.body, "application/json", answer.allow);
    }

    void Respond(unsigned status, const std::string& body, const char* type,
                 const std::string& allow)
    {
        m_keep = !m_mustClose && Request().keep_alive();
        m_response.assign(Request().version() == 10 ? "HTTP/1.0 " : "HTTP/1.1 ")
            .append(std::to_string(status))
            .append(" ")
            .append(http::obsolete_reason(static_cast<http::status>(status)))
            .append("\r\nContent-Type: ")
            .append(type)
            .append("\r\nContent-Length: ")
            .append(std::to_string(body.size()))
            .append("\r\nCache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n")
            .append(kPolicy);
        if (!allow.empty()) {
            m_response.append("Allow: ").append(allow).append("\r\n");
        }
        m_response.append(m_keep ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n");
        m_response.append(body);
        ExpiresAfter(m_context.timeouts.request);
        Write();
    }

    /// Writes at once, since most answers fit into the socket's buffer. Only the rest waits for the
    /// event loop.
    void Write()
    {
        beast::error_code error;
        const std::size_t sent = m_socket.write_some(asio::buffer(m_response), error);
        if (!error && sent == m_response.size()) {
            OnSent({});
            return;
        }
        asio::async_write(m_socket, asio::buffer(m_response) + sent,
                          [self = shared_from_this()](beast::error_code failure, std::size_t) {
                              self->OnSent(failure);
                          });
    }

    void OnSent(beast::error_code error)
    {
        if (!error && m_keep) {
            ReadHead();
        } else if (!error) {
            Linger();
        } else {
            ExpiresNever();
        }
    }

    /// Reads what the consumer still sends. If unread bytes were left, the system would reset the
    /// connection, and the consumer could lose the answer.
    void Linger()
    {
        beast::error_code ignored;
        m_socket.shutdown(Socket::shutdown_send, ignored);
        ExpiresAfter(m_context.timeouts.linger);
        Discard();
    }

    void Discard()
    {
        m_buffer.clear();
        m_socket.async_read_some(
            m_buffer.prepare(Orlu::Limits::kBodyBytes),
            [self = shared_from_this()](beast::error_code error, std::size_t bytes) {
                self->m_discarded += bytes;
                if (!error && self->m_discarded < kLingerBytes) {
                    self->Discard();
                } else {
                    self->ExpiresNever();
                }
            });
    }

    /// Moves the deadline and leaves a running timer as it is unless it would fire too late: OnTime
    /// starts it again. So a busy connection does not pay for a timer with each request.
    void ExpiresAfter(Clock::duration time)
    {
        m_deadline = Clock::now() + time;
        if (!m_isTimed || m_deadline < m_timer.expiry()) {
            Time();
        }
    }

    void ExpiresNever() { m_deadline = Clock::time_point::max(); }

    void Time()
    {
        m_isTimed = true;
        m_timer.expires_at(m_deadline);
        // Weak: a timer that is still running does not keep a closed connection.
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
        if (m_deadline <= Clock::now() && !m_isAnswered) {
            ExpiresNever();
            WatchForEnd();
        } else if (m_deadline <= Clock::now()) {
            if (m_parser->got_some() && !m_parser->is_done()) {
                kLog.Put(2, "half a request came, and no more in time");
            }
            beast::error_code ignored;
            m_socket.close(ignored);
        } else if (m_deadline != Clock::time_point::max()) {
            Time();
        }
    }

    Socket m_socket;
    asio::steady_timer m_timer;
    const Share m_share;
    const ConnectionContext& m_context;
    beast::flat_buffer m_buffer;
    std::optional<http::request_parser<http::string_body>> m_parser;
    http::response<http::empty_body> m_continue;
    std::string m_response;
    bool m_keep = false;
    Clock::time_point m_deadline = Clock::time_point::max();
    bool m_isTimed = false;
    /// Owned by the handler that is to answer. The reply owns the session.
    std::weak_ptr<Reply> m_reply;
    bool m_isAnswered = true;
    bool m_isWatching = false;
    bool m_mustClose = false;
    std::size_t m_discarded = 0;
};

}  // namespace

void ServeConnection(Socket socket, const Share& share, const ConnectionContext& context)
{
    std::make_shared<HttpSession>(std::move(socket), share, context)->ReadHead();
}

}  // namespace PorticoApi
