// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "portico/Answer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace PorticoApi {

/// All resources, whoever serves them: who answers which method of a path, which paths are ready,
/// and who wants to hear of it. All on one thread.
class Resources {
public:
    /// Gets a request's body, empty for GET.
    using Handler = std::function<void(const std::string& body, const ReplyPtr& reply)>;
    /// Whoever put something here, and can take it back; the product's own has none.
    using Owner = const void*;
    using Paths = std::vector<std::string>;

    /// Serves a method of a path and makes it ready. The latest one serves. False if the path is
    /// the product's or there are too many. `id` is the owner's number for it.
    bool Serve(const std::string& method, const std::string& path, Handler handler, Owner owner,
               std::uint64_t id);

    /// The product's own: readiness goes by `SetReady`; a handler is called in any case.
    void ServeOwn(const std::string& method, const std::string& path, Handler handler);
    void SetReady(const std::string& path, bool isReady);

    /// `changed` is called with true if all paths are ready, now or later, and at each change.
    void AddInterest(const Paths& paths, Owner owner, std::uint64_t id,
                     std::function<void(bool isReady)> changed);
    void Subscribe(const std::string& path, Owner owner, std::uint64_t id,
                   std::function<void(const std::string& json)> notify);

    void Withdraw(Owner owner, std::uint64_t id);
    /// All of an owner's; the paths that it served stay known and are not ready, which is told.
    void WithdrawAll(Owner owner);

    /// What a service tells of a resource that it serves itself; of another's nothing is told.
    void Change(const std::string& path, const std::string& json, Owner owner);

    /// Tells all subscribers of the path, and `SetListener`'s of every path; empty: not ready.
    void Notify(const std::string& path, const std::string& json);
    void SetListener(std::function<void(const std::string& path, const std::string& json)> listener)
    {
        m_listener = std::move(listener);
    }

    /// The handler's answer, or 404, 405 or 503 for want of one.
    void Request(const std::string& method, const std::string& path, const std::string& body,
                 const ReplyPtr& reply) const;
    bool IsKnown(const std::string& path) const { return m_routes.contains(path); }

private:
    struct Place {
        Handler handler;  ///< Empty if whoever served it has left.
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
