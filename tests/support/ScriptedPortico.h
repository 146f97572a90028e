// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "portico/PorticoClient.h"
#include "support/Effects.h"

/// The local API of a test, in memory, in the place of `PorticoClient::Create`'s client. One at a
/// time. Every client that is created while it exists is connected to it. It records:
///
///     portico GET /system/info
///     portico POST /payload/publish {"fileName":"brandList0","lifeSpanSec":10}
///     answer PUT /remote/integration {"lastResult":"LAST_RESULT_ERROR"}
///     error PUT /remote/integration {"guid":"1",…}
class ScriptedPortico {
public:
    explicit ScriptedPortico(Effects& effects);
    ~ScriptedPortico();
    ScriptedPortico(const ScriptedPortico&) = delete;
    ScriptedPortico& operator=(const ScriptedPortico&) = delete;

    /// Makes a resource of the product ready, with its answer to GET and POST.
    void Put(const std::string& path, const std::string& json);
    /// From now on the resource answers with an error; it stays ready.
    void Fail(const std::string& path, const std::string& errorJson);
    void Remove(const std::string& path);
    void Notify(const std::string& path, const std::string& json);
    /// From now on requests of the service are recorded and not answered, until `Release`.
    void Hold() { m_hold = true; }
    void Release();

    /// A consumer's request. Its answer is recorded when it comes.
    void Request(Portico::Method method, const std::string& path, const std::string& body = {});

    /// "GET /remote/integration" and so on, in the order of registration, a line each; then
    /// "interest PATH" and "notification PATH" likewise.
    std::string Registrations() const { return m_registrations; }
    /// The names of the clients that were created, one line each.
    std::string Clients() const { return m_clients; }

private:
    friend std::shared_ptr<PorticoClientIF> PorticoClient::Create(
        const std::string&, const std::string&, std::uint16_t, const std::string&,
        const std::string&, const PorticoClient::OnConnected&, const PorticoClient::OnFailure&,
        const Portico::CommonClientCreationInfo&);
    class Client;

    struct Resource {
        bool fails = false;
        std::string json;
    };
    struct Interest {
        PorticoClientIF::Paths paths;
        AsyncCallback<PorticoClientIF::Paths> ready;
        AsyncCallback<PorticoClientIF::Paths> notReady;
        bool isReady = false;
    };
    using Text = std::function<void(const std::string&)>;
    using Respond = std::function<void(bool, const std::string&)>;
    using Serve = std::function<void(const std::string&, const Respond&)>;

    void Answer(const std::string& path, const Respond& respond);
    void UpdateInterest(Interest& interest);
    void UpdateInterests();

    Effects& m_effects;
    std::map<std::string, Resource> m_resources;
    std::map<std::string, Serve> m_endpoints;     ///< by method, a blank and path
    std::map<std::string, Text> m_notifications;  ///< the last notification of a path
    std::vector<Interest> m_interests;
    std::vector<std::pair<std::string, Respond>> m_held;
    bool m_hold = false;
    std::string m_registrations;
    std::string m_clients;
};
