// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ProtoBufs/Trellan_Service.pb.h"

namespace TrellanService {

/// Fills the answer to a load from the state of the guided test or of direct entry. The proxy sets
/// `lastResult` afterwards.
class UEIResponsesIF {
public:
    virtual ~UEIResponsesIF() = default;
    virtual void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& response) = 0;
    virtual void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& response) = 0;
};

}  // namespace TrellanService
