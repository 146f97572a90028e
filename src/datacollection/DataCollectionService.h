// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "datacollection/DataCollectionClientIF.h"

class NotifyTargetTaskIF;
class PorticoClientIF;

namespace DataCollection {

/// Clients for the two data types of the product, bound to `task`. By the local API, with a client
/// of its own if `client` is null:
std::shared_ptr<DataCollectionClientIF> CreateUDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client);
std::shared_ptr<DataCollectionClientIF> CreateNDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client);
/// By an IPC socket:
std::shared_ptr<DataCollectionClientIF> CreateUDCIPCClient(NotifyTargetTaskIF* task);
std::shared_ptr<DataCollectionClientIF> CreateNDCIPCClient(NotifyTargetTaskIF* task);

}  // namespace DataCollection
