// SPDX-License-Identifier: Apache-2.0

#include "portico/Resources.h"

#include "orlu/Limits.h"

#include <algorithm>
#include <utility>

namespace PorticoApi {

bool Resources::Serve(const std::string& method, const std::string& path, Handler handler,
                      Owner owner, std::uint64_t id)
{
    const auto known = m_routes.find(path);
    if (known == m_routes.end() ? !EvictUnused() : known->second.isOwn) {
        return false;
    }
    Route& route = m_routes[path];
    route.methods[method] = {std::move(handler), owner, id};
    route.isReady = true;
    UpdateInterests();
    return true;
}

void Resources::ServeOwn(const std::string& method, const std::string& path, Handler handler)
{
    Route& route = m_routes[path];
    route.isOwn = true;
    route.methods[method] = {std::move(handler), nullptr, 0};
}

void Resources::SetReady(const std::string& path, bool isReady)
{
    m_routes[path].isReady = isReady;
    UpdateInterests();
}

/// At the limit of known paths, removes one that no service serves any more. False if there is
/// none.
bool Resources::EvictUnused()
{
    if (m_routes.size() < Orlu::Limits::kKnownPaths) {
        return true;
    }
    const auto idle = std::ranges::find_if(
        m_routes, [](const auto& entry) { return !entry.second.isReady && !entry.second.isOwn; });
    if (idle == m_routes.end()) {
        return false;
    }
    m_routes.erase(idle);
    return true;
}

void Resources::AddInterest(const Paths& paths, Owner owner, std::uint64_t id,
                            std::function<void(bool isReady)> changed)
{
    m_interests.push_back({paths, owner, id, std::move(changed), false});
    UpdateInterests();
}

void Resources::Subscribe(const std::string& path, Owner owner, std::uint64_t id,
                          std::function<void(const std::string& json)> notify)
{
    m_subscriptions.push_back({path, owner, id, std::move(notify)});
}

template <class Match>
void Resources::Remove(Match match)
{
    std::erase_if(m_interests, match);
    std::erase_if(m_subscriptions, match);
    for (auto& [path, route] : m_routes) {
        for (auto& [method, place] : route.methods) {
            if (match(place)) {
                // The method stays known: requests get 503 and not 405 until a service returns.
                place = {};
            }
        }
        if (!route.isOwn) {
            const bool isReady = std::ranges::any_of(
                route.methods, [](const auto& entry) { return bool(entry.second.handler); });
            if (std::exchange(route.isReady, isReady) && !isReady) {
                Notify(path, {});
            }
        }
    }
    UpdateInterests();
}

void Resources::Withdraw(Owner owner, std::uint64_t id)
{
    Remove([owner, id](const auto& entry) { return entry.owner == owner && entry.id == id; });
}

void Resources::WithdrawAll(Owner owner)
{
    Remove([owner](const auto& entry) { return entry.owner == owner; });
}

void Resources::Change(const std::string& path, const std::string& json, Owner owner)
{
    // A service must not report changes of a resource that another one serves.
    const auto route = m_routes.find(path);
    if (route != m_routes.end() &&
        std::ranges::any_of(route->second.methods,
                            [owner](const auto& e) { return e.second.owner == owner; })) {
        Notify(path, json);
    }
}

void Resources::Notify(const std::string& path, const std::string& json)
{
    if (!json.empty()) {
        for (const auto& subscription : m_subscriptions) {
            if (subscription.path == path) {
                subscription.notify(json);
            }
        }
    }
    if (m_listener) {
        m_listener(path, json);
    }
}

void Resources::Request(const std::string& method, const std::string& path, const std::string& body,
                        const ReplyPtr& reply) const
{
    const auto route = m_routes.find(path);
    if (route == m_routes.end()) {
        reply->Give(Failure(404, "no such resource"));
        return;
    }
    const auto place = route->second.methods.find(method);
    if (place == route->second.methods.end()) {
        Answer answer = Failure(405, "the resource has no such method");
        answer.allow = Allowed(route->second);
        reply->Give(std::move(answer));
        return;
    }
    // A copy: the handler may change the table that contains it.
    if (const Handler handler = place->second.handler) {
        handler(body, reply);
        return;
    }
    reply->Give(Failure(503, "the resource's service is not there"));
}

std::string Resources::Allowed(const Route& route)
{
    std::string allowed;
    for (const auto& [method, place] : route.methods) {
        allowed += (allowed.empty() ? "" : ", ") + method;
    }
    return allowed;
}

bool Resources::IsReady(const Paths& paths) const
{
    return std::ranges::all_of(paths, [this](const auto& path) {
        const auto route = m_routes.find(path);
        return route != m_routes.end() && route->second.isReady;
    });
}

void Resources::UpdateInterests()
{
    for (auto& interest : m_interests) {
        const bool isReady = IsReady(interest.paths);
        if (std::exchange(interest.isReady, isReady) != isReady) {
            interest.changed(isReady);
        }
    }
}

}  // namespace PorticoApi
