// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/Trellan_Service.pb.h"
#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"
#include "orlu/Task.h"
#include "orlu/Timer.h"

namespace TrellanService {

class Trellan_Server;
class Trellan_ServiceBlasterProxy;
class Trellan_ServiceCecIF;
class Trellan_ServiceCodesetHandler;
class Trellan_ServiceCommandLine;
class Trellan_ServiceKeyHandler;
class UEIInterface;

/// What the server task calls; each is built at its first use.
class ServerNeighboursIF {
public:
    virtual ~ServerNeighboursIF() = default;
    virtual Trellan_ServiceKeyHandler& KeyHandler() = 0;
    virtual Trellan_ServiceCodesetHandler& CodesetHandler() = 0;
    virtual Trellan_ServiceBlasterProxy& BlasterProxy(NotifyTargetTaskIF* task) = 0;
    virtual Trellan_ServiceCecIF& CecIF(Trellan_Server* server) = 0;
    virtual Trellan_ServiceCommandLine& CommandLine() = 0;
    virtual UEIInterface& Engine() = 0;
};

/// The server task of the service and the side that the product controller talks to. Serves one
/// client, the one that connected last: a new connection closes the earlier one. Single instance,
/// built on the first thread; everything else runs on its own thread.
class Trellan_Server : public APTask {
public:
    /// The instance, built at the first call. The address is ignored: the IPC directory has it.
    static Trellan_Server& GetInstance(const std::string& address);
    static Trellan_Server& GetInstance();

    explicit Trellan_Server(ServerNeighboursIF& neighbours);
    ~Trellan_Server() override;

    void OnEntry() override;

    bool IsCloudConnected() const { return m_cloudConnected; }

    /// True starts the cloud timer: the flag is set once a tick finds the cloud in reach, after a
    /// second at the soonest. False clears the flag at once. The client is told of either change.
    void setCloudConnected(bool connected);

    /// Tells the client which step of a guided test was requested, a `TrellanService_State`.
    void NotifyState(std::uint32_t state);

    /// Tells the client that a sync of the blaster has begun (false) or ended (true).
    void NotifyBlasterSyncComplete(bool done);

private:
    void InitializeTRS();
    void AcceptClient(const APServerSocketListenerIF::SocketPtr& socket);
    void HandleDisconnect();
    void AddHandlers(const IPCMessageRouterPtr& router);

    void RequestHandler_OrluKeyReq(const TrellanServiceMessages::OrluKeyReqMessage_t& message,
                                   std::uint32_t token);
    void EventHandler_SrcCiCodes(const TrellanServiceMessages::SrcCiCodeMessage_t& message);
    void RequestHandler_IsKeyInCodeset(TrellanServiceMessages::IsKeyInCodesetMessage_t message,
                                       std::uint32_t token);
    void RequestHandler_KeyMapReq(const TrellanServiceMessages::KeyMapMessage_t& message,
                                  std::uint32_t token);
    void RequestHandler_FindCECDeviceReq(const TrellanServiceMessages::FindCECDevice_t& message,
                                         std::uint32_t token);
    void RequestHandler_FindEDIDDeviceReq(const TrellanServiceMessages::FindEDIDDevice_t& message,
                                          std::uint32_t token);
    void RequestHandler_CloudConnectStateReq(std::uint32_t token);
    void RequestHandler_DirectEntryReq(const TrellanServiceMessages::DirectEntryResp_t& message,
                                       std::uint32_t token);

    /// Answers on the router of the request, if that is still the client's. Otherwise a log line.
    void Reply(const IPCMessageRouterPtr& router, std::uint32_t id,
               const google::protobuf::Message& message, std::uint32_t token);
    /// A callback on this task that answers the request with its argument.
    template <class Message>
    AsyncCallback<Message> ReplyLater(std::uint32_t id, std::uint32_t token);

    void TickCloudConnect();
    void NotifyCloudConnection();

    std::shared_ptr<APServerSocketListenerIF> m_listener;
    IPCMessageRouterPtr m_router;
    Trellan_ServiceCecIF* m_cecIF;
    Trellan_ServiceCommandLine* m_commandLine;
    std::shared_ptr<APTimer> m_cloudConnectTimer;
    bool m_cloudConnected = false;
    ServerNeighboursIF& m_neighbours;
};

}  // namespace TrellanService
