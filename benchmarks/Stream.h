// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <google/protobuf/message.h>

#include "orlu/IPCMessageEnvelope.pb.h"

namespace Bench {

/// Owns a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { Reset(); }
    Descriptor(Descriptor&& other) noexcept : m_fd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;

    explicit operator bool() const { return m_fd >= 0; }
    int Get() const { return m_fd; }
    int Release();
    void Reset();

private:
    int m_fd;
};

/// `name` in `$ORLU_ROOT/run/orlu`, or in the folder of that name under `root`.
std::string SocketPath(const std::string& root, const std::string& name);

/// The value of `ORLU_ROOT`; empty if it is not set.
std::string RootFromEnvironment();

/// Both are empty on failure; `errno` then says why.
Descriptor ListenAt(const std::string& path);
Descriptor ConnectTo(const std::string& path);

/// Waits for the next client.
Descriptor AcceptFrom(const Descriptor& listener);

/// One end of a connection with the least work between a program and the kernel: one `recv` for all
/// received bytes, one `send` for all frames that were put.
///
/// A frame is 4 bytes length, big-endian, and an envelope of that many bytes.
class Stream {
public:
    explicit Stream(Descriptor socket);

    int Fd() const { return m_socket.Get(); }

    /// One blocking `recv`. False if the peer has closed, or on a time-out of the socket.
    bool Fill();

    /// Takes the bytes of the last `Fill` without reading frames.
    std::string_view TakeBytes();

    /// Takes the next whole frame. False if there is none, or it is no envelope.
    bool Next(IPCMessageEnvelope& envelope);

    void PutBytes(std::string_view bytes) { m_out.append(bytes); }
    void Put(const IPCMessageEnvelope& envelope);

    /// Blocks until all is written. False if the peer has closed.
    bool Flush();

private:
    Descriptor m_socket;
    std::unique_ptr<char[]> m_in;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::string m_out;
};

/// Makes `envelope` carry `message`.
void FillEnvelope(IPCMessageEnvelope& envelope, std::uint32_t id, std::uint32_t kind,
                  std::uint32_t token, const google::protobuf::Message& message);

constexpr std::uint32_t kEvent = 0;
constexpr std::uint32_t kRequest = 1;
constexpr std::uint32_t kReply = 2;

}  // namespace Bench
