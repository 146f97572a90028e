// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cerrno>

#include <fmt/format.h>

#include "ProtoBufs/KeyValues.h"
#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "simulation/ServiceRun.h"

namespace Simulation {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)

/// An act and its weight: how often it is drawn in relation to the others.
struct ServiceRun::Row {
    unsigned weight;
    Act act;
};

const ServiceRun::Row ServiceRun::kRows[] = {
    {300, &ServiceRun::PressKey},    {5, &ServiceRun::FloodKeys},
    {25, &ServiceRun::SendSources},  {60, &ServiceRun::AskService},
    {3, &ServiceRun::SendGarbage},   {20, &ServiceRun::LoseClient},
    {70, &ServiceRun::UseApi},       {8, &ServiceRun::ChangeApi},
    {8, &ServiceRun::ChangeNetwork}, {15, &ServiceRun::ChangeCloud},
    {15, &ServiceRun::ChangeLpm},    {10, &ServiceRun::ScriptBlaster},
    {10, &ServiceRun::FailFiles},    {2, &ServiceRun::RestartService},
};

namespace {

constexpr std::array kCodesets = {"T2051", "S0456", "Y0812", "C0123", "S1180", "T0117", "T0233",
                                  "T0371", "T0492", "Y0340", "N0061", "T9999", "X1",    ""};

}  // namespace

