// SPDX-License-Identifier: Apache-2.0

#include "portico/PorticoClient.h"

#include "orlu/DPrint.h"
#include "portico/ServiceLink.h"

#include <atomic>
#include <charconv>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace {

using Portico::LinkMessage;
using Portico::ServiceLink;

constexpr DPrint kLog("PorticoClient");

using QueuePtr = std::shared_ptr<Orlu::AsioTaskQueue>;

constexpr const char* kBadPath =
    R"({"guid":"1","code":404,"subcode":0,"message":"no such resource","type":"NotFound"})";

/// The thread for links without a task, shared by them; it ends with the last of them.
class LinkThread {
public:
    static std::shared_ptr<LinkThread> Get()
    {
        static std::mutex mutex;
        static std::weak_ptr<LinkThread> shared;
        const std::lock_guard lock(mutex);
        auto thread = shared.lock();
        if (!thread) {
            thread = std::make_shared<LinkThread>();
            shared = thread;
        }
        return thread;
    }

    LinkThread() { m_queue->Start({}); }
    ~LinkThread()
    {
        // Queued, so that it runs after the work that closes the last link.
        m_queue->Post([queue = m_queue] { queue->Stop(); });
        m_queue->Join();
    }
    LinkThread(const LinkThread&) = delete;
    LinkThread& operator=(const LinkThread&) = delete;

    const QueuePtr& Queue() const { return m_queue; }

private:
    QueuePtr m_queue = std::make_shared<Orlu::AsioTaskQueue>("PorticoClient");
};

/// The queue, if it belongs to a task with a thread and a loop; otherwise nothing, as on a test's
/// runtime.
QueuePtr LoopOf(Orlu::TaskQueueIF* queue)
{
    auto* loop = dynamic_cast<Orlu::AsioTaskQueue*>(queue);
    return loop ? loop->shared_from_this() : nullptr;
}

