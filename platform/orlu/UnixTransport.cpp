// SPDX-License-Identifier: Apache-2.0

#include "orlu/UnixTransport.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "orlu/AsioTaskQueue.h"
#include "orlu/DPrint.h"
#include "orlu/UnixSocket.h"

namespace Orlu {

namespace {

const DPrint s_log("IPC");

using Protocol = boost::asio::local::stream_protocol;
using Queue = std::shared_ptr<AsioTaskQueue>;

/// How long a listener that cannot accept, for lack of descriptors for example, waits. Without the
/// wait it would fail again at once, in a busy loop.
constexpr MonotonicMs kAcceptPause{1000};

std::string Reason(int error)
{
    return std::generic_category().message(error);
}

std::optional<ucred> PeerOf(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        return std::nullopt;
    }
    return peer;
}

std::string PeerText(const std::optional<ucred>& peer)
{
    return peer ? fmt::format("uid {} pid {}", peer->uid, peer->pid) : "unknown peer";
}

/// True if the peer may connect; otherwise a log line.
bool Admit(const std::optional<ucred>& peer, const std::string& path)
{
    if (peer && MayTalk(::geteuid(), peer->uid)) {
        return true;
    }
    s_log.Log(2, "refused {} at {}", PeerText(peer), path);
    return false;
}

std::optional<Protocol::endpoint> EndpointOf(const std::string& path)
{
    if (path.empty() || path.size() >= sizeof(sockaddr_un::sun_path)) {
        return std::nullopt;
    }
    return Protocol::endpoint(path);
}

/// Makes the folder of the socket, accessible to this user only.
bool MakeFolder(const std::string& path)
{
    const auto folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    if (::mkdir(folder.c_str(), S_IRWXU) == 0) {
        return true;
    }
    return errno == EEXIST && ::chmod(folder.c_str(), S_IRWXU) == 0;
}

/// Removes a socket file without a listener. Gives the reason why the path cannot be used, if any.
std::string ClearPath(const std::string& path, const Protocol::endpoint& endpoint)
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? "" : Reason(errno);
    }
    if (!S_ISSOCK(status.st_mode)) {
        return "something else stands there";
    }
    boost::asio::io_context context;
    LocalSocket probe(context);
    boost::system::error_code error;
    probe.open(Protocol(), error);
    // A listener whose queue is full would block the probe.
    probe.non_blocking(true, error);
    probe.connect(endpoint, error);
    // Only a refusal proves that there is no listener.
    if (error != boost::asio::error::connection_refused) {
        return "another process serves it";
    }
    return ::unlink(path.c_str()) == 0 || errno == ENOENT ? "" : Reason(errno);
}

/// Accepts connections at one path. Its handle owns it; the acceptor's handlers hold it weakly.
class Listener final : public std::enable_shared_from_this<Listener> {
public:
    Listener(Queue queue, std::string path, std::function<void(SocketPtr)> accepted)
        : m_queue(std::move(queue)),
          m_path(std::move(path)),
          m_accepted(std::move(accepted)),
          m_acceptor(m_queue->Context()),
          m_pause(m_queue->CreateAlarm())
    {
    }

    /// Gives the reason for a failure.
    std::string Open()
    {
        const auto endpoint = EndpointOf(m_path);
        if (!endpoint) {
            return "the path is too long";
        }
        if (!MakeFolder(m_path)) {
            return Reason(errno);
        }
        if (auto reason = ClearPath(m_path, *endpoint); !reason.empty()) {
            return reason;
        }
        boost::system::error_code error;
        m_acceptor.open(Protocol(), error);
        // The mode is set on the descriptor before the file exists, so the file is never open to
        // others.
        if (error || ::fchmod(m_acceptor.native_handle(), S_IRUSR | S_IWUSR) != 0) {
            return error ? error.message() : Reason(errno);
        }
        m_acceptor.bind(*endpoint, error);
        if (error) {
            return error.message();
        }
        m_bound = true;
        m_acceptor.listen(boost::asio::socket_base::max_listen_connections, error);
        return error ? error.message() : "";
    }

    void Accept()
    {
        m_acceptor.async_accept(
            [weak = weak_from_this()](const boost::system::error_code& error, LocalSocket socket) {
                if (const auto self = weak.lock(); self && self->m_acceptor.is_open()) {
                    self->Take(error, std::move(socket));
                }
            });
    }