void ServiceRun::ArmNextAct()
{
    const auto kind = Draw(10);
    const auto gap = kind < 5 ? Draw(50) : kind < 8 ? Draw(1000) : Draw(30'000);
    m_nextAct->Arm(Orlu::Runtime().Now() + Orlu::MonotonicMs(gap), [this] { ActOnce(); });
}

void ServiceRun::ActOnce()
{
    if (!m_isDisturbed || !m_broken.empty()) {
        return;
    }
    static const unsigned total = [] {
        unsigned sum = 0;
        for (const auto& row : kRows) {
            sum += row.weight;
        }
        return sum;
    }();
    auto drawn = Draw(total);
    const Row* row = kRows;
    for (; drawn >= row->weight; ++row) {
        drawn -= row->weight;
    }
    ++m_counts.acts;
    NoteTrace(static_cast<std::uint64_t>(row - kRows));
    NoteTrace(static_cast<std::uint64_t>(m_runtime.Elapsed()));
    (this->*row->act)();
    if (m_plant == Plant::kTornStore && m_counts.acts == 100) {
        m_root.Write(kStore, R"({"codesets": [{"na)");
    }
    Check();
    ArmNextAct();
}

std::string ServiceRun::DrawCodeset()
{
    // Mostly one of the first, so that keys are often of code sets that the service has.
    return kCodesets[std::min(Draw(kCodesets.size()), Draw(kCodesets.size()))];
}

void ServiceRun::PressKey()
{
    OrluKeyReqMessage_t key;
    key.set_keyval(Draw(4) == 0 ? Draw(256) : IpcProtocol::ORLU_NUMBER_0 + Draw(10));
    key.set_codeset(DrawCodeset());
    key.set_keyaction(static_cast<OrluKeyReqMessage_t::KeyAction_t>(1 + Draw(3)));
    m_client->Request(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, key);
}

void ServiceRun::FloodKeys()
{
    for (auto count = Draw(200); count > 0; --count) {
        PressKey();
    }
}

void ServiceRun::SendSources()
{
    SrcCiCodeMessage_t sources;
    for (auto count = Draw(5); count > 0; --count) {
        sources.add_cicode(DrawCodeset());
    }
    m_client->Send(TrellanService_MESSAGE_ID_SRC_CICODES, sources);
}

void ServiceRun::AskService()
{
    KeyMapMessage_t keyMap;
    keyMap.set_cicode(DrawCodeset());
    IsKeyInCodesetMessage_t isKey;
    isKey.set_cicode(DrawCodeset());
    isKey.set_ueikey(Draw(300));
    FindCECDevice_t cec;
    cec.set_vendorid(0x5bc400 + Draw(8));
    cec.set_logicaladdr(Draw(16));
    FindEDIDDevice_t edid;
    edid.set_edid(std::string(Draw(300), '\x00'));
    DirectEntryResp_t entry;
    entry.set_devicetype(Draw(2) == 0 ? "DEVICE_TYPE_TV" : "DEVICE_TYPE_BD_DVD");
    entry.set_brand(Draw(2) == 0 ? "Aurora" : "Meridian");
    entry.set_model(Draw(2) == 0 ? "AU-32H1" : "M300");
    switch (Draw(6)) {
        case 0:
            m_client->Request(TrellanService_MESSAGE_ID_KEYMAP_REQ, keyMap);
            break;
        case 1:
            m_client->Request(TrellanService_MESSAGE_ID_IS_KEY_IN_CODESET, isKey);
            break;
        case 2:
            m_client->Request(TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, cec);
            break;
        case 3:
            m_client->Request(TrellanService_MESSAGE_ID_FIND_EDID_DEV_REQ, edid);
            break;
        case 4:
            m_client->Request(TrellanService_MESSAGE_ID_DIRECT_ENTRY, entry);
            break;
        default:
            m_client->Request(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t());
    }
}

void ServiceRun::SendGarbage()
{
    std::string bytes(Draw(64), '\0');
    for (auto& byte : bytes) {
        byte = static_cast<char>(Draw(256));
    }
    if (Draw(2) == 0) {
        m_client->SendBytes(bytes);
        return;
    }
    IPCMessageEnvelope wrong;
    wrong.set_payload(bytes);
    m_client->Request(Draw(12), wrong);
}

void ServiceRun::LoseClient()
{
    m_lpm.NoteTrouble();  // the client may miss the event that a sync began
    if (Draw(2) == 0) {
        m_client->Disconnect();
    }
    m_client->Connect();
}

void ServiceRun::AskApi(Portico::Method method, const std::string& path, const std::string& body)
{
    ++m_asked;
    OnServer([this, method, path, body] { m_api->Request(method, path, body); });
}

void ServiceRun::UseApi()
{
    static constexpr std::array kBodies = {
        R"({"action":"ACTION_START","deviceType":"DEVICE_TYPE_TV","deviceBrand":"Aurelia"})",
        R"({"action":"ACTION_START","deviceType":"DEVICE_TYPE_BD_DVD","deviceBrand":"Nobody"})",
        R"({"action":"ACTION_SEND_KEY"})",
        R"({"action":"ACTION_SEND_KEY"})",
        R"({"action":"ACTION_USER_RESPONSE","response":"USER_RESPONSE_WORKED"})",
        R"({"action":"ACTION_USER_RESPONSE","response":"USER_RESPONSE_FAILED"})",
        R"({"action":"ACTION_COMPLETE"})",
        R"({"action":"ACTION_CANCEL"})",
        R"({"action":)",
        "{}"};
    const auto kind = Draw(20);
    if (kind < 2) {
        AskApi(Portico::Method::kGet, kControl, "");
    } else if (kind < 4) {
        AskApi(Portico::Method::kPost, "/remote/integration/brandList",
               R"({"deviceType":"DEVICE_TYPE_TV","filter":"."})");
    } else if (kind < 6) {
        AskApi(Portico::Method::kPut, "/remote/integration/directEntry",
               R"({"deviceType":"DEVICE_TYPE_TV","brand":"Boreal","model":"Polaris"})");
    } else {
        AskApi(Portico::Method::kPut, kControl, kBodies[Draw(kBodies.size())]);
    }
}

void ServiceRun::ChangeApi()
{
    static constexpr std::array kPaths = {"/payload/cfg", "/payload/publish", "/system/info"};
    switch (Draw(4)) {
        case 0:
            m_api->Hold();
            break;
        case 1:
            OnServer([this] { m_api->Release(); });
            break;
        case 2:
            m_api->Remove(kPaths[Draw(kPaths.size())]);
            break;
        default:
            PutProductValues();
    }
}

void ServiceRun::ReportNetwork(bool isUp)
{
    const std::string status = isUp ? R"({"isPrimaryUp":true})" : R"({"isPrimaryUp":false})";
    m_api->Put("/network/status", status);
    OnServer([this, status] { m_api->Notify("/network/status", status); });
}

void ServiceRun::ChangeNetwork()
{
    ReportNetwork(Draw(2) == 0);
}

void ServiceRun::ChangeCloud()
{
    using Condition = SimulatedCloud::Condition;
    static constexpr std::array kConditions = {
        Condition::kFair, Condition::kFair,    Condition::kFair,    Condition::kDown,
        Condition::kSlow, Condition::kFailing, Condition::kGarbled, Condition::kFair};
    m_cloud.Become(kConditions[Draw(kConditions.size())]);
}

void ServiceRun::ChangeLpm()
{
    switch (Draw(6)) {
        case 0:
            m_lpm.Leave();
            break;
        case 1:
            m_lpm.Stall(true);
            break;
        case 2:
            m_lpm.CutLinksAfter(Draw(200));
            break;
        default:
            m_lpm.Return();
            m_lpm.Stall(false);
    }
}

void ServiceRun::ScriptBlaster()
{
    static constexpr std::array kCommands = {0x00, 0x01, 0x02, 0x09, 0x11, 0x22};
    static constexpr std::array kTroubles = {"\"silent\": true", "\"status\": 7",
                                             "\"delayMs\": 700", "\"raw\": \"01\"",
                                             "\"raw\": \"\"",    "\"bulkResult\": -1"};
    if (Draw(2) == 0) {
        m_lpm.Follow(R"({"replies": []})");
        return;
    }
    m_lpm.Follow(fmt::format(R"({{"replies": [{{"command": "0x{:02x}", "times": {}, {}}}]}})",
                             kCommands[Draw(kCommands.size())], 1 + Draw(5),
                             kTroubles[Draw(kTroubles.size())]));
}

void ServiceRun::FailFiles()
{
    static constexpr std::array kErrors = {ENOSPC, EIO, EACCES, EROFS, EMFILE};
    if (Draw(2) == 0) {
        m_files.FailNone();
        return;
    }
    m_files.FailCall(static_cast<int>(1 + Draw(12)), kErrors[Draw(kErrors.size())],
                     Draw(2) == 0 ? FaultyFiles::Lasting::Once : FaultyFiles::Lasting::FromThenOn);
}

}  // namespace Simulation
