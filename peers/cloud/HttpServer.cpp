// SPDX-License-Identifier: Apache-2.0

#include "cloud/HttpServer.h"

#include "orlu/Limits.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <chrono>
#include <utility>

namespace Cloud {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;

constexpr std::chrono::seconds kIdleLimit(30);
constexpr std::chrono::seconds kLingerLimit(2);
/// A client that goes on sending for ever is cut off.
constexpr std::size_t kLingerBytes = 16 * kRequestBytes;
constexpr std::chrono::milliseconds kAcceptPause(100);

/// One connection, which reads and answers requests in turn. The pending operation owns it.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(tcp::socket socket, CloudService& service, std::shared_ptr<int> share)
        : m_stream(std::move(socket)),
          m_timer(m_stream.get_executor()),
          m_service(service),
          m_share(std::move(share))
    {
    }

    void ReadHead()
    {
        m_parser.emplace();
        m_parser->body_limit(kRequestBytes);
        m_stream.expires_after(kIdleLimit);
        http::async_read_header(
            m_stream, m_buffer, *m_parser,
            [self = shared_from_this()](beast::error_code error, std::size_t /*bytes*/) {
                self->OnHead(error);
            });
    }

private:
    void OnHead(beast::error_code error)
    {
        if (error) {
            Refuse(error);
            return;
        }
        if (beast::iequals(m_parser->get()[http::field::expect], "100-continue")) {
            Continue();
            return;
        }
        ReadBody();
    }

    /// A client may wait for this answer before it sends the body.
    void Continue()
    {
        m_continue = http::response<http::empty_body>(http::status::continue_, 11);
        http::async_write(
            m_stream, m_continue,
            [self = shared_from_this()](beast::error_code error, std::size_t /*bytes*/) {
                if (!error) {
                    self->ReadBody();
                }
            });
    }

    void ReadBody()
    {
        http::async_read(
            m_stream, m_buffer, *m_parser,
            [self = shared_from_this()](beast::error_code error, std::size_t /*bytes*/) {
                if (error) {
                    self->Refuse(error);
                } else {
                    self->OnRequest();
                }
            });
    }

    void OnRequest()
    {
        const auto& request = m_parser->get();
        if (request.target() != HttpServer::kTarget) {
            Send(static_cast<unsigned>(http::status::not_found), "");
            return;
        }
        if (request.method() != http::verb::post) {
            Send(static_cast<unsigned>(http::status::method_not_allowed), "");
            return;
        }
        CloudAnswer answer = m_service.Answer(request.body());
        if (answer.delay.count() == 0) {
            Send(answer.httpStatus, std::move(answer.body));
            return;
        }
        // The scripted delay is not the client's fault, so it does not count as idle time.
        m_stream.expires_never();
        m_timer.expires_after(answer.delay);
        m_timer.async_wait(
            [self = shared_from_this(), answer = std::move(answer)](beast::error_code) mutable {
                self->Send(answer.httpStatus, std::move(answer.body));
            });
    }

    /// Answers a malformed request. A client that has closed or was too slow gets no answer.
    void Refuse(beast::error_code error)
    {
        const bool tooLarge = error == http::error::body_limit;
        const bool gone = error == http::error::end_of_stream ||
                          error == http::error::partial_message ||
                          error.category() != make_error_code(http::error::body_limit).category();
        if (gone) {
            return;
        }
        m_mustClose = true;
        Send(static_cast<unsigned>(tooLarge ? http::status::payload_too_large
                                            : http::status::bad_request),
             "");
    }

    void Send(unsigned status, std::string body)
    {
        const bool keep = !m_mustClose && m_parser->get().keep_alive();
        m_response = {};
        m_response.result(status);
        m_response.keep_alive(keep);
        if (status == static_cast<unsigned>(http::status::method_not_allowed)) {
            m_response.set(http::field::allow, "POST");
        }
        if (!body.empty()) {
            m_response.set(http::field::content_type, "application/json");
        }
        m_response.body() = std::move(body);
        m_response.prepare_payload();
        m_stream.expires_after(kIdleLimit);
        http::async_write(
            m_stream, m_response,
            [self = shared_from_this(), keep](beast::error_code error, std::size_t /*bytes*/) {
                if (!error && keep) {
                    self->ReadHead();
                } else if (!error) {
                    self->Close();
                }
            });
    }

    /// Reads what the client still sends. If unread bytes were left, the system would reset the
    /// connection, and the client could lose the answer.
    void Close()
    {
        beast::error_code ignored;
        m_stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
        m_stream.expires_after(kLingerLimit);
        Discard();
    }

    void Discard()
    {
        m_buffer.clear();
        m_stream.async_read_some(
            m_buffer.prepare(kRequestBytes),
            [self = shared_from_this()](beast::error_code error, std::size_t bytes) {
                self->m_discarded += bytes;
                if (!error && self->m_discarded < kLingerBytes) {
                    self->Discard();
                }
            });
    }

    beast::tcp_stream m_stream;
    asio::steady_timer m_timer;
    CloudService& m_service;
    std::shared_ptr<int> m_share;
    beast::flat_buffer m_buffer;
    std::optional<http::request_parser<http::string_body>> m_parser;
    http::response<http::empty_body> m_continue;
    http::response<http::string_body> m_response;
    bool m_mustClose = false;
    std::size_t m_discarded = 0;
};

}  // namespace

HttpServer::HttpServer(asio::io_context& context, CloudService& service)
    : m_service(service), m_acceptor(context), m_pause(context)
{
}

std::optional<std::uint16_t> HttpServer::Listen(std::uint16_t port, std::string& why)
{
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    boost::system::error_code error;
    m_acceptor.open(endpoint.protocol(), error);
    if (!error) {
        m_acceptor.set_option(asio::socket_base::reuse_address(true), error);
    }
    if (!error) {
        m_acceptor.bind(endpoint, error);
    }
    if (!error) {
        m_acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        why = "port " + std::to_string(port) + ": " + error.message();
        return std::nullopt;
    }
    Accept();
    return m_acceptor.local_endpoint(error).port();
}

void HttpServer::Accept()
{
    m_acceptor.async_accept([this](boost::system::error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted) {
            return;
        }
        if (error) {
            // Without free descriptors, for example, accepting fails at once again and again.
            m_pause.expires_after(kAcceptPause);
            m_pause.async_wait([this](boost::system::error_code stopped) {
                if (!stopped) {
                    Accept();
                }
            });
            return;
        }
        // This server holds one of the shares, so the limit is reached at a count above it.
        if (static_cast<std::size_t>(m_connections.use_count()) <= Orlu::Limits::kConnections) {
            std::make_shared<Connection>(std::move(socket), m_service, m_connections)->ReadHead();
        }
        Accept();
    });
}

}  // namespace Cloud
