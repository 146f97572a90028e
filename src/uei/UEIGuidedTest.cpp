// SPDX-License-Identifier: Apache-2.0

#include "blaster/BlasterFrames.h"
#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "keys/KeyTables.h"
#include "uei/Answer.h"
#include "uei/DeviceTypes.h"
#include "uei/SessionText.h"
#include "uei/UEIInterface.h"
#include "uei/UEILog.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineKind = 2;
constexpr std::int32_t kNoKey = -1;
constexpr std::uint8_t kSendOnce = 0x80;
constexpr std::uint8_t kStatusBits = 0x0F;
constexpr const char* kSuccess = "LAST_RESULT_SUCCESS";
constexpr const char* kError = "LAST_RESULT_ERROR";
constexpr const char* kContinue = "LAST_RESULT_CONTINUE";
constexpr const char* kOver = "LAST_RESULT_NONE";

std::string UEIKeyText(std::int32_t key)
{
    for (const UEIKeyName& row : UEIKeyNameTable) {
        if (static_cast<std::int32_t>(row.key) == key) {
            return std::string(row.name);
        }
    }
    return "Unknown";
}

}  // namespace

void UEIInterface::FillOSMControlResp(OSMControlResp_t& response) const
{
    response.Clear();
    response.set_sessionactive(osmActive);
    response.set_nextkeytotest(UEIKeyText(testKey));
    response.set_totalkeys(static_cast<std::int32_t>(testKeysTotal));
    response.set_numtested(static_cast<std::int32_t>(codesetsOffered));
    response.set_numcompleted(static_cast<std::int32_t>(codesetsTested));
    response.set_lastresult(lastResult);
    response.set_cicode(OrEmpty(osmCodeset));
    auto& properties = *response.mutable_properties();
    properties.add_supportedinputroutes("INPUT_ROUTE_TV");
    for (const char* action : {"ACTION_START", "ACTION_CANCEL", "ACTION_USER_RESPONSE",
                               "ACTION_SEND_KEY", "ACTION_COMPLETE"}) {
        properties.add_supportedactions(action);
    }
}

void UEIInterface::OSMStart(const OSMControlMsg_t& request, const OSMCallback& callback)
{
    OSMControlResp_t response;
    FillOSMControlResp(response);
    // Active from here on, also if the start fails: `ACTION_COMPLETE` then still runs the sync that
    // gives the blaster back.
    osmActive = true;
    if (const char* refusal = StartTest(request); refusal != nullptr) {
        // No test for this device: the answer must not name the code set of an earlier test.
        if (refusal == kSuccess) {
            response.set_cicode("");
        }
        Answer(callback, response, refusal);
        return;
    }
    osmCodeset = validCodeset.c_str();
    kUEILog.Log(3, "OSM Codeset: {}", osmCodeset);
    lastResult = kContinue;
    OSMLoadCodeset(osmCodeset, callback, kOnlineKind);
}

/// Null, or the result to answer: success if there is no test for the device.
const char* UEIInterface::StartTest(const OSMControlMsg_t& request)
{
    const std::string& brand = request.devicebrand();
    if (OpenSession(kOnlineKind) != 0) {
        kUEILog.Put(2, "Unable to start uei online session");
        return kError;
    }
    const char* type = UEIDeviceType(request.devicetype());
    if (type == nullptr) {
        kUEILog.Log(3, "OSMStart: no mapping for device type {}", request.devicetype());
        return kError;
    }
    kUEILog.Log(3, "OSMStart: {}/{}", type, brand);
    if (LoadDeviceTypes() != 0) {
        kUEILog.Put(2, "Unable to load device type in session cache");
        return kError;
    }
    // Forced, because the cached list may have been made for another prefix.
    if (LoadBrands(type, brand, true) != 0) {
        kUEILog.Put(2, "Unable to load device brand in session cache");
        return kError;
    }
    if (QSP_osm_retrieve_test_keys_total(session, type, brand.c_str(), &testKeysTotal) != 0) {
        kUEILog.Put(3, "No OSM for this device");
        return kSuccess;
    }
    if (testKeysTotal == 0) {
        kUEILog.Put(3, "No keys to test");
        return kError;
    }
    kUEILog.Log(3, "TestKeysTotal: {}", testKeysTotal);
    return FirstTestKey() ? nullptr : kError;
}

