// SPDX-License-Identifier: Apache-2.0

#include <json/value.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "ProtoBufs/ciStart.pb.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "endpoints/ManagerLog.h"
#include "endpoints/Trellan_ServiceManager.h"
#include "uei/UEIInterface.h"

using namespace TrellanServiceMessages;

namespace TrellanService {

namespace {

constexpr std::uint32_t kOnlineKind = 2;
constexpr const char* kError = "LAST_RESULT_ERROR";
constexpr const char* kNone = "LAST_RESULT_NONE";

void Answer(const Trellan_ServiceManager::OSMAnswer& answer, const OSMControlResp_t& response)
{
    if (answer) {
        answer(response);
    }
}

void Refuse(const Trellan_ServiceManager::OSMAnswer& answer, OSMControlResp_t response)
{
    response.set_lastresult(kError);
    Answer(answer, response);
}

/// The version is text from the cloud and need not be UTF-8, which JSON requires.
void LogRecord(const DataCollection::ciStart& record)
{
    if (!DPrint::IsLog(4)) {
        return;
    }
    try {
        kManagerLog.Log(4, "Trellan data log  {}",
                        ProtoToMarkup::ToJson(record, true, false, false));
    } catch (const ProtoToMarkup::MarkupError& error) {
        kManagerLog.Log(2, "Trellan data log: {}", error.what());
    }
}

}  // namespace

OSMControlResp_t Trellan_ServiceManager::FilledResponse()
{
    OSMControlResp_t response;
    m_neighbours.Engine().FillOSMControlResp(response);
    return response;
}

void Trellan_ServiceManager::HandleTRGet(const OSMAnswer& answer)
{
    Answer(answer, FilledResponse());
}

void Trellan_ServiceManager::HandleTRPut(const OSMControlMsg_t& message, const OSMAnswer& answer)
{
    if (!message.has_action()) {
        Refuse(answer, {});
        return;
    }
    if (!m_neighbours.IsCloudConnected()) {
        kManagerLog.Put(2, "TRS request with no UEI session established");
        Refuse(answer, {});
        return;
    }
    ResetInactivityTimer();
    // The client is told of start, cancel and complete whether or not they succeed.
    const std::string& action = message.action();
    kManagerLog.Log(3, "remote integration PUT {}", action);
    if (action == "ACTION_START") {
        OSMStart(message, answer);
        m_neighbours.NotifyState(TrellanService_STATE_START_CALLED);
    } else if (action == "ACTION_CANCEL") {
        CancelTest(answer);
        m_neighbours.NotifyState(TrellanService_STATE_CANCEL_CALLED);
    } else if (action == "ACTION_USER_RESPONSE") {
        TakeUserResponse(message, answer);
    } else if (action == "ACTION_SEND_KEY") {
        m_neighbours.Engine().OSMSendKey(answer);
    } else if (action == "ACTION_COMPLETE") {
        OSMComplete(answer);
        m_neighbours.NotifyState(TrellanService_STATE_COMPLETE_CALLED);
    } else {
        Refuse(answer, {});
    }
}

void Trellan_ServiceManager::OSMStart(const OSMControlMsg_t& message, const OSMAnswer& answer)
{
    // Filled before the cancel, so that the answer reports how far the test was.
    const OSMControlResp_t response = FilledResponse();
    if (!message.has_devicetype() || !message.has_devicebrand()) {
        kManagerLog.Put(3, "OSM: no device type and/or brand specified");
        Refuse(answer, response);
        return;
    }
    RecordStart(message);
    // The test changes the code sets in the blaster, so product keys go by CEC until the sync after
    // the test. This holds for a start that fails, too.
    m_neighbours.CodesetHandler().SetSendKeyState(SendKeyOSM);
    m_neighbours.Engine().OSMStart(message, answer);
}

void Trellan_ServiceManager::RecordStart(const OSMControlMsg_t& message)
{
    // If the version cannot be read, the start is recorded without it.
    Json::Value version;
    m_neighbours.Engine().GetVersion(version, kOnlineKind);
    const auto record = std::make_shared<DataCollection::ciStart>();
    record->set_action(message.action());
    record->set_inputroute(message.inputroute());
    record->set_devicetype(message.devicetype());
    record->set_devicebrand(message.devicebrand());
    record->set_databasever(version["TRVersion"].asString());
    LogRecord(*record);
    m_dataCollection->SendData(record, "control-integration-start");
}

void Trellan_ServiceManager::CancelTest(const OSMAnswer& answer)
{
    OSMControlResp_t response = FilledResponse();
    m_neighbours.Engine().OSMCancel();
    response.set_sessionactive(false);
    response.set_lastresult(kNone);
    Answer(answer, response);
}

void Trellan_ServiceManager::TakeUserResponse(const OSMControlMsg_t& message,
                                              const OSMAnswer& answer)
{
    const OSMControlResp_t response = FilledResponse();
    // While a test is active, a missing response counts as "did not work".
    if (!message.has_response() && !response.sessionactive()) {
        Refuse(answer, response);
        return;
    }
    m_neighbours.Engine().OSMUserResponse(message.response() == "USER_RESPONSE_WORKED", answer);
}

void Trellan_ServiceManager::OSMComplete(const OSMAnswer& answer)
{
    kManagerLog.Put(3, "OSM complete received");
    m_osmTimer->Stop();
    if (m_neighbours.Engine().IsOSMActive()) {
        m_neighbours.Engine().OSMComplete(answer);
        // Set first: if the sync cannot begin now, it is begun in this state when the cloud is
        // found again.
        m_neighbours.CodesetHandler().SetSendKeyState(SendKeySyncPending);
        m_neighbours.CodesetHandler().syncCodesets();
        return;
    }
    OSMControlResp_t response = FilledResponse();
    response.set_lastresult(kNone);
    Answer(answer, response);
}

void Trellan_ServiceManager::ResetInactivityTimer()
{
    if (!m_osmTimer) {
        kManagerLog.Put(3, "Shouldn't be here, trying to reset activity timer with no OSM active");
        return;
    }
    kManagerLog.Put(3, "Setting OSM InactvityTimer");
    m_osmTimer->SetTimeouts(m_osmTimeOutMs, 0);
    m_osmTimer->Start([this] { HandleTimeOut(); });
}

void Trellan_ServiceManager::HandleTimeOut()
{
    kManagerLog.Put(3, "A time out during OSM has occurred.");
    // A user who left must not keep the product keys on CEC: the blaster goes back to the source
    // list.
    m_neighbours.CodesetHandler().SetSendKeyState(SendKeySyncPending);
    m_neighbours.Engine().OSMCancel();
    m_neighbours.CodesetHandler().syncCodesets();
}

}  // namespace TrellanService
