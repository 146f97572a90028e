// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "support/ScriptedClient.h"
#include "support/World.h"

namespace TrellanService {

/// The service with a local API without ready resources, and a client.
class EndpointsFixture : public testing::Test {
protected:
    EndpointsFixture()
    {
        m_world.root.Write("/mnt/nv/product-persistence/TRSCodesetConfig.json", "{}");
        m_world.root.Write("/opt/Orlu/etc/DataCollection.json",
                           R"({"properties": [{"name": "UDC", "pt_endpoint": "/data/udc"}]})");
        m_world.Start();
        m_client.emplace(m_world.effects, "client");
        Effects();
        m_world.TakeLog();
    }

    /// Makes product, network and data collection ready, and waits until the cloud is connected.
    void ConnectCloud()
    {
        m_world.portico.Put("/data/udc", R"({"delivered":true})");
        m_world.portico.Put("/data/udc/state", R"({"ServiceStatus":"DATACOLLECTION_ENABLE"})");
        m_world.PutProductValues();
        Advance(1000);
        m_world.TakeLog();
    }

    /// All effects since the last call.
    std::string Effects()
    {
        m_world.runtime.RunUntilIdle();
        return m_world.effects.Take();
    }
    std::string Advance(std::uint32_t ms)
    {
        m_world.runtime.Advance(ms);
        return Effects();
    }

    std::string Get(const std::string& path) { return Request(Portico::Method::kGet, path, {}); }
    std::string Put(const std::string& path, const std::string& body)
    {
        return Request(Portico::Method::kPut, path, body);
    }
    std::string Post(const std::string& path, const std::string& body)
    {
        return Request(Portico::Method::kPost, path, body);
    }

    /// One logger's lines since the last call.
    std::string Log(const std::string& logger = "Trellan_ServiceManager")
    {
        const std::string prefix = logger + ": ";
        std::istringstream lines(m_world.TakeLog());
        std::string text;
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(2, prefix.size(), prefix) == 0) {
                text += line.erase(2, prefix.size()) + "\n";
            }
        }
        return text;
    }

    SendKeyState KeyState() { return m_world.service.CodesetHandler().GetSendKeyState(); }

    World m_world;
    std::optional<ScriptedClient> m_client;

private:
    std::string Request(Portico::Method method, const std::string& path, const std::string& body)
    {
        m_world.portico.Request(method, path, body);
        return Effects();
    }
};

}  // namespace TrellanService
