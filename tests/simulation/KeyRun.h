// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "codesets/Trellan_ServiceCodesetHandler.h"
#include "keys/Trellan_ServiceKeyHandler.h"
#include "simulation/SimulatedLpm.h"
#include "support/NoSync.h"
#include "support/TemporaryRoot.h"

namespace Simulation {

/// How keys are pressed.
enum class Presser {
    kOneHand,  ///< A press, its release, the next press, each at least 20 ms later.
    kRandom,  ///< Presses, releases and single presses in any order, floods, lost and late answers,
              ///< a blocked server task, an LpmService that goes, permissions that change.
};

/// Runs the key handler with the real proxy and the real LpmService under virtual time, through
/// schedules of a few seconds drawn from a seed, and checks the emissions. Each schedule ends with
/// a release and a pause, after which nothing may be sent.
class KeyRun : private TrellanService::CodesetServerIF, private TrellanService::UEIResponsesIF {
public:
    KeyRun(std::uint64_t seed, Presser presser);
    ~KeyRun() override;
    KeyRun(const KeyRun&) = delete;
    KeyRun& operator=(const KeyRun&) = delete;

    /// Runs one schedule. Returns the rule that was broken; empty if none was.
    std::string Play();

    const BlastChecker::Figures& Seen() const { return m_checker.Seen(); }
    /// How long any key was sent, in milliseconds.
    double OnMs() const { return m_checker.Seen().onMs + m_checker.OnFor(Now()); }
    std::uint64_t Acts() const { return m_acts; }

    // Single actions.
    void Press(std::uint32_t key);
    void PressOnce(std::uint32_t key);
    void Release();
    void Wait(std::uint32_t ms);
    /// Not ready: as while a sync runs, in which keys go by CEC.
    void SetReady(bool isReady);
    TrellanService::Trellan_ServiceKeyHandler& Keys() { return m_keys; }

private:
    bool IsCloudConnected() override { return false; }
    void NotifyBlasterSyncComplete(bool /*done*/) override {}
    void FillOSMControlResp(TrellanServiceMessages::OSMControlResp_t& /*response*/) override {}
    void FillDirectEntryResp(TrellanServiceMessages::DirectEntryResp_t& /*response*/) override {}

    void PressAsOneHand();
    void ActAtRandom();
    void PressAny() { Press(DrawKey()); }
    void PressAnyOnce() { PressOnce(DrawKey()); }
    void Flood();
    void StandStill();
    void ChangeLpm();
    void ChangePermission();
    void ChangeState();
    void DelayAnswers(std::uint32_t ms);
    void Rest();

    std::uint32_t Draw(std::uint32_t most) { return static_cast<std::uint32_t>(m_random() % most); }
    std::uint32_t DrawKey();
    double Now() const;

    std::mt19937_64 m_random;
    const Presser m_presser;
    TemporaryRoot m_root;
    VirtualRuntime m_runtime;
    BlastChecker m_checker;
    SimulatedLpm m_lpm{m_runtime, m_checker};
    std::shared_ptr<NotifyTargetTaskIF> m_task = IL::CreateTask("server", "");
    NoSync m_sync;
    TrellanService::Trellan_ServiceCodesetHandler m_codesets{*this, m_sync};
    TrellanService::Trellan_ServiceBlasterProxy m_proxy{m_task.get(), *this};
    TrellanService::Trellan_ServiceKeyHandler m_keys;
    AsyncCallback<std::string> m_answer{[](const std::string&) {}, m_task.get()};
    std::uint64_t m_acts = 0;
};

}  // namespace Simulation
