// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "datacollection/DataCollectionClient.h"
#include "orlu/IPCMessageRouter.h"

namespace DataCollection {

/// Sends events to the data collection service over its IPC socket, for programs without the local
/// API: request 1 with an `Event`, answered by an `EventStatus`; event 2 brings a `State`. Until
/// the first `State` no event goes out. Lives as long as its task.
class DataCollectionIPCClient final : public DataCollectionClient {
public:
    /// A null task is replaced by one of its own. A data type that the configuration does not name
    /// is logged; then no event is ever sent.
    DataCollectionIPCClient(std::string dataType, NotifyTargetTaskIF* task);

    bool SendData(const MessagePtr& message, const std::string& type) override;
    bool SendData(const MessagePtr& message, const std::string& type,
                  const Callback<bool>& callback) override;

private:
    void Initialize();
    void Connected(const Orlu::SocketPtr& socket);
    void HandleDisconnect();

    const std::string m_dataType;
    std::string m_ipcAddress;
    std::shared_ptr<NotifyTargetTaskIF> m_ownTask;
    NotifyTargetTaskIF* m_task;
    std::shared_ptr<APClientSocketListenerIF> m_listener;
    IPCMessageRouterPtr m_router;
};

}  // namespace DataCollection
