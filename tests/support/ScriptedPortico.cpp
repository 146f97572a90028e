// SPDX-License-Identifier: Apache-2.0

#include "support/ScriptedPortico.h"

#include <algorithm>
#include <utility>

namespace {

ScriptedPortico* theApi = nullptr;

std::string Name(Portico::Method method, const std::string& path)
{
    constexpr const char* kNames[] = {"GET ", "PUT ", "POST "};
    return kNames[static_cast<int>(method)] + path;
}

}  // namespace

class ScriptedPortico::Client : public PorticoClientIF {
public:
    explicit Client(ScriptedPortico& api) : m_api(api) {}

    CallbackConnection RegisterEndpointsOfInterest(const Paths& paths,
                                                   const AsyncCallback<Paths>& ready,
                                                   const AsyncCallback<Paths>& notReady) override
    {
        for (const auto& path : paths) {
            m_api.m_registrations += "interest " + path + "\n";
        }
        m_api.m_interests.push_back({paths, ready, notReady});
        m_api.UpdateInterest(m_api.m_interests.back());
        return {};
    }

protected:
    CallbackConnection RegisterText(Portico::Method method, const std::string& path,
                                    const Serve& serve, const RegistrationOptions&) override
    {
        m_api.m_registrations += Name(method, path) + "\n";
        m_api.m_endpoints[Name(method, path)] = serve;
        return {};
    }
    CallbackConnection RegisterNotificationText(const std::string& path, const Text& notify,
                                                const RegistrationOptions&) override
    {
        m_api.m_registrations += "notification " + path + "\n";
        m_api.m_notifications[path] = notify;
        return {};
    }
    CallbackConnection SendText(Portico::Method method, const std::string& path,
                                const std::string& body, const Respond& respond, double) override
    {
        m_api.m_effects.Add("portico " + Name(method, path) + (body.empty() ? "" : " " + body));
        if (m_api.m_hold) {
            m_api.m_held.emplace_back(path, respond);
        } else {
            m_api.Answer(path, respond);
        }
        return {};
    }

private:
    ScriptedPortico& m_api;
};

ScriptedPortico::ScriptedPortico(Effects& effects) : m_effects(effects)
{
    theApi = this;
}

ScriptedPortico::~ScriptedPortico()
{
    theApi = nullptr;
}

void ScriptedPortico::Put(const std::string& path, const std::string& json)
{
    m_resources[path] = {false, json};
    UpdateInterests();
}

void ScriptedPortico::Fail(const std::string& path, const std::string& errorJson)
{
    m_resources[path] = {true, errorJson};
    UpdateInterests();
}

void ScriptedPortico::Remove(const std::string& path)
{
    m_resources.erase(path);
    UpdateInterests();
}

void ScriptedPortico::Notify(const std::string& path, const std::string& json)
{
    if (const auto found = m_notifications.find(path); found != m_notifications.end()) {
        found->second(json);
    }
}

void ScriptedPortico::Release()
{
    m_hold = false;
    for (const auto& [path, respond] : std::exchange(m_held, {})) {
        Answer(path, respond);
    }
}

void ScriptedPortico::Request(Portico::Method method, const std::string& path,
                              const std::string& body)
{
    const auto name = Name(method, path);
    m_endpoints.at(name)(body, [this, name](bool isError, const std::string& json) {
        m_effects.Add((isError ? "error " : "answer ") + name + " " + json);
    });
}

void ScriptedPortico::Answer(const std::string& path, const Respond& respond)
{
    const auto found = m_resources.find(path);
    if (found == m_resources.end()) {
        respond(true, R"({"guid":"1","code":404,"subcode":1,"message":"no such resource"})");
        return;
    }
    const auto resource = found->second;
    respond(resource.fails, resource.json);
}

void ScriptedPortico::UpdateInterest(Interest& interest)
{
    const bool isReady =
        std::all_of(interest.paths.begin(), interest.paths.end(),
                    [this](const auto& path) { return m_resources.count(path) != 0; });
    if (isReady != std::exchange(interest.isReady, isReady)) {
        (isReady ? interest.ready : interest.notReady)(interest.paths);
    }
}

void ScriptedPortico::UpdateInterests()
{
    for (auto& interest : m_interests) {
        UpdateInterest(interest);
    }
}

std::shared_ptr<PorticoClientIF> PorticoClient::Create(const std::string& name,
                                                       const std::string& host, std::uint16_t port,
                                                       const std::string&, const std::string&,
                                                       const OnConnected& connected,
                                                       const OnFailure&,
                                                       const Portico::CommonClientCreationInfo&)
{
    theApi->m_clients += name + " " + host + ":" + std::to_string(port) + "\n";
    if (connected) {
        connected();
    }
    return std::make_shared<ScriptedPortico::Client>(*theApi);
}
