// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "orlu/Task.h"

namespace TrellanService {

/// The server task as the manager sees it.
class ServerTaskIF {
public:
    virtual ~ServerTaskIF() = default;

    /// Builds the server task at the first call; `address` is not kept.
    virtual APTask& GetServerTask(const std::string& address) = 0;
};

/// The service's own task manager: makes the one task that everything runs on. Single instance, on
/// the first thread until the tasks have been started.
class Trellan_ServiceManager : public APTaskManager {
public:
    static Trellan_ServiceManager& GetInstance();

    explicit Trellan_ServiceManager(ServerTaskIF& server) : m_server(server) {}

    /// To be called once. True.
    bool CreateAllTasks() override;

private:
    bool CreateAllTasks(const std::string& address);

    ServerTaskIF& m_server;
    APTask* m_serverTask = nullptr;
};

}  // namespace TrellanService