    void Close()
    {
        boost::system::error_code ignored;
        m_acceptor.close(ignored);
        m_pause->Cancel();
        if (std::exchange(m_bound, false)) {
            ::unlink(m_path.c_str());
        }
    }

private:
    void Take(const boost::system::error_code& error, LocalSocket socket)
    {
        if (error) {
            Pause(error);
            return;
        }
        m_failing = false;
        // Before the callback, which may close this listener.
        Accept();
        if (const auto peer = PeerOf(socket.native_handle()); Admit(peer, m_path)) {
            m_accepted(std::make_shared<UnixSocket>(m_queue, std::move(socket), PeerText(peer)));
        }
    }

    void Pause(const boost::system::error_code& error)
    {
        if (!std::exchange(m_failing, true)) {
            s_log.Log(2, "cannot accept at {}: {}", m_path, error.message());
        }
        m_pause->Arm(Runtime().Now() + kAcceptPause, [this] { Accept(); });
    }

    const Queue m_queue;
    const std::string m_path;
    const std::function<void(SocketPtr)> m_accepted;
    Protocol::acceptor m_acceptor;
    std::unique_ptr<AlarmIF> m_pause;
    bool m_bound = false;
    bool m_failing = false;
};

class ListenHandle final : public TransportHandle {
public:
    explicit ListenHandle(std::shared_ptr<Listener> listener) : m_listener(std::move(listener)) {}
    ~ListenHandle() override { m_listener->Close(); }
    ListenHandle(const ListenHandle&) = delete;
    ListenHandle& operator=(const ListenHandle&) = delete;

private:
    std::shared_ptr<Listener> m_listener;
};

/// One attempt to connect.
class Attempt final : public TransportHandle {
public:
    struct State {
        State(LocalSocket newSocket, std::function<void(SocketPtr)> newDone)
            : socket(std::move(newSocket)), done(std::move(newDone))
        {
        }
        LocalSocket socket;
        std::function<void(SocketPtr)> done;
    };

    Attempt(const Queue& queue, const std::string& path, std::function<void(SocketPtr)> done)
        : m_state(std::make_shared<State>(LocalSocket(queue->Context()), std::move(done)))
    {
        const auto endpoint = EndpointOf(path);
        const std::weak_ptr<State> weak = m_state;
        if (!endpoint) {
            // Posted, because `done` must not be called before the constructor returns.
            queue->Post([weak] {
                if (const auto state = weak.lock()) {
                    state->done(nullptr);
                }
            });
            return;
        }
        m_state->socket.async_connect(*endpoint,
                                      [weak, queue, path](const boost::system::error_code& error) {
                                          if (const auto state = weak.lock()) {
                                              Finish(*state, queue, path, !error);
                                          }
                                      });
    }

private:
    static void Finish(State& state, const Queue& queue, const std::string& path, bool connected)
    {
        const auto done = std::move(state.done);
        const auto peer = connected ? PeerOf(state.socket.native_handle()) : std::nullopt;
        if (!connected || !Admit(peer, path)) {
            done(nullptr);
            return;
        }
        done(std::make_shared<UnixSocket>(queue, std::move(state.socket), PeerText(peer)));
    }

    std::shared_ptr<State> m_state;
};

}  // namespace

bool MayTalk(uid_t own, uid_t peer)
{
    return peer == own || peer == 0;
}

std::unique_ptr<TransportHandle> UnixTransport::Listen(const std::string& path,
                                                       const TaskQueuePtr& queue,
                                                       std::function<void(SocketPtr)> accepted)
{
    const auto listener = std::make_shared<Listener>(
        std::dynamic_pointer_cast<AsioTaskQueue>(queue), path, std::move(accepted));
    if (const auto reason = listener->Open(); !reason.empty()) {
        s_log.Log(1, "cannot listen at {}: {}", path, reason);
        listener->Close();
        return nullptr;
    }
    listener->Accept();
    return std::make_unique<ListenHandle>(listener);
}

std::unique_ptr<TransportHandle> UnixTransport::Connect(const std::string& path,
                                                        const TaskQueuePtr& queue,
                                                        std::function<void(SocketPtr)> done)
{
    return std::make_unique<Attempt>(std::dynamic_pointer_cast<AsioTaskQueue>(queue), path,
                                     std::move(done));
}

}  // namespace Orlu
