// SPDX-License-Identifier: Apache-2.0

#include "datacollection/DataCollectionService.h"

#include <utility>

#include "datacollection/DataCollectionIPCClient.h"
#include "datacollection/DataCollectionPTClient.h"
#include "orlu/DPrint.h"

namespace DataCollection {

namespace {

constexpr DPrint kLog("DataCollectionServiceMessage");

template <class Client, class... Args>
std::shared_ptr<DataCollectionClientIF> Create(const char* dataType, Args&&... args)
{
    kLog.Log(4, "making a client for {}", dataType);
    return std::make_shared<Client>(dataType, std::forward<Args>(args)...);
}

}  // namespace

std::shared_ptr<DataCollectionClientIF> CreateUDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client)
{
    return Create<DataCollectionPTClient>("UDC", task, std::move(client));
}

std::shared_ptr<DataCollectionClientIF> CreateNDCService(NotifyTargetTaskIF* task,
                                                         std::shared_ptr<PorticoClientIF> client)
{
    return Create<DataCollectionPTClient>("NDC", task, std::move(client));
}

std::shared_ptr<DataCollectionClientIF> CreateUDCIPCClient(NotifyTargetTaskIF* task)
{
    return Create<DataCollectionIPCClient>("UDC", task);
}

std::shared_ptr<DataCollectionClientIF> CreateNDCIPCClient(NotifyTargetTaskIF* task)
{
    return Create<DataCollectionIPCClient>("NDC", task);
}

}  // namespace DataCollection
