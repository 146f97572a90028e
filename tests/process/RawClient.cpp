// SPDX-License-Identifier: Apache-2.0

#include "process/RawClient.h"

#include <array>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "orlu/IPCFrames.h"
#include "orlu/IPCMessageRouter.h"

namespace ProcessTests {

RawClient::RawClient(const TemporaryRoot& folder, const std::string& service)
    : m_fd(socket(AF_UNIX, SOCK_STREAM, 0))
{
    constexpr timeval kPatience{30, 0};
    setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder.Path() + "/run/orlu/" + service + ".sock";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const void* raw = &address;
    EXPECT_EQ(connect(m_fd, static_cast<const sockaddr*>(raw), sizeof address), 0);
}

RawClient::~RawClient()
{
    close(m_fd);
}

void RawClient::Send(std::string_view bytes) const
{
    EXPECT_EQ(send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
}

void RawClient::Send(std::uint32_t id, std::uint32_t token,
                     const google::protobuf::Message& message) const
{
    IPCMessageEnvelope envelope;
    SetPayload(envelope, message);
    envelope.set_id(id);
    envelope.set_token(token);
    envelope.set_kind(token > 0 ? 1 : 0);
    Send(IPCFrames::Encode(envelope));
}

IPCMessageEnvelope RawClient::Receive() const
{
    std::array<unsigned char, 4> head{};
    EXPECT_EQ(recv(m_fd, head.data(), head.size(), MSG_WAITALL), 4) << "nothing comes";
    std::string body(static_cast<std::size_t>(head[2] << 8 | head[3]), '\0');
    recv(m_fd, body.data(), body.size(), MSG_WAITALL);
    IPCMessageEnvelope envelope;
    EXPECT_TRUE(envelope.ParseFromString(body));
    return envelope;
}

void RawClient::WaitForClose() const
{
    char byte = 0;
    EXPECT_LE(recv(m_fd, &byte, 1, 0), 0);
}

}  // namespace ProcessTests
