// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/KeyClient.h"

#include <algorithm>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/time.h>

#include "ProtoBufs/KeyValues.h"
#include "ProtoBufs/Trellan_MessageIDs.pb.h"

namespace Bench {

namespace {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

constexpr std::chrono::seconds kTimeout{10};

void SetReceiveTimeout(int fd, std::chrono::microseconds timeout)
{
    const timeval time{timeout.count() / 1'000'000, timeout.count() % 1'000'000};
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

}  // namespace

Descriptor ConnectAsSoonAsPossible(const std::string& path)
{
    const auto end = Clock::now() + kTimeout;
    while (Clock::now() < end) {
        if (auto socket = ConnectTo(path)) {
            return socket;
        }
    }
    throw std::runtime_error("nobody listens at " + path);
}

KeyClient::KeyClient(const std::string& root)
    : m_stream(ConnectAsSoonAsPossible(SocketPath(root, "TrellanService")))
{
    m_key.set_keyval(IpcProtocol::ORLU_NUMBER_5);
    m_key.set_keyaction(OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    m_key.set_codeset("T2051");
    SetReceiveTimeout(m_stream.Fd(), kTimeout);
}

void KeyClient::SendSourceList()
{
    SrcCiCodeMessage_t list;
    list.add_cicode("T2051");
    FillEnvelope(m_out, TrellanService_MESSAGE_ID_SRC_CICODES, kEvent, 0, list);
    m_stream.Put(m_out);
    m_stream.Flush();
}

void KeyClient::Warm(const LpmSink& sink)
{
    // The service drops keys until it is connected to LpmService.
    SetReceiveTimeout(m_stream.Fd(), std::chrono::milliseconds(50));
    const auto end = Clock::now() + kTimeout;
    while (Clock::now() < end) {
        const auto before = sink.Arrivals();
        PutKey();
        m_stream.Flush();
        if (WaitForReply(m_lastToken) && sink.Arrivals() > before) {
            SetReceiveTimeout(m_stream.Fd(), kTimeout);
            return;
        }
    }
    throw std::runtime_error("no key arrives at LpmService");
}

KeyClient::Times KeyClient::SendKey(const LpmSink& sink)
{
    PutKey();
    const auto start = Clock::now();
    if (!m_stream.Flush() || !WaitForReply(m_lastToken)) {
        throw std::runtime_error("a key was not answered");
    }
    const auto end = Clock::now();
    return {sink.LastArrival() - start, end - start};
}

Clock::duration KeyClient::SendKeys(std::size_t count, std::size_t window)
{
    const auto start = Clock::now();
    std::size_t sent = 0;
    std::size_t answered = 0;
    while (answered < count) {
        for (; sent < std::min(count, answered + window); ++sent) {
            PutKey();
        }
        if (!m_stream.Flush() || !m_stream.Fill()) {
            throw std::runtime_error("keys in flight were not answered");
        }
        answered += TakeReplies();
    }
    return Clock::now() - start;
}

void KeyClient::AskCloudState()
{
    FillEnvelope(m_out, TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, kRequest, ++m_lastToken,
                 CloudConnectState_t());
    m_stream.Put(m_out);
    if (!m_stream.Flush() || !WaitForReply(m_lastToken)) {
        throw std::runtime_error("the state of the cloud was not answered");
    }
}

void KeyClient::PutKey()
{
    FillEnvelope(m_out, TrellanService_MESSAGE_ID_ORLU_KEY_REQ, kRequest, ++m_lastToken, m_key);
    m_stream.Put(m_out);
}

bool KeyClient::WaitForReply(std::uint32_t token)
{
    while (true) {
        while (m_stream.Next(m_in)) {
            if (m_in.kind() == kReply && m_in.token() == token) {
                return true;
            }
        }
        if (!m_stream.Fill()) {
            return false;
        }
    }
}

std::size_t KeyClient::TakeReplies()
{
    std::size_t replies = 0;
    while (m_stream.Next(m_in)) {
        replies += std::size_t{m_in.kind() == kReply};
    }
    return replies;
}

}  // namespace Bench
