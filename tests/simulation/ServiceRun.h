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

/// What is broken on purpose, so that its rule must speak up.
enum class Plant { kNone, kLongBursts, kForgottenCodeset, kTornStore };

/// One life of the whole service under virtual time, drawn from a seed: first hours in which its
/// client, LpmService, cloud, local API, files and user do what they like, and the service itself
/// may be started anew; then all are well, and the system must come to rest. The same seed does the
/// same each time.
///
/// After each step:
///  - a held key that must pause is on for the maximum blast time and a tick at most, and not at
///    all while the service waits for its cloud;
///  - no request was answered twice, and nothing was answered that nobody asked;
///  - where the client has been told that a sync ended, the blaster holds the service's code sets;
///  - the store can be read and is whole;
///  - memory stays bounded.
/// At the end a source list leads to keys that light the diode, and each request is answered once.
class ServiceRun {
public:
    explicit ServiceRun(std::uint64_t seed, Plant plant = Plant::kNone);
    ~ServiceRun();
    ServiceRun(const ServiceRun&) = delete;
    ServiceRun& operator=(const ServiceRun&) = delete;

    /// The rule that was broken and when; empty: none.
    std::string Live(std::uint32_t minutes);

    struct Counts {
        std::uint64_t acts = 0;
        std::uint64_t posts = 0;
        std::uint64_t answers = 0;
        std::uint64_t syncs = 0;
        std::uint64_t flashes = 0;
        std::uint64_t restarts = 0;
        bool readyByItself = false;  ///< at the end, before a source list came
    };
    const Counts& Count() const { return m_counts; }

    /// A number that stands for all that happened.
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
    void Heal();
    void RequireRest();
    void RequireAnswers();

    void StartService();
    void RestartService();
    void OnServer(Orlu::Work work);
    void AskApi(Portico::Method method, const std::string& path, const std::string& body);
    void KnowProduct();
    void ReportNetwork(bool isUp);

    // What may happen, each with its own share of chance.
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
    bool m_wild = true;
    bool m_syncing = false;
    const std::size_t m_memory;
    std::uint64_t m_asked = 0;
    std::uint64_t m_apiAnswers = 0;
    Counts m_counts;
    std::uint64_t m_trace = 0;
    std::string m_broken;
};

}  // namespace Simulation
