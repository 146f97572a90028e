// SPDX-License-Identifier: Apache-2.0

#include "endpoints/ManagerLog.h"
#include "endpoints/Trellan_ServiceManager.h"
#include "uei/UEIInterface.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

void Refuse(const Trellan_ServiceManager::DirectEntryAnswer& answer)
{
    DirectEntryResp_t response;
    response.set_lastresult("LAST_RESULT_ERROR");
    if (answer) {
        answer(response);
    }
}

}  // namespace

void Trellan_ServiceManager::HandleDirectEntryPut(const DirectEntryReq_t& request,
                                                  const DirectEntryAnswer& answer)
{
    if (!request.has_devicetype() || !request.has_brand() || !request.has_model()) {
        kManagerLog.Put(3, "DirectEntry request malformed");
        Refuse(answer);
        return;
    }
    if (!m_neighbours.IsCloudConnected()) {
        kManagerLog.Put(2, "DirectEntry request with no UEI session established");
        Refuse(answer);
        return;
    }
    // The load makes a test active, which the time-out ends if nothing else does.
    ResetInactivityTimer();
    kManagerLog.Put(3, "Received direct entry request");
    m_neighbours.Engine().DirectEntryBrandModel(request, true, answer);
}

}  // namespace TrellanService
