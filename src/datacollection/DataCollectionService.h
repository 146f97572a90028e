// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "datacollection/DataCollectionClientIF.h"

class NotifyTargetTaskIF;
class PorticoClientIF;

namespace DataCollection {

/// Clients for the two data types of the product, bound to `task`. Over the local API; if `client`
/// is null, each makes its own:
std::shared_ptr<DataCollectionClientIF> CreateUDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client);
std::shared_ptr<DataCollectionClientIF> CreateNDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client);
/// Over an IPC socket:
std::shared_ptr<DataCollectionClientIF> CreateUDCIPCClient(NotifyTargetTaskIF* task);
std::shared_ptr<DataCollectionClientIF> CreateNDCIPCClient(NotifyTargetTaskIF* task);

}  // namespace DataCollection
