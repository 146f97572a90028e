// SPDX-License-Identifier: Apache-2.0

#include "console/ServiceConnection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "orlu/IPCMessageRouter.h"
#include "orlu/UnixTransport.h"

namespace OrluConsole {

ServiceConnection::ServiceConnection(std::string path, Signals& signals)
    : m_path(std::move(path)), m_signals(signals)
{
}

ServiceConnection::~ServiceConnection()
{
    Close();
}

ServiceConnection::Outcome ServiceConnection::Ask(std::uint32_t id,
                                                  const google::protobuf::Message& question,
                                                  google::protobuf::Message& answer)
{
    // No answer is outstanding, so a readable socket means that the service has closed it.
    pollfd waited{m_fd, POLLIN, 0};
    if (m_fd >= 0 && ::poll(&waited, 1, 0) != 0) {
        Close();
    }
    IPCMessageEnvelope envelope;
    envelope.set_id(id);
    envelope.set_token(++m_token);
    envelope.set_kind(IPCFrames::kRequest);
    SetPayload(envelope, question);
    if ((m_fd < 0 && !Open()) || !Send(IPCFrames::Encode(envelope))) {
        return Outcome::kUnreachable;
    }
    return AwaitReply(m_token, answer);
}

bool ServiceConnection::Open()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (m_path.size() >= sizeof address.sun_path) {
        return Fail("the path is too long");
    }
    std::memcpy(address.sun_path, m_path.data(), m_path.size());
    m_reader = {};
    // Non-blocking, so that connect fails at once if the service does not accept connections.
    m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_fd < 0 ||
        ::connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return FailWithError();
    }
    // A process of another user could listen at the path and read what an engineer types.
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(m_fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
        !Orlu::MayTalk(::geteuid(), peer.uid)) {
        return Fail("another user serves it");
    }
    return true;
}

void ServiceConnection::Close()
{
    if (m_fd >= 0) {
        ::close(std::exchange(m_fd, -1));
    }
}

bool ServiceConnection::Fail(const std::string& reason)
{
    m_reason = m_path + ": " + reason;
    Close();
    return false;
}

bool ServiceConnection::FailWithError()
{
    return Fail(std::generic_category().message(errno));
}

bool ServiceConnection::Send(const std::string& bytes)
{
    // A request is far smaller than the socket's buffer, and each waits for its reply, so one send
    // takes it whole.
    const ssize_t sent = ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return sent == static_cast<ssize_t>(bytes.size()) || FailWithError();
}

bool ServiceConnection::Receive()
{
    std::array<char, 4096> piece{};
    const ssize_t size = ::recv(m_fd, piece.data(), piece.size(), 0);
    if (size <= 0) {
        return size < 0 ? FailWithError() : Fail("the service has gone");
    }
    m_received.assign(piece.data(), static_cast<std::size_t>(size));
    m_reader.Feed(
        std::span(reinterpret_cast<const std::uint8_t*>(m_received.data()), m_received.size()));
    return true;
}

ServiceConnection::Outcome ServiceConnection::AwaitReply(std::uint32_t token,
                                                         google::protobuf::Message& answer)
{
    while (m_signals.WaitFor(m_fd)) {
        if (!Receive()) {
            return Outcome::kUnreachable;
        }
        bool answered = false;
        IPCMessageEnvelope reply;
        auto status = m_reader.Next(reply);
        // Reads all frames that were received: the reader refers to m_received, which the next
        // Receive overwrites.
        for (; status == IPCFrames::Reader::Status::kFrame; status = m_reader.Next(reply)) {
            if (reply.kind() == IPCFrames::kReply && reply.token() == token) {
                answered = GetPayload(reply, answer);
            }
        }
        if (answered) {
            return Outcome::kAnswered;
        }
        if (status != IPCFrames::Reader::Status::kMore) {
            Fail(IPCFrames::Describe(status));
            return Outcome::kUnreachable;
        }
    }
    return Outcome::kInterrupted;
}

}  // namespace OrluConsole