class Client final : public PorticoClientIF {
public:
    Client(std::string name, std::uint16_t port, std::function<void()> connected)
        : m_name(std::move(name)), m_port(port), m_connected(std::move(connected))
    {
        if (m_connected) {
            // Only a client with this callback needs the link before its first registration.
            RunOn(nullptr);
        }
    }
    ~Client() override
    {
        if (m_link) {
            // The link is used on its own queue only, and this may be another thread.
            Post([](ServiceLink& link) { link.Close(); });
        }
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    CallbackConnection RegisterEndpointsOfInterest(const Paths& paths,
                                                   const AsyncCallback<Paths>& ready,
                                                   const AsyncCallback<Paths>& notReady) override
    {
        for (const auto& path : paths) {
            if (!CheckPath(path)) {
                return {};
            }
        }
        ServiceLink::Registration registration;
        registration.message.type = LinkMessage::Type::kInterest;
        registration.message.paths = paths;
        registration.readiness = [paths, ready, notReady](bool isReady) {
            (isReady ? ready : notReady)(paths);
        };
        return Add(std::move(registration), ready.Queue());
    }

protected:
    CallbackConnection RegisterText(Portico::Method method, const std::string& path,
                                    const Serve& serve, const RegistrationOptions& options) override
    {
        ServiceLink::Registration registration;
        registration.message.type = LinkMessage::Type::kRegister;
        registration.message.method = NameOf(method);
        registration.message.path = path;
        registration.serve = serve;
        return CheckPath(path) ? Add(std::move(registration), options.queue) : CallbackConnection();
    }

    CallbackConnection RegisterNotificationText(
        const std::string& path, const std::function<void(const std::string& json)>& notify,
        const RegistrationOptions& options) override
    {
        ServiceLink::Registration registration;
        registration.message.type = LinkMessage::Type::kSubscribe;
        registration.message.path = path;
        registration.notify = notify;
        return CheckPath(path) ? Add(std::move(registration), options.queue) : CallbackConnection();
    }

    CallbackConnection SendText(Portico::Method method, const std::string& path,
                                const std::string& body, const Respond& respond, double) override
    {
        if (!CheckPath(path)) {
            respond(true, kBadPath);
            return {};
        }
        LinkMessage request;
        request.type = LinkMessage::Type::kRequest;
        request.id = ++m_lastId;
        request.method = NameOf(method);
        request.path = path;
        request.body = body;
        const auto id = request.id;
        RunOn(nullptr);
        Post([request = std::move(request), respond](ServiceLink& link) {
            link.Request(request, respond);
        });
        return Handle([id](ServiceLink& link) { link.Forget(id); });
    }

private:
    static const char* NameOf(Portico::Method method)
    {
        constexpr const char* kNames[] = {"GET", "PUT", "POST"};
        return kNames[static_cast<int>(method)];
    }

    static bool CheckPath(const std::string& path)
    {
        if (Portico::IsResourcePath(path)) {
            return true;
        }
        kLog.Log(2, "no path of a resource: {}", path);
        return false;
    }

    /// Decides where the link runs, unless that is decided: on this queue, else on the caller's,
    /// else on the shared thread.
    void RunOn(const Orlu::TaskQueuePtr& queue)
    {
        if (m_link) {
            return;
        }
        m_queue = LoopOf(queue ? queue.get() : Orlu::CurrentTaskQueue());
        if (!m_queue) {
            m_thread = LinkThread::Get();
            m_queue = m_thread->Queue();
        }
        m_link = std::make_shared<ServiceLink>(m_queue, m_name, m_port, m_connected);
        Post([](ServiceLink& link) { link.Open(); });
    }

    template <class F>
    void Post(F work) const
    {
        m_queue->Post([link = m_link, work] { work(*link); });
    }

    CallbackConnection Add(ServiceLink::Registration registration, const Orlu::TaskQueuePtr& queue)
    {
        RunOn(queue);
        const auto id = ++m_lastId;
        registration.message.id = id;
        Post([registration = std::move(registration)](ServiceLink& link) {
            link.Add(registration);
        });
        return Handle([id](ServiceLink& link) { link.Withdraw(id); });
    }

    /// Also works after the client was destroyed. Holds the link weakly, so that a handle that is
    /// kept does not keep the link.
    template <class F>
    CallbackConnection Handle(F work) const
    {
        return CallbackConnection(
            [queue = std::weak_ptr(m_queue), weak = std::weak_ptr(m_link), work] {
                const auto link = weak.lock();
                const auto thread = queue.lock();
                if (link && thread) {
                    thread->Post([link, work] { work(*link); });
                }
            });
    }

    const std::string m_name;
    const std::uint16_t m_port;
    const std::function<void()> m_connected;
    std::shared_ptr<LinkThread> m_thread;  ///< Only if the link has no task.
    QueuePtr m_queue;
    std::shared_ptr<ServiceLink> m_link;  ///< Set from the first call on.
    std::uint64_t m_lastId = 0;
};

std::uint16_t PortOr(std::uint16_t port)
{
    const char* given = std::getenv("ORLU_PORTICO_PORT");
    const std::string_view text = given ? given : "";
    std::uint16_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    // Any other text in the variable is ignored.
    const bool isPort = error == std::errc() && end == text.data() + text.size() && number > 0;
    return isPort ? number : port;
}

}  // namespace

std::shared_ptr<PorticoClientIF> PorticoClient::Create(const std::string& name,
                                                       const std::string& host, std::uint16_t port,
                                                       const std::string&, const std::string&,
                                                       const OnConnected& connected,
                                                       const OnFailure& failure,
                                                       const Portico::CommonClientCreationInfo&)
{
    // The local API is on this machine. A name look-up is not needed, and could block.
    if (host != "localhost" && host != "127.0.0.1") {
        kLog.Log(1, "{}: the local API is on this machine, not on {}", name, host);
        failure(host, PORTICO_CLIENT_BAD_ADDRESS);
        return nullptr;
    }
    std::function<void()> tell;
    if (connected) {
        tell = [connected] {
            connected();
        };
    }
    return std::make_shared<Client>(name, PortOr(port), tell);
}
