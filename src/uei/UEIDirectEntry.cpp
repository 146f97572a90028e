// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "uei/Answer.h"
#include "uei/DeviceTypes.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineKind = 2;
constexpr const char* kSuccess = "LAST_RESULT_SUCCESS";
constexpr const char* kError = "LAST_RESULT_ERROR";

}  // namespace

void UEIInterface::FillDirectEntryResp(DirectEntryResp_t& response) const
{
    response.set_brand(deBrand);
    response.set_model(deModel);
    response.set_devicetype(deType);
    response.set_cicode(deCodeset);
}

void UEIInterface::DirectEntryBrandModel(const DirectEntryReq_t& request, bool load,
                                         const DirectEntryCallback& callback)
{
    kUEILog.Log(3, "DirectEntry for brand/model/type {}/{}/{}", request.brand(), request.model(),
                request.devicetype());
    deBrand = request.brand();
    deModel = request.model();
    deType = request.devicetype();
    DirectEntryResp_t response;
    if (!FindCodeset(request)) {
        FillDirectEntryResp(response);
        Answer(callback, response, kError);
        return;
    }
    if (!load) {
        response.set_cicode(deCodeset);
        Answer(callback, response, kSuccess);
        return;
    }
    // Points into a member, because the proxy fills the answer from `deCodeset` after the load.
    deCodeset = validCodeset.c_str();
    osmActive = true;
    kUEILog.Log(3, "DirectEntry codeset to load {}", deCodeset);
    DirectEntryLoadCodeset(deCodeset, callback, kOnlineKind);
}

/// Sets `deCodeset` to the first code set of the model. False, with a log line, if there is none.
bool UEIInterface::FindCodeset(const DirectEntryReq_t& request)
{
    if (OpenSession(kOnlineKind) != 0) {
        kUEILog.Put(2, "Unable to open UEI cloud session");
        return false;
    }
    const char* type = UEIDeviceType(request.devicetype());
    if (type == nullptr) {
        kUEILog.Log(3, "DirectEntry: no mapping for device type {}", request.devicetype());
        return false;
    }
    kUEILog.Log(3, "DirectEntry UEI device type {}", type);
    Json::Value codesets;
    const int listed =
        GetModelCodesets(type, request.brand(), request.model(), codesets, kOnlineKind);
    kUEILog.Log(3, "DirectEntry: GetModelCodesets returned {:x}",
                static_cast<std::uint32_t>(listed));
    if (listed != 0) {
        kUEILog.Log(2, "Unable to get list of codesets for {}/{}", request.brand(),
                    request.model());
        return false;
    }
    const char* name = nullptr;
    if (QSP_get_codeset_name(session, 0, &name) != 0 || name == nullptr) {
        kUEILog.Log(2, "Unable to get codeset name for {}/{}", request.brand(), request.model());
        return false;
    }
    // A copy: the library's text lasts to its next call only.
    m_deText = name;
    deCodeset = m_deText.c_str();
    if (ValidateCodesetName(deCodeset).empty()) {
        kUEILog.Log(3, "UEI returned invalid codeset name{}", deCodeset);
        return false;
    }
    return true;
}

void UEIInterface::DirectEntryLoadCodeset(const std::string& name,
                                          const DirectEntryCallback& callback, std::uint32_t kind)
{
    DirectEntryResp_t response;
    FillDirectEntryResp(response);
    if (GetCodesetBinary(name.c_str(), kind) != 0) {
        Answer(callback, response, kError);
        return;
    }
    // Queued before the transfer begins: a load that is refused is answered within
    // `StoreInBlaster`.
    m_neighbours.BlasterProxy().QueueCallback(callback);
    StoreInBlaster();
}

}  // namespace TrellanService
