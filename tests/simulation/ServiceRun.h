// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "core/CompositionRoot.h"
#include "simulation/SimulatedClient.h"
#include "simulation/SimulatedCloud.h"
#include "simulation/SimulatedLpm.h"
#include "support/Effects.h"
#include "support/FaultyFiles.h"
#include "support/ScriptedPortico.h"
#include "support/TemporaryRoot.h"

namespace Simulation {

/// A fault that is put in on purpose and that its rule must find.
enum class Plant { kNone, kLongBursts, kForgottenCodeset, kTornStore };

/// One run of the whole service under virtual time, drawn from a seed. First its client,
/// LpmService, cloud, local API, files and user act at random for the given minutes, and the
/// service itself may be restarted. Then all disturbances end, and the system must become ready
/// again. A seed gives the same run each time.
///
/// After each step:
///  - a held key that must pause is on for the maximum blast time and a tick at most, and not at
///    all while the service waits for its cloud;
///  - no request was answered twice, and no answer lacks its request;
///  - once the client has the event that a sync ended, the blaster holds the service's code sets;
///  - the store can be read and is complete;
///  - memory stays bounded.
/// At the end a source list makes keys reach the blaster, and each request is answered once.
class ServiceRun {
public:
    explicit ServiceRun(std::uint64_t seed, Plant plant = Plant::kNone);
    ~ServiceRun();
    ServiceRun(const ServiceRun&) = delete;
    ServiceRun& operator=(const ServiceRun&) = delete;

    /// The rule that was broken, and when; empty if none was.
    std::string Run(std::uint32_t minutes);

    struct Counts {
        std::uint64_t acts = 0;
        std::uint64_t posts = 0;
        std::uint64_t answers = 0;
        std::uint64_t syncs = 0;
        std::uint64_t emissions = 0;
        std::uint64_t restarts = 0;
        bool readyByItself = false;  ///< ready at the end, before the source list
    };
    const Counts& Count() const { return m_counts; }

    /// A hash of all that happened, to compare two runs of a seed.
    std::uint64_t Trace() const { return m_trace; }

private:
    static constexpr const char* kControl = "/remote/integration";
    static constexpr const char* kStore = "/mnt/nv/product-persistence/TRSCodesetConfig.json";

    using Act = void (ServiceRun::*)();
    struct Row;
    static const Row kRows[];

    void ActOnce();
    void ArmNextAct();
    void Check();
    void CheckStore();
    void CheckApi();
    void OnSync(bool ended);
    void Break(const std::string& rule);
    void EndDisturbances();
    void RequireRest();
    void RequireAnswers();

    void StartService();
    void RestartService();
    void OnServer(Orlu::Work work);
    void AskApi(Portico::Method method, const std::string& path, const std::string& body);
    void PutProductValues();
    void ReportNetwork(bool isUp);

    // The random acts, each with a weight of its own.
    void PressKey();
    void FloodKeys();
    void SendSources();
    void AskService();
    void SendGarbage();
    void LoseClient();
    void UseApi();
    void ChangeApi();
    void ChangeNetwork();
    void ChangeCloud();
    void ChangeLpm();
    void ScriptBlaster();
    void FailFiles();

    std::uint32_t Draw(std::uint32_t most) { return static_cast<std::uint32_t>(m_random() % most); }
    std::string DrawCodeset();
    void NoteTrace(std::uint64_t what);

    std::mt19937_64 m_random;
    Plant m_plant;
    TemporaryRoot m_root;
    VirtualRuntime m_runtime;
    Effects m_effects{m_runtime};
    FaultyFiles m_files;
    BlastChecker m_checker;
    SimulatedCloud m_cloud{m_runtime, m_random};
    SimulatedLpm m_lpm{m_runtime, m_checker};
    std::optional<ScriptedPortico> m_api;
    std::unique_ptr<TrellanService::CompositionRoot> m_service;
    std::optional<SimulatedClient> m_client;
    std::shared_ptr<NotifyTargetTaskIF> m_driver = IL::CreateTask("driver", "");
    std::unique_ptr<Orlu::AlarmIF> m_nextAct;
    bool m_isDisturbed = true;
    bool m_syncing = false;
    const std::size_t m_memory;
    std::uint64_t m_asked = 0;
    std::uint64_t m_apiAnswers = 0;
    Counts m_counts;
    std::uint64_t m_trace = 0;
    std::string m_broken;
};

}  // namespace Simulation
