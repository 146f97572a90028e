// SPDX-License-Identifier: Apache-2.0

#include "ProtoBufs/LpmServiceMessages.pb.h"
#include "infrared/CodesetBinary.h"
#include "lpm/BlasterProtocol.h"
#include "lpm/DeviceRoom.pb.h"
#include "orlu/IPCMessageEnvelope.pb.h"
#include "support/TemporaryRoot.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

using namespace LpmServiceMessages;

namespace {

constexpr int kPatienceMs = 20000;

/// Bytes as they come; empty at the end of the stream or when nothing comes for too long.
std::string ReadSome(int fd)
{
    pollfd wait{fd, POLLIN, 0};
    std::array<char, 4096> buffer{};
    if (poll(&wait, 1, kPatienceMs) != 1) {
        return {};
    }
    const ssize_t size = read(fd, buffer.data(), buffer.size());
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

/// The real program; its lines come on standard output, the record among them.
class Program {
public:
    explicit Program(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), LPM_SERVICE);
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        if (pipe(in.data()) != 0 || pipe(out.data()) != 0) {
            return;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        for (const int fd : {in[0], in[1], out[0], out[1]}) {
            posix_spawn_file_actions_addclose(&actions, fd);
        }
        posix_spawn(&m_pid, LPM_SERVICE, &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(in[0]);
        close(out[1]);
        m_in = in[1];
        m_out = out[0];
    }
    ~Program()
    {
        kill(m_pid, SIGKILL);
        close(m_in);
        close(m_out);
        if (!m_ended) {
            waitpid(m_pid, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The next line that holds `text`; those before it are dropped.
    std::string LineWith(const std::string& text)
    {
        for (std::string line = Line(); !line.empty(); line = Line()) {
            if (line.find(text) != std::string::npos) {
                return line;
            }
        }
        ADD_FAILURE() << "no line with " << text;
        return {};
    }

    void Say(const std::string& line) const
    {
        EXPECT_EQ(write(m_in, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }

    /// Exit code behind the signal.
    int End(int signal)
    {
        int status = 0;
        kill(m_pid, signal);
        waitpid(m_pid, &status, 0);
        m_ended = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    std::string Line()
    {
        while (m_text.find('\n') == std::string::npos) {
            const std::string more = ReadSome(m_out);
            if (more.empty()) {
                return {};
            }
            m_text += more;
        }
        const std::string line = m_text.substr(0, m_text.find('\n'));
        m_text.erase(0, line.size() + 1);
        return line;
    }

    pid_t m_pid = 0;
    int m_in = -1;
    int m_out = -1;
    bool m_ended = false;
    std::string m_text;
};

/// A connection as any program would make it: length words and envelopes on a socket.
class RawClient {
public:
    RawClient(const TemporaryRoot& root, const std::string& service)
        : m_fd(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = root.Path() + "/run/orlu/" + service + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const void* raw = &address;
        EXPECT_EQ(connect(m_fd, static_cast<const sockaddr*>(raw), sizeof address), 0);
    }
    ~RawClient() { close(m_fd); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    void Send(std::uint32_t id, std::uint32_t token, const google::protobuf::Message& message) const
    {
        IPCMessageEnvelope envelope;
        envelope.set_id(id);
        envelope.set_token(token);
        envelope.set_kind(token > 0 ? 1 : 0);
        envelope.set_payload_type(message.GetDescriptor()->name());
        envelope.set_payload(message.SerializeAsString());
        const std::string body = envelope.SerializeAsString();
        std::string bytes{0, 0, static_cast<char>(body.size() >> 8),
                          static_cast<char>(body.size())};
        bytes += body;
        EXPECT_EQ(write(m_fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    void SendFrame(std::uint32_t id, std::uint32_t token, std::string_view hexFrame) const
    {
        TRS_BlasterMsg_t message;
        message.set_blaster_msg(Lpm::FromHex(hexFrame).value());
        LPMIpcServicePacket packet;
        packet.set_destination(IPC_DEVICE_LPM);
        packet.set_nested_message(message.SerializeAsString());
        packet.set_msg_typename("TRS_BlasterMsg_t");
        Send(id, token, packet);
    }

    IPCMessageEnvelope Receive()
    {
        IPCMessageEnvelope envelope;
        for (std::size_t size = 4; m_bytes.size() < size;) {
            const std::string more = ReadSome(m_fd);
            m_bytes += more;
            if (more.empty()) {
                return envelope;
            }
            if (m_bytes.size() >= 4) {
                const auto head = Lpm::AsBytes(m_bytes);
                size = 4U + (static_cast<std::size_t>(head[2]) << 8U) + head[3];
            }
        }
        const auto head = Lpm::AsBytes(m_bytes);
        const std::size_t size = (static_cast<std::size_t>(head[2]) << 8U) + head[3];
        envelope.ParseFromString(m_bytes.substr(4, size));
        m_bytes.erase(0, 4 + size);
        return envelope;
    }

private:
    int m_fd;
    std::string m_bytes;
};

std::string Codeset()
{
    std::string why;
    const std::vector<Lpm::CodesetGroup> groups = {{.protocol = Lpm::Protocol::kNecx}};
    const std::vector<Lpm::CodesetKey> keys = {{1, 0, 0x5bc401}};
    const auto bytes = Lpm::CodesetBinary::Compose(groups, keys, why).value();
    return {bytes.begin(), bytes.end()};
}

double MsOf(const std::string& line)
{
    return std::strtod(line.c_str() + std::strlen("{\"ms\": "), nullptr);
}

TEST(LpmProcess, ServesKeysToItsDevicesAndEndsWhatIsLeftRunning)
{
    const TemporaryRoot root;
    root.Write("/codesets/T2051.bin", Codeset());
    root.Write("/codesets/T0001.bin", "damaged");
    Program program({"--record", "/dev/stdout", "--devices", LIVING_ROOM, "--codesets",
                     root.Path() + "/codesets"});
    ASSERT_EQ(program.LineWith("ready"), "ready");

    std::optional<RawClient> client(std::in_place, root, "LpmService");
    client->SendFrame(80, 7, "000701080301800000");
    const IPCMessageEnvelope reply = client->Receive();
    EXPECT_EQ(reply.id(), 80U);
    EXPECT_EQ(reply.token(), 7U);
    EXPECT_EQ(reply.kind(), 2U);
    EXPECT_EQ(reply.payload(), std::string("\x0a\x02\x01\x00", 4));
    EXPECT_NE(program.LineWith("\"id\": 80").find("\"frame\": \"000701080301800000\"}"),
              std::string::npos);
    EXPECT_NE(program.LineWith("\"device\":\"television\"").find("\"power\":true"),
              std::string::npos);

    RawClient watcher(root, "DeviceRoom");
    watcher.Send(LpmDevices::DEVICE_ROOM_STATE, 1, LpmDevices::DeviceRoomRequest());
    LpmDevices::DeviceRoomState state;
    EXPECT_TRUE(state.ParseFromString(watcher.Receive().payload()));
    const auto television = state.json().find("\"television\":{");
    ASSERT_NE(television, std::string::npos) << state.json();
    EXPECT_NE(state.json().find("\"power\":true", television), std::string::npos) << state.json();

    program.Say("not JSON\n{\"event83\": \"0100\"}\n");
    EXPECT_EQ(client->Receive().id(), 83U);

    program.LineWith("\"on\": false");
    client->SendFrame(82, 0, "000701080301000000");
    const double begun = MsOf(program.LineWith("\"on\": true"));
    client.reset();
    EXPECT_LE(MsOf(program.LineWith("\"on\": false")) - begun, 250.0);
    EXPECT_EQ(program.End(SIGTERM), 0);
}

}  // namespace
