// SPDX-License-Identifier: Apache-2.0

#include "orlu/UnixSocket.h"

#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <boost/asio/bind_allocator.hpp>

#include "orlu/DPrint.h"
#include "orlu/Limits.h"

namespace Orlu {

namespace {

const DPrint s_log("IPC");

/// Enough reads for all that the kernel may still hold of a closed connection.
constexpr int kLastReads = 64;

bool IsTemporary(int error)
{
    return error == EAGAIN || error == EINTR;
}

}  // namespace

UnixSocket::UnixSocket(std::shared_ptr<AsioTaskQueue> queue, LocalSocket socket, std::string peer)
    : m_queue(std::move(queue)), m_socket(std::move(socket)), m_peer(std::move(peer))
{
}

UnixSocket::~UnixSocket()
{
    Release();
}

void UnixSocket::Receive(OnBytes bytes, OnClosed closed)
{
    m_bytes = std::make_shared<const OnBytes>(std::move(bytes));
    m_closed = std::move(closed);
    if (m_failed) {
        PostFail();
    } else if (m_open) {
        WaitReadable();
    }
}

void UnixSocket::WaitReadable()
{
    auto readable = [weak = weak_from_this()](const boost::system::error_code& error) {
        const auto self = weak.lock();
        if (self && !error) {
            self->ReadOnce();
        }
    };
    m_socket.async_wait(LocalSocket::wait_read,
                        boost::asio::bind_allocator(m_queue->ForWaits(), readable));
}

void UnixSocket::ReadOnce()
{
    if (m_open) {
        Read();
    }
    if (m_open) {
        // At the end of the wake-up, so that the answers of this read go out before the next wait
        // is set up.
        m_queue->AtEndOfWakeUp([weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self && self->m_open) {
                self->WaitReadable();
            }
        });
    }
}

bool UnixSocket::Read()
{
    const auto buffer = m_queue->ReadBuffer();
    const auto size = ::recv(m_socket.native_handle(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size > 0) {
        // Held, because the handler may close this socket, which drops the handler.
        const auto bytes = m_bytes;
        (*bytes)(buffer.first(static_cast<std::size_t>(size)));
        return m_open;
    }
    if (size == 0 || !IsTemporary(errno)) {
        Fail();
    }
    return false;
}

std::uint8_t* UnixSocket::Extend(std::size_t size)
{
    if (!m_open || m_failed) {
        return nullptr;
    }
    const auto end = m_out.size();
    if (end - m_sent + size > Limits::kSendQueueBytes) {
        s_log.Log(2, "{} has stopped reading and is cut off", m_peer);
        // Not at once: the caller is in the middle of its own work and does not expect `closed`.
        PostFail();
        return nullptr;
    }
    m_out.resize(end + size);
    if (!m_flushing) {
        m_flushing = true;
        m_queue->AtEndOfWakeUp([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->Flush();
            }
        });
    }
    return reinterpret_cast<std::uint8_t*>(m_out.data() + end);
}

void UnixSocket::Flush()
{
    // A wait for the socket is under way and will flush.
    if (m_blocked) {
        return;
    }
    while (m_open && m_sent < m_out.size()) {
        const auto size = ::send(m_socket.native_handle(), m_out.data() + m_sent,
                                 m_out.size() - m_sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (size > 0) {
            m_sent += static_cast<std::size_t>(size);
        } else if (IsTemporary(errno)) {
            WaitWritable();
            return;
        } else {
            PostFail();
            return;
        }
    }
    m_flushing = false;
    m_sent = 0;
    m_out.clear();
    if (m_out.capacity() > Limits::kReadBytes) {
        m_out.shrink_to_fit();
    }
}

void UnixSocket::WaitWritable()
{
    if (m_sent > Limits::kReadBytes) {
        // Sent bytes are removed in large pieces only, because removing them moves all that follow.
        m_out.erase(0, std::exchange(m_sent, 0));
    }
    m_blocked = true;
    m_socket.async_wait(LocalSocket::wait_write,
                        [weak = weak_from_this()](const boost::system::error_code& error) {
                            const auto self = weak.lock();
                            if (self && !error) {
                                self->m_blocked = false;
                                self->Flush();
                            }
                        });
}

void UnixSocket::PostFail()
{
    m_failed = true;
    m_queue->Post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self || !self->m_bytes) {
            return;
        }
        // What the peer sent before it closed the connection is still read.
        for (int i = 0; i < kLastReads && self->m_open && self->Read(); ++i) {
        }
        self->Fail();
    });
}

void UnixSocket::Fail()
{
    if (!m_open) {
        return;
    }
    // Taken out first: `Release` drops the callbacks, and the call may destroy this socket.
    const auto closed = std::move(m_closed);
    Release();
    if (closed) {
        closed();
    }
}

void UnixSocket::Close()
{
    Release();
}

void UnixSocket::NotifyGone(Work gone)
{
    m_gone = std::move(gone);
}

void UnixSocket::Release()
{
    if (!std::exchange(m_open, false)) {
        return;
    }
    boost::system::error_code ignored;
    m_socket.close(ignored);
    std::string().swap(m_out);
    // Moved out of the members first, because what they hold may hold this socket.
    const auto bytes = std::exchange(m_bytes, nullptr);
    const auto closed = std::exchange(m_closed, nullptr);
    if (const auto gone = std::exchange(m_gone, nullptr)) {
        gone();
    }
}

}  // namespace Orlu
