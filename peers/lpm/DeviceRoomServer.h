// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "orlu/IPCMessageRouter.h"
#include "orlu/Network.h"

namespace Lpm {

/// The IPC service "DeviceRoom": answers requests for the state of the devices and sends each of
/// their lines to all connected clients. On one task.
class DeviceRoomServer {
public:
    /// `state` returns the state of all devices as a JSON object.
    DeviceRoomServer(NotifyTargetTaskIF* task, std::function<std::string()> state);

    /// Begins to listen. False, logged, if that fails.
    bool Start();

    void SendLine(const std::string& line);

private:
    void HandleSocket(const Orlu::SocketPtr& socket);
    void HandleDisconnect(std::uint64_t client);

    NotifyTargetTaskIF* m_task;
    std::function<std::string()> m_state;
    std::shared_ptr<APServerSocketListenerIF> m_listener;
    std::map<std::uint64_t, IPCMessageRouterPtr> m_clients;
    std::uint64_t m_lastClient = 0;
};

}  // namespace Lpm
