// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "datacollection/DataCollectionClient.h"

class NotifyTargetTaskIF;
class PorticoClientIF;

namespace DataCollection {

/// Posts events to a resource of the local API. The resource's state, at its path and "/state",
/// says whether events are taken; if it cannot be read, they are sent. Lives as long as its task.
class DataCollectionPTClient final : public DataCollectionClient {
public:
    using ClientPtr = std::shared_ptr<PorticoClientIF>;

    /// A null argument is replaced by a task or a client of its own. What cannot be made, and a
    /// data type that the configuration does not name, is logged; then no event is ever sent.
    DataCollectionPTClient(std::string dataType, NotifyTargetTaskIF* task, ClientPtr client);

    bool SendData(const MessagePtr& message, const std::string& type) override;
    bool SendData(const MessagePtr& message, const std::string& type,
                  const Callback<bool>& callback) override;

private:
    void RegisterEndPointofService();
    void HandleDataCollectionServiceAvailable();
    void HandleDataCollectionServiceUnavailable();
    void HandleStateFailure(const std::string& why);

    const std::string m_dataType;
    std::string m_endpoint;
    std::string m_stateEndpoint;
    std::shared_ptr<NotifyTargetTaskIF> m_ownTask;
    NotifyTargetTaskIF* m_task;
    ClientPtr m_client;
};

}  // namespace DataCollection
