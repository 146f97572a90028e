// SPDX-License-Identifier: Apache-2.0

// The floor for the service: two sockets, and with `messages` the same protobuf messages, without
// any logic. It waits, reads once from each side that has bytes, and writes once to each side that
// gets some.

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include <sys/epoll.h>

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "benchmarks/Stream.h"

namespace Bench {

namespace {

using namespace LpmServiceMessages;      // NOLINT(google-build-using-namespace)
using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

/// Passes on the bytes between the client and LpmService.
class RelayIF {
public:
    virtual ~RelayIF() = default;
    virtual void TakeFromClient(Stream& client, Stream& lpm) = 0;
    virtual void TakeFromLpm(Stream& lpm, Stream& client) = 0;
};

class ByteRelay final : public RelayIF {
public:
    void TakeFromClient(Stream& client, Stream& lpm) override { lpm.PutBytes(client.TakeBytes()); }
    void TakeFromLpm(Stream& lpm, Stream& client) override { client.PutBytes(lpm.TakeBytes()); }
};

/// The service's messages in the service's order, without anything else.
class MessageRelay final : public RelayIF {
public:
    void TakeFromClient(Stream& client, Stream& lpm) override
    {
        while (client.Next(m_envelope)) {
            if (m_envelope.kind() == kRequest) {
                SendKey(lpm);
            }
        }
    }

    void TakeFromLpm(Stream& lpm, Stream& client) override
    {
        while (lpm.Next(m_envelope)) {
            Waiting& waiting = m_waiting[m_envelope.token() % m_waiting.size()];
            if (m_blasterMessage.ParseFromString(m_envelope.payload())) {
                waiting.message.set_response("PASS");
                FillEnvelope(m_envelope, 0, kReply, waiting.token, waiting.message);
                client.Put(m_envelope);
            }
        }
    }

private:
    struct Waiting {
        std::uint32_t token = 0;
        OrluKeyReqMessage_t message;
    };

    void SendKey(Stream& lpm)
    {
        const std::uint32_t token = ++m_lastToken;
        Waiting& waiting = m_waiting[token % m_waiting.size()];
        waiting.token = m_envelope.token();
        if (!waiting.message.ParseFromString(m_envelope.payload())) {
            return;
        }
        const auto key = static_cast<char>(waiting.message.keyval());
        const std::array<char, 9> frame = {0, 7, 1, 8, 3, key, '\x80', 0, 0};
        m_blasterMessage.set_blaster_msg(frame.data(), frame.size());
        m_packet.set_destination(IPC_DEVICE_LPM);
        m_blasterMessage.SerializeToString(m_packet.mutable_nested_message());
        m_packet.set_msg_typename("TRS_BlasterMsg_t");
        FillEnvelope(m_envelope, IPC_SEND_TO_BLASTER, kRequest, token, m_packet);
        lpm.Put(m_envelope);
    }

    std::uint32_t m_lastToken = 0;
    std::array<Waiting, 1024> m_waiting;
    IPCMessageEnvelope m_envelope;
    TRS_BlasterMsg_t m_blasterMessage;
    LPMIpcServicePacket m_packet;
};

Descriptor WaitForBoth(const Stream& client, const Stream& lpm)
{
    Descriptor epoll(::epoll_create1(EPOLL_CLOEXEC));
    for (const int fd : {client.Fd(), lpm.Fd()}) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = fd;
        ::epoll_ctl(epoll.Get(), EPOLL_CTL_ADD, fd, &event);
    }
    return epoll;
}

void Run(RelayIF& relay, Stream& client, Stream& lpm)
{
    const auto epoll = WaitForBoth(client, lpm);
    std::array<epoll_event, 2> events{};
    while (true) {
        const int count = ::epoll_wait(epoll.Get(), events.data(), 2, -1);
        for (int i = 0; i < count; ++i) {
            const bool isClient = events[static_cast<std::size_t>(i)].data.fd == client.Fd();
            if (!(isClient ? client : lpm).Fill()) {
                return;
            }
            if (isClient) {
                relay.TakeFromClient(client, lpm);
            } else {
                relay.TakeFromLpm(lpm, client);
            }
        }
        if (!lpm.Flush() || !client.Flush()) {
            return;
        }
    }
}

int Main(std::string_view mode)
{
    if (mode != "messages" && mode != "bytes") {
        std::fputs("BareRelay: messages or bytes?\n", stderr);
        return 2;
    }
    const std::string root = RootFromEnvironment();
    auto lpm = ConnectTo(SocketPath(root, "LpmService"));
    const auto listener = ListenAt(SocketPath(root, "TrellanService"));
    if (!lpm || !listener) {
        std::perror("BareRelay");
        return 1;
    }
    Stream lpmStream(std::move(lpm));
    Stream client(AcceptFrom(listener));
    ByteRelay bytes;
    MessageRelay messages;
    Run(mode == "bytes" ? static_cast<RelayIF&>(bytes) : messages, client, lpmStream);
    return 0;
}

}  // namespace

}  // namespace Bench

int main(int argc, char** argv)
{
    return Bench::Main(argc == 2 ? argv[1] : "");
}
