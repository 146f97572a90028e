// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/NetworkStatus.pb.h"
#include "orlu/Task.h"

namespace TrellanService {

/// The server task as the manager sees it.
class ServerTaskIF {
public:
    virtual ~ServerTaskIF() = default;

    /// Builds the server task at the first call; `address` is not kept.
    virtual APTask& GetServerTask(const std::string& address) = 0;

    virtual bool IsCloudConnected() = 0;
    virtual void setCloudConnected(bool connected) = 0;
};

/// The engine's start, which needs to know whose product it is.
class EngineStartIF {
public:
    virtual ~EngineStartIF() = default;
    /// 0, or -1; starts the engine anew if it runs.
    virtual int Init(NotifyTargetTaskIF* task, const DeviceManagerPb::DeviceInfo& deviceInfo) = 0;
};

/// The service's own task manager: makes the one task that everything runs on, and starts the
/// engine once the product is known and its network is up. Single instance, on the first thread
/// until the tasks have been started, on the server task from then on.
class Trellan_ServiceManager : public APTaskManager {
public:
    static Trellan_ServiceManager& GetInstance();

    Trellan_ServiceManager(ServerTaskIF& server, EngineStartIF& engine)
        : m_server(server), m_engine(engine)
    {
    }

    /// To be called once. True.
    bool CreateAllTasks() override;

    /// From the first thread, behind `StartAllTasks`. No local API is built in yet that could tell
    /// the product's information and its network's state: an unnamed product with its network up is
    /// assumed.
    void AssumeProduct();

    /// Where brand lists are written, empty until the local API has told; and the name of the last.
    const std::string& StagingDirectory() const { return m_stagingDirectory; }
    const std::string& BrandListFileName() const { return m_brandListFileName; }

    void HandleSysInfo(const DeviceManagerPb::DeviceInfo& information);
    void HandleNetworkStatus(const NetManager::Protobuf::NetworkStatus& status);

private:
    bool CreateAllTasks(const std::string& address);
    void StartEngine();

    std::string m_stagingDirectory;
    std::string m_brandListFileName;
    std::optional<NetManager::Protobuf::NetworkStatus> m_networkStatus;
    DeviceManagerPb::DeviceInfo m_deviceInfo;
    ServerTaskIF& m_server;
    EngineStartIF& m_engine;
    APTask* m_serverTask = nullptr;
};

}  // namespace TrellanService
