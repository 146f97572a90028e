// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/Stream.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Bench {

namespace {

constexpr std::size_t kBufferBytes = 64 * 1024;
constexpr std::size_t kHeaderBytes = 4;

bool FillAddress(sockaddr_un& address, const std::string& path)
{
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return false;
    }
    path.copy(address.sun_path, path.size());
    return true;
}

const sockaddr* Base(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

std::size_t SizeAt(const char* header)
{
    std::size_t size = 0;
    for (std::size_t i = 0; i < kHeaderBytes; ++i) {
        size = size << 8 | static_cast<std::uint8_t>(header[i]);
    }
    return size;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    Reset();
    m_fd = other.Release();
    return *this;
}

int Descriptor::Release()
{
    return std::exchange(m_fd, -1);
}

void Descriptor::Reset()
{
    if (m_fd >= 0) {
        ::close(Release());
    }
}

std::string SocketPath(const std::string& root, const std::string& name)
{
    return root + "/run/orlu/" + name + ".sock";
}

std::string RootFromEnvironment()
{
    const char* const root = std::getenv("ORLU_ROOT");
    return root == nullptr ? "" : root;
}

Descriptor ListenAt(const std::string& path)
{
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    ::unlink(path.c_str());
    if (!socket || !FillAddress(address, path) ||
        ::bind(socket.Get(), Base(address), sizeof address) != 0 ||
        ::listen(socket.Get(), SOMAXCONN) != 0) {
        return Descriptor();
    }
    return socket;
}

Descriptor ConnectTo(const std::string& path)
{
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    if (!socket || !FillAddress(address, path) ||
        ::connect(socket.Get(), Base(address), sizeof address) != 0) {
        return Descriptor();
    }
    return socket;
}

Descriptor AcceptFrom(const Descriptor& listener)
{
    return Descriptor(::accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
}

Stream::Stream(Descriptor socket)
    : m_socket(std::move(socket)), m_in(std::make_unique_for_overwrite<char[]>(kBufferBytes))
{
}

bool Stream::Fill()
{
    if (m_begin > 0) {
        std::copy(m_in.get() + m_begin, m_in.get() + m_end, m_in.get());
        m_end -= std::exchange(m_begin, 0);
    }
    const auto size = ::recv(m_socket.Get(), m_in.get() + m_end, kBufferBytes - m_end, 0);
    if (size <= 0) {
        return false;
    }
    m_end += static_cast<std::size_t>(size);
    return true;
}

std::string_view Stream::TakeBytes()
{
    const std::string_view bytes(m_in.get() + m_begin, m_end - m_begin);
    m_begin = m_end = 0;
    return bytes;
}

bool Stream::Next(IPCMessageEnvelope& envelope)
{
    if (m_end - m_begin < kHeaderBytes) {
        return false;
    }
    const auto size = SizeAt(m_in.get() + m_begin);
    if (m_end - m_begin - kHeaderBytes < size) {
        return false;
    }
    const char* const body = m_in.get() + m_begin + kHeaderBytes;
    m_begin += kHeaderBytes + size;
    return envelope.ParseFromArray(body, static_cast<int>(size));
}

void Stream::Put(const IPCMessageEnvelope& envelope)
{
    const auto size = envelope.ByteSizeLong();
    for (int shift = 24; shift >= 0; shift -= 8) {
        m_out.push_back(static_cast<char>(size >> shift & 0xFF));
    }
    envelope.AppendToString(&m_out);
}

bool Stream::Flush()
{
    std::string_view rest = m_out;
    while (!rest.empty()) {
        const auto size = ::send(m_socket.Get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (size <= 0) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
    m_out.clear();
    return true;
}

void FillEnvelope(IPCMessageEnvelope& envelope, std::uint32_t id, std::uint32_t kind,
                  std::uint32_t token, const google::protobuf::Message& message)
{
    envelope.set_id(id);
    envelope.set_kind(kind);
    envelope.set_token(token);
    envelope.set_payload_type(message.GetDescriptor()->name());
    message.SerializeToString(envelope.mutable_payload());
}

}  // namespace Bench
