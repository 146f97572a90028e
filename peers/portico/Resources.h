// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Answer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace PorticoApi {

/// All resources of the product and of services: the handler of each method of a path, the paths
/// that are ready, and the subscribers. All on one thread.
class Resources {
public:
    /// Gets the body of a request, which is empty for GET.
    using Handler = std::function<void(const std::string& body, const ReplyPtr& reply)>;
    /// Identifies the connection that added an entry and can withdraw it. Null for the product's
    /// own.
    using Owner = const void*;
    using Paths = std::vector<std::string>;

    /// Adds the handler for a method of a path, replaces an earlier one, and makes the path ready.
    /// False if the path is the product's or there are too many paths. `id` is the owner's number
    /// for it.
    bool Serve(const std::string& method, const std::string& path, Handler handler, Owner owner,
               std::uint64_t id);

    /// Adds a handler of the product. `SetReady` sets the readiness; the handler is called in any
    /// case.
    void ServeOwn(const std::string& method, const std::string& path, Handler handler);
    void SetReady(const std::string& path, bool isReady);

    /// `changed` is called with true as soon as all paths are ready, and with each change.
    void AddInterest(const Paths& paths, Owner owner, std::uint64_t id,
                     std::function<void(bool isReady)> changed);
    void Subscribe(const std::string& path, Owner owner, std::uint64_t id,
                   std::function<void(const std::string& json)> notify);

    void Withdraw(Owner owner, std::uint64_t id);
    /// Withdraws all entries of an owner. The paths that it served stay known and become not ready,
    /// of which the listener is notified.
    void WithdrawAll(Owner owner);

    /// Notifies of a change that a service reports. Ignored if the owner does not serve the path.
    void Change(const std::string& path, const std::string& json, Owner owner);

    /// Notifies the subscribers of the path and the listener. An empty `json` means not ready; only
    /// the listener gets it.
    void Notify(const std::string& path, const std::string& json);
    void SetListener(std::function<void(const std::string& path, const std::string& json)> listener)
    {
        m_listener = std::move(listener);
    }

    /// Calls the handler, or answers with 404, 405 or 503 if there is none.
    void Request(const std::string& method, const std::string& path, const std::string& body,
                 const ReplyPtr& reply) const;
    bool IsKnown(const std::string& path) const { return m_routes.contains(path); }

private:
    struct Place {
        Handler handler;  ///< Empty if its service has left.
        Owner owner = nullptr;
        std::uint64_t id = 0;
    };
    struct Route {
        std::map<std::string, Place> methods;
        bool isOwn = false;
        bool isReady = false;
    };
    struct Interest {
        Paths paths;
        Owner owner = nullptr;
        std::uint64_t id = 0;
        std::function<void(bool)> changed;
        bool isReady = false;
    };
    struct Subscription {
        std::string path;
        Owner owner = nullptr;
        std::uint64_t id = 0;
        std::function<void(const std::string&)> notify;
    };

    static std::string Allowed(const Route& route);
    bool EvictUnused();
    bool IsReady(const Paths& paths) const;
    void UpdateInterests();
    template <class Match>
    void Remove(Match match);

    std::map<std::string, Route> m_routes;
    std::vector<Interest> m_interests;
    std::vector<Subscription> m_subscriptions;
    std::function<void(const std::string&, const std::string&)> m_listener;
};

}  // namespace PorticoApi
