// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/LpmSink.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include "ProtoBufs/LpmServiceMessages.pb.h"

namespace Bench {

LpmSink::LpmSink(const std::string& root)
    : m_listener(ListenAt(SocketPath(root, "LpmService"))),
      m_stop(::eventfd(0, EFD_CLOEXEC)),
      m_epoll(::epoll_create1(EPOLL_CLOEXEC))
{
    if (!m_listener || !m_stop || !m_epoll) {
        throw std::system_error(errno, std::generic_category(), "LpmService's socket");
    }
    LpmServiceMessages::TRS_BlasterMsg_t success;
    success.set_blaster_msg(std::string({1, 0}));
    FillEnvelope(m_reply, 0, kReply, 0, success);
    Watch(m_listener.Get());
    Watch(m_stop.Get());
    m_thread = std::thread([this] { Run(); });
}

LpmSink::~LpmSink()
{
    ::eventfd_write(m_stop.Get(), 1);
    m_thread.join();
}

Clock::time_point LpmSink::LastArrival() const
{
    return Clock::time_point(Clock::duration(m_lastArrival));
}

void LpmSink::Watch(int fd)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    ::epoll_ctl(m_epoll.Get(), EPOLL_CTL_ADD, fd, &event);
}

void LpmSink::Run()
{
    std::array<epoll_event, 8> events{};
    while (true) {
        const int count =
            ::epoll_wait(m_epoll.Get(), events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < count; ++i) {
            const int fd = events[static_cast<std::size_t>(i)].data.fd;
            if (fd == m_stop.Get()) {
                return;
            }
            if (fd == m_listener.Get()) {
                Stream client(AcceptFrom(m_listener));
                const int clientFd = client.Fd();
                m_clients.emplace(clientFd, std::move(client));
                Watch(clientFd);
            } else if (const auto client = m_clients.find(fd); !Serve(client->second)) {
                m_clients.erase(client);
            }
        }
    }
}

bool LpmSink::Serve(Stream& client)
{
    if (!client.Fill()) {
        return false;
    }
    const auto now = Clock::now().time_since_epoch().count();
    while (client.Next(m_envelope)) {
        if (m_envelope.kind() == kRequest) {
            m_lastArrival = now;
            ++m_arrivals;
            m_reply.set_id(m_envelope.id());
            m_reply.set_token(m_envelope.token());
            client.Put(m_reply);
        }
    }
    return client.Flush();
}

}  // namespace Bench
