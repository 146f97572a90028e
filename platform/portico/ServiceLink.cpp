// SPDX-License-Identifier: Apache-2.0

#include "portico/ServiceLink.h"

#include "orlu/DPrint.h"
#include "orlu/Limits.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace Portico {

namespace {

constexpr DPrint kLog("PorticoClient");

// The pause between attempts doubles from the first value to the longest.
constexpr Orlu::MonotonicMs kFirstPause{100};
constexpr Orlu::MonotonicMs kLongestPause{1000};

constexpr const char* kLinkLost =
    R"({"guid":"1","code":503,"subcode":0,"message":"the link to the local API was lost","type":"LinkLost"})";
constexpr const char* kTooMany =
    R"({"guid":"1","code":503,"subcode":0,"message":"too many requests wait","type":"Busy"})";
constexpr const char* kNoHandler =
    R"({"guid":"1","code":404,"subcode":0,"message":"no such resource","type":"NotFound"})";
constexpr const char* kNoAnswer =
    R"({"guid":"1","code":500,"subcode":0,"message":"the service gave no answer","type":"NoAnswer"})";

bool IsSamePlace(const LinkMessage& one, const LinkMessage& other)
{
    // An interest never takes the place of another one.
    return one.type == other.type && one.type != LinkMessage::Type::kInterest &&
           one.method == other.method && one.path == other.path;
}

}  // namespace

/// The answer to one request, given from any thread; the first one counts. If the last reference
/// goes without an answer, the consumer gets an error at once, not only after its time-out.
class ServiceLink::Reply {
public:
    Reply(std::weak_ptr<ServiceLink> link, std::shared_ptr<Orlu::AsioTaskQueue> queue,
          std::weak_ptr<LinkSocketIF> socket, std::uint64_t id)
        : m_link(std::move(link)), m_queue(std::move(queue)), m_socket(std::move(socket)), m_id(id)
    {
    }
    ~Reply()
    {
        if (!m_isDone) {
            Give(true, kNoAnswer);
        }
    }
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    void Give(bool isError, const std::string& json)
    {
        if (m_isDone.exchange(true)) {
            kLog.Put(2, "a second answer to one request was dropped");
            return;
        }
        // On its own queue the answer is sent in this wake-up.
        if (m_queue->IsCurrent()) {
            Pass(m_link, m_socket, m_id, isError, json);
            return;
        }
        m_queue->Post([link = m_link, socket = m_socket, id = m_id, isError, json] {
            Pass(link, socket, id, isError, json);
        });
    }

private:
    static void Pass(const std::weak_ptr<ServiceLink>& link,
                     const std::weak_ptr<LinkSocketIF>& socket, std::uint64_t id, bool isError,
                     const std::string& json)
    {
        if (const auto self = link.lock()) {
            self->Answer(socket, id, isError, json);
        }
    }

    const std::weak_ptr<ServiceLink> m_link;
    const std::shared_ptr<Orlu::AsioTaskQueue> m_queue;
    const std::weak_ptr<LinkSocketIF> m_socket;
    const std::uint64_t m_id;
    std::atomic<bool> m_isDone = false;
};

ServiceLink::ServiceLink(std::shared_ptr<Orlu::AsioTaskQueue> queue, std::string name,
                         std::uint16_t port, std::function<void()> connected)
    : m_queue(std::move(queue)),
      m_name(std::move(name)),
      m_port(port),
      m_connected(std::move(connected)),
      m_retry(m_queue->CreateAlarm()),
      m_pause(kFirstPause)
{
}

void ServiceLink::Open()
{
    if (m_isClosed) {
        return;
    }
    const auto weak = weak_from_this();
    const auto run = [weak](auto event) {
        if (const auto self = weak.lock()) {
            event(*self);
        }
    };
    LinkEvents events;
    events.up = [run] {
        run([](ServiceLink& self) { self.OnUp(); });
    };
    events.text = [run](std::string_view text) {
        run([text](ServiceLink& self) { self.OnText(text); });
    };
    events.down = [run](const std::string& why) {
        run([&why](ServiceLink& self) { self.OnDown(why); });
    };
    m_socket = OpenLinkSocket(*m_queue, m_port, std::move(events));
}

void ServiceLink::Close()
{
    m_isClosed = true;
    m_retry->Cancel();
    if (m_socket) {
        m_socket->Close();
        m_socket.reset();
    }
    for (auto& [id, request] : m_requests) {
        // Requests that wait for the link end as well.
        request.isSent = true;
    }
    FailSent();
    m_registrations.clear();
}

void ServiceLink::OnUp()
{
    m_isUp = true;
    m_toldOfWaiting = false;
    kLog.Log(3, "{}: link up, port {}", m_name, m_port);
    LinkMessage hello;
    hello.name = m_name;
    // The local API accepts nothing before the hello.
    Send(hello);
    for (const auto& [id, registration] : m_registrations) {
        Send(registration.message);
    }
    for (auto& [id, request] : m_requests) {
        // The text is freed: a request that was sent is never sent again.
        Send(std::exchange(request.message, {}));
        request.isSent = true;
    }
    if (m_connected) {
        m_connected();
    }
}

void ServiceLink::OnDown(const std::string& why)
{
    m_socket.reset();
    if (std::exchange(m_isUp, false)) {
        kLog.Log(2, "{}: link lost: {}", m_name, why);
    } else if (!m_toldOfWaiting) {
        kLog.Log(3, "{}: waiting for the local API at port {}: {}", m_name, m_port, why);
    }
    m_toldOfWaiting = true;
    // Before the callbacks: one of them may close the link, which cancels this attempt.
    RetryLater();
    for (auto& [id, registration] : m_registrations) {
        if (std::exchange(registration.isReady, false)) {
            registration.readiness(false);
        }
    }
    FailSent();
}

