// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "orlu/AsioTaskQueue.h"
#include "portico/LinkMessage.h"
#include "portico/LinkSocket.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Portico {

/// A service's side of the link: establishes it, again after each loss, and keeps registrations and
/// requests. Everything runs on the given queue.
class ServiceLink : public std::enable_shared_from_this<ServiceLink> {
public:
    using Respond = std::function<void(bool isError, const std::string& json)>;

    /// One registration, interest or subscription. `message` is sent each time the link is up.
    /// Which of the functions is set depends on the type of `message`.
    struct Registration {
        LinkMessage message;
        std::function<void(const std::string& body, const Respond& respond)> serve;
        std::function<void(bool isReady)> readiness;
        std::function<void(const std::string& json)> notify;
        bool isReady = false;
    };

    ServiceLink(std::shared_ptr<Orlu::AsioTaskQueue> queue, std::string name, std::uint16_t port,
                std::function<void()> connected);
    ServiceLink(const ServiceLink&) = delete;
    ServiceLink& operator=(const ServiceLink&) = delete;

    void Open();
    /// Closes the link for ever; requests under way end with an error.
    void Close();

    /// Adds a registration. One for the same method and path, or for the same subscription,
    /// replaces the earlier one. The caller chooses the id, which is in `message`; it must not be
    /// used twice.
    void Add(Registration registration);
    void Withdraw(std::uint64_t id);

    /// Sends a request, now or when the link is up. `respond` is called once: with the answer, or
    /// with an error if the link is lost before that or too many requests wait.
    void Request(LinkMessage request, Respond respond);
    /// Tells all subscribers that the service's resource at `path` has changed. Lost if the link is
    /// down.
    void Changed(const std::string& path, const std::string& json);
    /// Drops a request: its `respond` is not called.
    void Forget(std::uint64_t id) { m_requests.erase(id); }

private:
    class Reply;
    struct Pending {
        LinkMessage message;  ///< Empty once it is sent.
        bool isSent = false;
        Respond respond;
    };

    void OnUp();
    void OnText(std::string_view text);
    void OnDown(const std::string& why);
    void RetryLater();
    void Answer(const std::weak_ptr<LinkSocketIF>& socket, std::uint64_t id, bool isError,
                const std::string& json);
    void Serve(const LinkMessage& request);
    void TakeAnswer(const LinkMessage& answer);
    void TakeReadiness(std::uint64_t id, bool isReady);
    void TakeNotification(const LinkMessage& notification);
    void Dispatch(const LinkMessage& message);
    void FailSent();
    void Send(const LinkMessage& message) { m_socket->Send(WriteLinkMessage(message)); }

    const std::shared_ptr<Orlu::AsioTaskQueue> m_queue;
    const std::string m_name;
    const std::uint16_t m_port;
    const std::function<void()> m_connected;
    std::unique_ptr<Orlu::AlarmIF> m_retry;
    Orlu::MonotonicMs m_pause;

    std::shared_ptr<LinkSocketIF> m_socket;
    bool m_isUp = false;
    bool m_isClosed = false;
    bool m_toldOfWaiting = false;
    std::map<std::uint64_t, Registration> m_registrations;  ///< By id, which is the order of `Add`.
    std::map<std::uint64_t, Pending> m_requests;
};

}  // namespace Portico
