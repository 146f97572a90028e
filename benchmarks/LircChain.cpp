// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/LircChain.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Bench {

namespace {

constexpr const char* kRemote = R"(begin remote
  name floor
  bits 16
  flags SPACE_ENC
  eps 30
  aeps 100
  header 9000 4500
  one 560 1690
  zero 560 560
  ptrail 560
  pre_data_bits 16
  pre_data 0x20DF
  gap 1
  begin codes
    KEY_1 0x8877
  end codes
end remote
)";
constexpr const char* kSendOnce = "SEND_ONCE floor KEY_1\n";
constexpr std::string_view kSuccess = "SUCCESS\nEND\n";

}  // namespace

PulseSink::PulseSink(const std::string& path)
    : m_listener(ListenAt(path)), m_stop(::eventfd(0, EFD_CLOEXEC)), m_thread([this] { Run(); })
{
}

PulseSink::~PulseSink()
{
    ::eventfd_write(m_stop.Get(), 1);
    m_thread.join();
}

Clock::time_point PulseSink::LastArrival() const
{
    return Clock::time_point(Clock::duration(m_lastArrival));
}

void PulseSink::Run()
{
    Descriptor device;
    std::array<char, 65536> bytes{};
    while (true) {
        std::array<pollfd, 2> events = {
            {{m_stop.Get(), POLLIN, 0}, {(device ? device : m_listener).Get(), POLLIN, 0}}};
        ::poll(events.data(), events.size(), -1);
        if (events[0].revents != 0) {
            return;
        }
        if (!device) {
            device = AcceptFrom(m_listener);
            continue;
        }
        const ssize_t got = ::recv(device.Get(), bytes.data(), bytes.size(), 0);
        if (got <= 0) {
            device.Reset();
            continue;
        }
        m_lastArrival = Clock::now().time_since_epoch().count();
        m_bytes += static_cast<std::uint64_t>(got);
    }
}

std::vector<std::string> LircChain::LayOut(const std::filesystem::path& folder,
                                           const std::string& lircd)
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const auto path = [&folder](const char* name) {
        return (folder / name).string();
    };
    std::ofstream(folder / "remote.conf") << kRemote;
    return {lircd,       "--nodaemon", "--driver=default", "--device",         path("device"),
            "--output",  path("out"),  "--pidfile",        path("pid"),        "--options-file",
            "/dev/null", "--logfile",  path("lirc.log"),   path("remote.conf")};
}

LircChain::LircChain(const std::filesystem::path& folder, const std::string& lircd)
    : m_command(LayOut(folder, lircd)),
      m_sink(folder / "device"),
      m_program(m_command, folder, 2),
      m_stream(ConnectAsSoonAsPossible(folder / "out"))
{
    SendKey();
    m_frameBytes = m_sink.Bytes();
}

KeyClient::Times LircChain::SendKey()
{
    const auto wanted = m_sink.Bytes() + std::max<std::uint64_t>(m_frameBytes, 1);
    const auto begin = Clock::now();
    m_stream.PutBytes(kSendOnce);
    m_stream.Flush();
    while (TakeReplies() == 0) {
    }
    const auto answered = Clock::now();
    // lircd answers without waiting for its device.
    while (m_sink.Bytes() < wanted && Clock::now() - answered < std::chrono::seconds(5)) {
    }
    return {m_sink.LastArrival() - begin, answered - begin};
}

Clock::duration LircChain::SendKeys(std::size_t count, std::size_t window)
{
    const auto begin = Clock::now();
    std::size_t sent = 0;
    for (std::size_t answered = 0; answered < count;) {
        for (; sent < count && sent - answered < window; ++sent) {
            m_stream.PutBytes(kSendOnce);
        }
        m_stream.Flush();
        answered += TakeReplies();
    }
    return Clock::now() - begin;
}

std::size_t LircChain::TakeReplies()
{
    if (!m_stream.Fill()) {
        throw std::runtime_error("lircd has gone");
    }
    m_in += m_stream.TakeBytes();
    if (m_in.find("ERROR") != std::string::npos) {
        throw std::runtime_error("lircd refuses a key");
    }
    std::size_t replies = 0;
    std::size_t end = 0;
    for (std::size_t at = 0; (at = m_in.find(kSuccess, end)) != std::string::npos; ++replies) {
        end = at + kSuccess.size();
    }
    m_in.erase(0, end);
    return replies;
}

}  // namespace Bench
