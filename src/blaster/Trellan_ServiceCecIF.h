// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "blaster/LpmClientIF.h"

namespace TrellanService {

class Trellan_Server;

/// Logs each CEC message from the LPM, over a connection of its own. On the server task. CEC keys
/// are sent by the blaster proxy, not here.
class Trellan_ServiceCecIF {
public:
    /// The instance; `server` counts at the first call only.
    static Trellan_ServiceCecIF& GetInstance(Trellan_Server* server);

    /// What `GetInstance` logs: at its start, and before it returns this instance.
    static void LogGetInstance();
    void LogReturned() const;

    /// `task` is the server's task; neither is owned.
    Trellan_ServiceCecIF(Trellan_Server* server, NotifyTargetTaskIF* task);
    virtual ~Trellan_ServiceCecIF();
    Trellan_ServiceCecIF(const Trellan_ServiceCecIF&) = delete;
    Trellan_ServiceCecIF& operator=(const Trellan_ServiceCecIF&) = delete;

    /// Makes the client, which connects in the background, and adds the handler.
    void Initialize();

    /// True if a client exists. The message's content is not read.
    bool ReceiveCecMessage(const LpmServiceMessages::IpcCecMessage_t& message);

private:
    std::shared_ptr<LpmClientIF> m_client;
    [[maybe_unused]] Trellan_Server* m_server;
    NotifyTargetTaskIF* m_task;
};

}  // namespace TrellanService
