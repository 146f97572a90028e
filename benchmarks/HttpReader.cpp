// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/HttpReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Bench {

namespace {

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// The number behind `name` in a header in small letters; 0 if it is absent.
std::size_t LengthIn(const std::string& head)
{
    const std::string name = "content-length:";
    const auto at = head.find(name);
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + name.size()));
}

}  // namespace

std::uint16_t FreePort()
{
    const Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    auto address = Loopback(0);
    socklen_t size = sizeof address;
    auto* raw = reinterpret_cast<sockaddr*>(&address);
    if (::bind(socket.Get(), raw, size) != 0 || ::getsockname(socket.Get(), raw, &size) != 0) {
        throw std::runtime_error("no port is free");
    }
    return ntohs(address.sin_port);
}

HttpReader::HttpReader(std::uint16_t port) : m_host("127.0.0.1:" + std::to_string(port))
{
    const auto address = Loopback(port);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (true) {
        m_socket = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (::connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address),
                      sizeof address) == 0) {
            break;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("nobody listens on " + m_host);
        }
        std::this_thread::yield();
    }
    const int on = 1;
    ::setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool HttpReader::Read(std::string& text)
{
    std::array<char, 16384> bytes{};
    const auto size = ::recv(m_socket.Get(), bytes.data(), bytes.size(), 0);
    if (size > 0) {
        text.append(bytes.data(), static_cast<std::size_t>(size));
    }
    return size > 0;
}

std::string HttpReader::Get(const std::string& path)
{
    const std::string request = "GET " + path + " HTTP/1.1\r\nHost: " + m_host + "\r\n\r\n";
    std::string text;
    std::size_t end = std::string::npos;
    bool open = ::send(m_socket.Get(), request.data(), request.size(), MSG_NOSIGNAL) ==
                static_cast<ssize_t>(request.size());
    while (open && (end = text.find("\r\n\r\n")) == std::string::npos) {
        open = Read(text);
    }
    if (!open) {
        throw std::runtime_error("the connection to " + m_host + " ended");
    }
    std::string head = text.substr(0, end);
    std::ranges::transform(head, head.begin(), [](unsigned char c) { return std::tolower(c); });
    std::string body = text.substr(end + 4);
    const auto length = LengthIn(head);
    while (body.size() < length) {
        if (!Read(body)) {
            throw std::runtime_error("the connection to " + m_host + " ended");
        }
    }
    return head.starts_with("http/1.1 200") ? body : std::string();
}

}  // namespace Bench
