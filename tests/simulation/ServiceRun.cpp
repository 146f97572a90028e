// SPDX-License-Identifier: Apache-2.0

#include "simulation/ServiceRun.h"

#include <malloc.h>

#include <filesystem>

#include <fmt/format.h>
#include <json/value.h>

#include "ProtoBufs/Trellan_MessageIDs.pb.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "datacollection/DataCollectionClient.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "orlu/MfgData.h"
#include "orlu/StrictJson.h"

namespace Simulation {

using namespace TrellanServiceMessages;  // NOLINT(google-build-using-namespace)
using TrellanService::SendKeyOSM;
using TrellanService::SendKeyReady;

namespace {

constexpr const char* kStaging = "/mnt/nv/payload";
constexpr const char* kConfig = "/opt/Orlu/etc/UEI/WRLD_linux.conf";

/// The maximum blast time and one tick.
constexpr double kLongestMs = 130;
/// By then a guided test has ended for inactivity.
constexpr std::uint32_t kGuidedTestMs = 300'000;
constexpr std::uint32_t kRestMs = 60'000;
constexpr std::size_t kMemoryBytes = 16UL << 20;
constexpr std::uint64_t kActsBetweenMemoryChecks = 256;

std::size_t MemoryInUse()
{
    return mallinfo2().uordblks;
}

}  // namespace

ServiceRun::ServiceRun(std::uint64_t seed, Plant plant)
    : m_random(seed), m_plant(plant), m_checker(kLongestMs), m_memory(MemoryInUse())
{
    m_root.Write(kStore, "{}");
    m_root.Write(kConfig, R"({"cloudUrl": "http://127.0.0.1:1/"})");
    m_root.Write("/opt/Orlu/etc/MfgData.json", "{}");
    if (plant == Plant::kNone && Draw(4) == 0) {
        m_root.Write("/opt/Orlu/etc/MfgData.json", R"({"irBlasterCapability": "full"})");
        m_checker.PermitAll();
    }
    std::filesystem::create_directories(m_root.Path() + kStaging);
    m_cloud.onStandstill = [this] {
        if (m_checker.IsBursting()) {
            Break("the service waits for its cloud while the light is on");
        }
    };
    StartService();
    m_client.emplace([this](bool ended) { OnSync(ended); });
}

ServiceRun::~ServiceRun()
{
    m_nextAct.reset();
    m_driver->Stop();
    m_service->Server().Stop();
}

void ServiceRun::StartService()
{
    MfgData::Reload();
    DataCollection::DataCollectionClient::Reload();
    m_asked = m_apiAnswers = 0;
    m_api.emplace(m_effects);
    m_service = std::make_unique<TrellanService::CompositionRoot>();
    m_service->Manager().CreateAllTasks();
    m_service->Manager().StartAllTasks();
    PutProductValues();
    if (m_plant == Plant::kLongBursts) {
        OnServer([this] { m_service->KeyHandler().SetKeyDelay(200, 400); });
    }
}

void ServiceRun::RestartService()
{
    if (m_cloud.IsPosting()) {
        return;  // the server can't stop while its task is in a post
    }
    ++m_counts.restarts;
    m_lpm.NoteTrouble();
    m_service->Server().Stop();
    m_service.reset();
    m_api.reset();
    CheckApi();
    StartService();
}

void ServiceRun::OnServer(Orlu::Work work)
{
    IL::BreakThread(std::move(work), &m_service->Server());
}

void ServiceRun::PutProductValues()
{
    m_api->Put("/payload/cfg", std::string(R"({"stagingDirectory":")") + kStaging + "\"}");
    m_api->Put("/payload/publish", R"({"url":"http://here/1","deadline":"soon"})");
    m_api->Put("/system/info", R"({"serialNumber":"A1234"})");
    m_api->Put("/network/status", R"({"isPrimaryUp":true})");
}

std::string ServiceRun::Run(std::uint32_t minutes)
{
    m_nextAct = m_driver->Queue()->CreateAlarm();
    ArmNextAct();
    for (std::uint32_t i = 0; i < minutes && m_broken.empty(); ++i) {
        m_runtime.Advance(60'000);
    }
    if (m_broken.empty()) {
        EndDisturbances();
        RequireRest();
    }
    if (m_broken.empty()) {
        RequireAnswers();
    }
    Check();
    m_counts.posts = m_cloud.Posts();
    m_counts.answers += m_client->Answered();
    m_counts.emissions = m_lpm.Emissions();
    return m_broken;
}

void ServiceRun::NoteTrace(std::uint64_t what)
{
    m_trace = (m_trace ^ what) * 0x100000001b3ULL;
}

void ServiceRun::Break(const std::string& rule)
{
    if (m_broken.empty()) {
        m_broken = fmt::format("at {} ms: {}", m_runtime.Elapsed(), rule);
    }
}

void ServiceRun::Check()
{
    m_checker.CheckAt(static_cast<double>(Orlu::Runtime().Now().count()));
    for (const auto* fault : {&m_checker.Fault(), &m_client->Fault()}) {
        if (!fault->empty()) {
            Break(*fault);
        }
    }
    CheckApi();
    CheckStore();
    if (m_counts.acts % kActsBetweenMemoryChecks == 0 && MemoryInUse() > m_memory + kMemoryBytes) {
        Break(fmt::format("{} bytes in use, {} at the start", MemoryInUse(), m_memory));
    }
}

void ServiceRun::CheckApi()
{
    const std::string effects = m_effects.Take();
    for (std::size_t from = 0, to; (to = effects.find('\n', from)) != std::string::npos;
         from = to + 1) {
        const auto line = std::string_view(effects).substr(from, to - from);
        const auto what = line.substr(line.find(' ') + 1);
        m_apiAnswers += what.starts_with("answer ") || what.starts_with("error ") ? 1U : 0U;
    }
    if (m_apiAnswers > m_asked) {
        Break("the local API has more answers than requests");
    }
    NoteTrace(std::hash<std::string>()(effects));
}

void ServiceRun::CheckStore()
{
    const std::string text = m_root.Read(kStore);
    std::string why;
    const auto store = Orlu::ParseStrictJson(text, why);
    if (!store) {
        Break("the store can't be read: " + why);
        return;
    }
    for (const auto& entry : (*store)["codesets"]) {
        if (!entry["name"].isString() || !entry["details"]["devNum"].isUInt()) {
            Break("the store holds half an entry: " + text);
        }
    }
    NoteTrace(std::hash<std::string>()(text));
}

void ServiceRun::OnSync(bool ended)
{
    NoteTrace(ended ? 1 : 2);
    // A list without a new code set gives the event of the end alone.
    const bool hasRun = std::exchange(m_syncing, !ended);
    if (!ended) {
        m_lpm.ForgiveTroubles();
        return;
    }
    if (!hasRun) {
        return;
    }
    ++m_counts.syncs;
    const auto& codesets = m_service->CodesetHandler();
    if (m_lpm.IsTroubled() || codesets.GetSendKeyState() != SendKeyReady) {
        return;
    }
    for (const auto& [name, entry] : codesets.GetCodesets()) {
        const auto device = static_cast<Lpm::DeviceNumber>(entry.devNum);
        if (m_plant == Plant::kForgottenCodeset) {
            m_lpm.Forget(device);
        }
        if (!m_lpm.Holds(device)) {
            Break("a sync has ended, and the blaster lacks " + name);
        }
    }
}

void ServiceRun::EndDisturbances()
{
    m_isDisturbed = false;
    m_cloud.Become(SimulatedCloud::Condition::kFair);
    m_lpm.Return();
    m_lpm.Stall(false);
    m_lpm.CutLinksAfter(SIZE_MAX);
    m_lpm.Follow(R"({"replies": []})");
    m_files.FailNone();
    m_api->Release();
    PutProductValues();
    ReportNetwork(true);
    m_client->Disconnect();
    m_runtime.RunUntilIdle();
    m_client->Connect();
    m_runtime.Advance(kGuidedTestMs + kRestMs);
}

void ServiceRun::RequireRest()
{
    Check();
    auto& codesets = m_service->CodesetHandler();
    m_counts.readyByItself = codesets.GetSendKeyState() == SendKeyReady;
    if (codesets.GetSendKeyState() == SendKeyOSM) {
        // "Complete" behind "cancel" stops the inactivity timer; the next request arms it again.
        AskApi(Portico::Method::kPut, kControl, R"({"action":"ACTION_CANCEL"})");
        m_runtime.Advance(kGuidedTestMs + kRestMs);
    }
    if (codesets.GetSendKeyState() == SendKeyOSM) {
        Break("a guided test goes on for ever");
    }
    SrcCiCodeMessage_t sources;
    for (const auto* name : {"T2051", "S0456", "N0061"}) {
        sources.add_cicode(name);
    }
    // At least one code set is new to the service, so that a sync must load it.
    sources.add_cicode(codesets.FindCodeset("T0492") == codesets.GetCodesets().end() ? "T0492"
                                                                                     : "Y0340");
    m_client->Send(TrellanService_MESSAGE_ID_SRC_CICODES, sources);
    m_runtime.Advance(kRestMs);
    if (codesets.GetSendKeyState() != SendKeyReady) {
        // A sync that has failed is repeated when the cloud connects again.
        ReportNetwork(false);
        ReportNetwork(true);
        m_runtime.Advance(kRestMs);
    }
    Check();
    if (codesets.GetSendKeyState() != SendKeyReady) {
        Break(fmt::format("all are well, and the send key state is {}",
                          static_cast<int>(codesets.GetSendKeyState())));
    }
}

void ServiceRun::RequireAnswers()
{
    const auto answered = m_client->Answered();
    const auto open = m_client->Unanswered();
    const auto emissions = m_lpm.Emissions();
    OrluKeyReqMessage_t key;
    key.set_keyval(140);
    key.set_codeset("T2051");
    key.set_keyaction(OrluKeyReqMessage_t::KEY_ACTION_SINGLE_PRESS);
    m_client->Request(TrellanService_MESSAGE_ID_ORLU_KEY_REQ, key);
    KeyMapMessage_t keyMap;
    keyMap.set_cicode("T2051");
    m_client->Request(TrellanService_MESSAGE_ID_KEYMAP_REQ, keyMap);
    FindCECDevice_t cec;
    cec.set_vendorid(0x5bc400);
    m_client->Request(TrellanService_MESSAGE_ID_FIND_CEC_DEV_REQ, cec);
    DirectEntryResp_t entry;
    entry.set_devicetype("DEVICE_TYPE_TV");
    entry.set_brand("Aurora");
    entry.set_model("AU-32H1");
    m_client->Request(TrellanService_MESSAGE_ID_DIRECT_ENTRY, entry);
    m_client->Request(TrellanService_MESSAGE_ID_IS_CLOUD_CONNECTED, CloudConnectState_t());
    CheckApi();
    const auto apiAnswers = m_apiAnswers;
    AskApi(Portico::Method::kGet, kControl, "");
    m_runtime.Advance(kRestMs);
    CheckApi();
    if (m_client->Answered() != answered + 5 || m_client->Unanswered() != open) {
        Break("all are well, and a request has no answer");
    }
    if (m_apiAnswers != apiAnswers + 1) {
        Break("all are well, and the local API has no answer");
    }
    if (m_lpm.Emissions() == emissions) {
        Break("all are well, and a key gives no light");
    }
}

}  // namespace Simulation
