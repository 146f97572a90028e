// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ProtoBufs/DeviceInfo.pb.h"
#include "ProtoBufs/NetworkStatus.pb.h"
#include "ProtoBufs/PayloadPublish.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "datacollection/DataCollectionClientIF.h"
#include "orlu/Callback.h"
#include "orlu/Task.h"
#include "orlu/Timer.h"
#include "portico/PorticoClientIF.h"

namespace TrellanService {

class Trellan_ServiceCodesetHandler;
class UEIInterface;

/// What the manager calls, each built at its first use, and what it needs of the server task.
class ManagerNeighboursIF {
public:
    virtual ~ManagerNeighboursIF() = default;
    virtual UEIInterface& Engine() = 0;
    virtual Trellan_ServiceCodesetHandler& CodesetHandler() = 0;

    /// Builds the server task at the first call; `address` is not kept.
    virtual APTask& GetServerTask(const std::string& address) = 0;
    virtual bool IsCloudConnected() = 0;
    virtual void setCloudConnected(bool connected) = 0;
    /// A `TrellanService_State`, for the client.
    virtual void NotifyState(std::uint32_t state) = 0;
};

/// The service's task manager and its side of the product's local API: makes the server task,
/// registers the service's resources, and starts the engine once the product is known and its
/// network is up. Single instance. Built and asked for its tasks on the first thread; used on the
/// server task from then on.
///
/// A resource handler refuses by an ordinary answer, never by an error of the API. It calls the
/// answer once, at once or when the blaster has answered.
class Trellan_ServiceManager : public APTaskManager {
public:
    using OSMAnswer = Callback<TrellanServiceMessages::OSMControlResp_t>;
    using PublishAnswer = Callback<Portico::PayloadPublishResponse>;
    using DirectEntryAnswer = Callback<TrellanServiceMessages::DirectEntryResp_t>;

    static Trellan_ServiceManager& GetInstance();

    /// Makes the client of the local API. Calls no neighbour.
    explicit Trellan_ServiceManager(ManagerNeighboursIF& neighbours);

    /// To be called once. Returns true.
    bool CreateAllTasks() override;

    /// The folder for brand list files, empty until the local API has told it; and the name of the
    /// last file.
    const std::string& StagingDirectory() const { return m_stagingDirectory; }
    const std::string& BrandListFileName() const { return m_brandListFileName; }

    /// The manager's own client; use it on the server task.
    const std::shared_ptr<PorticoClientIF>& GetPorticoClient() const { return m_porticoClient; }

    void HandleSysInfo(const DeviceManagerPb::DeviceInfo& information);
    void HandleNetworkStatus(const NetManager::Protobuf::NetworkStatus& status);
    void HandleNetworkModuleReady(bool ready);
    void RegisterForNetworkServiceReadiness();

    /// The version of the engine's database, or "Get version error". On the server task.
    void GetTRDatabaseVer(const AsyncCallback<std::string>& callback);

    /// The guided test: GET answers its state, PUT runs the step that `message` names.
    void HandleTRGet(const OSMAnswer& answer);
    void HandleTRPut(const TrellanServiceMessages::OSMControlMsg_t& message,
                     const OSMAnswer& answer);

    /// Writes a list of brands, has the local API publish it and answers with the URL that it
    /// gives; with empty texts if any of that fails.
    void HandleBrandListPost(const TrellanServiceMessages::BrandListReq_t& request,
                             const PublishAnswer& answer);

    /// Finds the code set of a device by its names and loads it into the blaster.
    void HandleDirectEntryPut(const TrellanServiceMessages::DirectEntryReq_t& request,
                              const DirectEntryAnswer& answer);

private:
    bool CreateAllTasks(const std::string& address);
    void RegisterResources();
    void RegisterForProduct();
    void RequestSystemInfo(const PorticoClientIF::Paths& paths);
    void RequestStaging(const PorticoClientIF::Paths& paths);
    void StartEngine();

    TrellanServiceMessages::OSMControlResp_t FilledResponse();
    void OSMStart(const TrellanServiceMessages::OSMControlMsg_t& message, const OSMAnswer& answer);
    void RecordStart(const TrellanServiceMessages::OSMControlMsg_t& message);
    void CancelTest(const OSMAnswer& answer);
    void TakeUserResponse(const TrellanServiceMessages::OSMControlMsg_t& message,
                          const OSMAnswer& answer);
    void OSMComplete(const OSMAnswer& answer);
    /// Arms the inactivity timer: 300 s from now.
    void ResetInactivityTimer();
    void HandleTimeOut();

    void Publish(const PublishAnswer& answer);
    void DeleteStagingFile();

    std::string m_stagingDirectory;
    std::string m_brandListFileName;
    bool m_networkModuleReady = false;
    std::optional<NetManager::Protobuf::NetworkStatus> m_networkStatus;
    DeviceManagerPb::DeviceInfo m_deviceInfo;
    std::shared_ptr<PorticoClientIF> m_porticoClient;
    CallbackConnection m_networkStatusRequest;
    APTask* m_serverTask = nullptr;
    std::shared_ptr<APTimer> m_osmTimer;
    std::uint32_t m_osmTimeOutMs = 300000;
    std::shared_ptr<DataCollectionClientIF> m_dataCollection;
    std::int32_t m_brandLists = 0;  ///< Number of file names used so far.
    ManagerNeighboursIF& m_neighbours;
};

}  // namespace TrellanService