bool UEIInterface::FirstTestKey()
{
    testKey = kNoKey;
    if (QSP_osm_get_first_test_key(session, &testKey) != 0) {
        kUEILog.Put(2, "Unable to get test key from UEI");
        return false;
    }
    if (testKey == kNoKey) {
        kUEILog.Put(2, "Unable to get valid test key from UEI");
        return false;
    }
    if (GetCurrentCodesetName() != 0) {
        kUEILog.Put(2, "Unable to get codeset name from UEI");
        return false;
    }
    if (ValidateCodesetName(osmCodeset).empty()) {
        kUEILog.Log(3, "UEI returned invalid codeset name {}", validCodeset);
        return false;
    }
    return true;
}

/// Gives the library's code. The text is copied, because the library's lasts to its next call only.
int UEIInterface::GetCurrentCodesetName()
{
    const char* name = nullptr;
    const int code = QSP_osm_get_current_codeset_name(session, &name);
    if (code == 0) {
        m_osmText = OrEmpty(name);
        osmCodeset = name == nullptr ? nullptr : m_osmText.c_str();
    }
    return code;
}

void UEIInterface::OSMLoadCodeset(const std::string& name, const OSMCallback& callback,
                                  std::uint32_t kind)
{
    OSMControlResp_t response;
    FillOSMControlResp(response);
    if (GetCodesetBinary(name.c_str(), kind) != 0) {
        Answer(callback, response, kError);
        return;
    }
    // Queued before the transfer begins: a load that is refused is answered within
    // `StoreInBlaster`.
    m_neighbours.BlasterProxy().QueueCallback(callback);
    StoreInBlaster();
}

void UEIInterface::OSMSendKey(const OSMCallback& callback)
{
    OSMControlResp_t response;
    FillOSMControlResp(response);
    const char* refusal = nullptr;
    if (!osmActive) {
        refusal = "OSM not started";
    } else if (testKey == kNoKey) {
        refusal = "OSM: Invalid key to test";
    } else if (ValidateCodesetName(osmCodeset).empty()) {
        refusal = "OSM: Invalid codeset for key";
    }
    if (refusal != nullptr) {
        kUEILog.Put(3, refusal);
        Answer(callback, response, kError);
        return;
    }
    // `SendBlasterKey` takes one name, and the library's text may be a list.
    osmCodeset = validCodeset.c_str();
    const AsyncCallback<std::string> handler(
        [this, callback](const std::string& reply) {
            // The state may have changed since the key was sent, so the answer is filled again.
            const auto status = BlasterFrames::Status(reply) & kStatusBits;
            OSMControlResp_t answer;
            FillOSMControlResp(answer);
            kUEILog.Log(3, "Send key status = {:x}", status);
            if (status != 0) {
                kUEILog.Put(2, "Send key to blaster failed");
            }
            Answer(callback, answer, status != 0 ? kError : kContinue);
        },
        task);
    m_neighbours.BlasterProxy().SendBlasterKey(osmCodeset, static_cast<std::uint8_t>(testKey),
                                               kSendOnce, handler);
}

int UEIInterface::OSMCancel()
{
    // Not refused: a cancel in any state leaves the same idle state.
    if (!osmActive) {
        kUEILog.Put(3, "OSM not started");
    }
    testKeysTotal = codesetsOffered = codesetsTested = 0;
    testKey = kNoKey;
    lastResult = kError;
    osmCodeset = nullptr;
    osmActive = false;
    return 0;
}

void UEIInterface::OSMComplete(const OSMCallback& callback)
{
    osmActive = false;
    OSMControlResp_t response;
    FillOSMControlResp(response);
    Answer(callback, response, kOver);
}

}  // namespace TrellanService
