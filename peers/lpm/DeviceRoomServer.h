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

/// The IPC service "DeviceRoom": tells the state of the devices to whoever asks, and each line of
/// theirs to all who are connected. On one task.
class DeviceRoomServer {
public:
    /// `state` gives the state as a JSON object.
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