void ServiceLink::RetryLater()
{
    m_retry->Arm(Orlu::Runtime().Now() + m_pause, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->Open();
        }
    });
    m_pause = std::min(2 * m_pause, kLongestPause);
}

void ServiceLink::FailSent()
{
    for (auto next = m_requests.begin(); next != m_requests.end();) {
        // Advanced first, because the entry is erased. `respond` may add requests.
        const auto request = next++;
        if (request->second.isSent) {
            const auto respond = std::move(request->second.respond);
            m_requests.erase(request);
            respond(true, kLinkLost);
        }
    }
}

void ServiceLink::Add(Registration registration)
{
    if (m_isClosed) {
        return;
    }
    const auto& message = registration.message;
    const auto earlier = std::ranges::find_if(m_registrations, [&message](const auto& entry) {
        return IsSamePlace(entry.second.message, message);
    });
    if (m_isUp) {
        Send(message);
    }
    const auto id = message.id;
    m_registrations.emplace(id, std::move(registration));
    // Withdrawn after its successor was sent, so that the path is always served.
    if (earlier != m_registrations.end()) {
        Withdraw(earlier->first);
    }
}

void ServiceLink::Withdraw(std::uint64_t id)
{
    if (m_registrations.erase(id) > 0 && m_isUp) {
        LinkMessage withdraw;
        withdraw.type = LinkMessage::Type::kWithdraw;
        withdraw.id = id;
        Send(withdraw);
    }
}

void ServiceLink::Request(LinkMessage request, Respond respond)
{
    if (m_isClosed || m_requests.size() >= Orlu::Limits::kPendingRequests) {
        // The limit also bounds the requests that wait for a link that is down.
        respond(true, m_isClosed ? kLinkLost : kTooMany);
        return;
    }
    const auto id = request.id;
    if (m_isUp) {
        Send(request);
        request = {};
    }
    m_requests.emplace(id, Pending{std::move(request), m_isUp, std::move(respond)});
}

void ServiceLink::Changed(const std::string& path, const std::string& json)
{
    if (m_isUp) {
        LinkMessage message;
        message.type = LinkMessage::Type::kChanged;
        message.path = path;
        message.body = json;
        Send(message);
    }
}

void ServiceLink::OnText(std::string_view text)
{
    // Any message proves that the local API works, so the first attempt after the next loss comes
    // soon.
    m_pause = kFirstPause;
    std::string why;
    const auto message = ReadLinkMessage(text, why);
    if (!message) {
        kLog.Log(2, "{}: a message that is none: {}", m_name, why);
        return;
    }
    Dispatch(*message);
}

void ServiceLink::Dispatch(const LinkMessage& message)
{
    using Type = LinkMessage::Type;
    switch (message.type) {
        case Type::kRequest:
            Serve(message);
            return;
        case Type::kAnswer:
            TakeAnswer(message);
            return;
        case Type::kReady:
        case Type::kNotReady:
            TakeReadiness(message.id, message.type == Type::kReady);
            return;
        case Type::kNotify:
            TakeNotification(message);
            return;
        default:
            kLog.Log(2, "{}: a message that only a service sends", m_name);
    }
}

void ServiceLink::Serve(const LinkMessage& request)
{
    const auto found = std::ranges::find_if(m_registrations, [&request](const auto& entry) {
        const auto& message = entry.second.message;
        return message.type == LinkMessage::Type::kRegister && message.path == request.path &&
               message.method == request.method;
    });
    if (found == m_registrations.end()) {
        Answer(m_socket, request.id, true, kNoHandler);
        return;
    }
    const auto reply = std::make_shared<Reply>(weak_from_this(), m_queue, m_socket, request.id);
    found->second.serve(request.body, [reply](bool isError, const std::string& json) {
        reply->Give(isError, json);
    });
}

void ServiceLink::Answer(const std::weak_ptr<LinkSocketIF>& socket, std::uint64_t id, bool isError,
                         const std::string& json)
{
    // The consumer of a lost link got its error already. An answer on a new link could meet another
    // request with the same id.
    if (!m_isUp || socket.lock() != m_socket) {
        return;
    }
    LinkMessage answer;
    answer.type = LinkMessage::Type::kAnswer;
    answer.id = id;
    answer.isError = isError;
    answer.body = json;
    Send(answer);
}

void ServiceLink::TakeAnswer(const LinkMessage& answer)
{
    const auto found = m_requests.find(answer.id);
    if (found == m_requests.end() || !found->second.isSent) {
        // The service may have dropped the request meanwhile, which is not a failure.
        kLog.Log(4, "{}: an answer that nobody waits for", m_name);
        return;
    }
    const auto respond = std::move(found->second.respond);
    m_requests.erase(found);
    respond(answer.isError, answer.body);
}

void ServiceLink::TakeReadiness(std::uint64_t id, bool isReady)
{
    const auto found = m_registrations.find(id);
    if (found != m_registrations.end() && found->second.readiness &&
        std::exchange(found->second.isReady, isReady) != isReady) {
        found->second.readiness(isReady);
    }
}

void ServiceLink::TakeNotification(const LinkMessage& notification)
{
    const auto found = m_registrations.find(notification.id);
    if (found != m_registrations.end() && found->second.notify) {
        found->second.notify(notification.body);
    }
}

}  // namespace Portico
