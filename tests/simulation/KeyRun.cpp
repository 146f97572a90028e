// SPDX-License-Identifier: Apache-2.0

#include "simulation/KeyRun.h"

#include <fmt/format.h>

#include "ProtoBufs/KeyValues.h"
#include "orlu/MfgData.h"

namespace Simulation {

namespace {

constexpr const char* kCodeset = "T2051";
/// The maximum blast time and one tick.
constexpr double kLongestMs = 130;
/// The key delay, less the time for which messages of one hand count as ticks.
constexpr double kShortestPauseMs = 150;
constexpr double kMostDuty = 0.45;
constexpr std::uint32_t kRestMs = 1500;

TemporaryRoot& WithManufacturingData(TemporaryRoot& root)
{
    root.Write("/opt/Orlu/etc/MfgData.json", "{}");
    MfgData::Reload();
    return root;
}

}  // namespace

KeyRun::KeyRun(std::uint64_t seed, Presser presser)
    : m_random(seed),
      m_presser(presser),
      m_checker(kLongestMs),
      m_keys(&m_proxy, (WithManufacturingData(m_root), m_codesets), m_task.get())
{
    TrellanServiceMessages::SrcCiCodeMessage_t list;
    list.add_cicode(kCodeset);
    m_codesets.cacheCodesets(list);
    m_codesets.SetSendKeyState(TrellanService::SendKeyReady);
    m_lpm.LoadCodesets(CODESET_FOLDER);
    m_runtime.Advance(kRestMs);
}

KeyRun::~KeyRun()
{
    m_task->Stop();
}

double KeyRun::Now() const
{
    return static_cast<double>(Orlu::Runtime().Now().count());
}

void KeyRun::Wait(std::uint32_t ms)
{
    m_runtime.Advance(ms);
    m_checker.CheckAt(Now());
}

std::string KeyRun::Play()
{
    for (auto count = 4 + Draw(20); count > 0 && m_checker.Fault().empty(); --count) {
        ++m_acts;
        m_presser == Presser::kOneHand ? PressAsOneHand() : ActAtRandom();
    }
    Rest();
    if (!m_checker.Fault().empty()) {
        return m_checker.Fault();
    }
    if (m_checker.IsOn()) {
        return "all is released, and the light is on";
    }
    const auto& seen = m_checker.Seen();
    if (m_presser == Presser::kOneHand && seen.shortestPause < kShortestPauseMs) {
        return fmt::format("a pause of {} ms", seen.shortestPause);
    }
    if (m_presser == Presser::kOneHand && seen.worstDuty > kMostDuty) {
        return fmt::format("on for {} of ten seconds", seen.worstDuty);
    }
    return {};
}

void KeyRun::Rest()
{
    m_lpm.Return();
    m_lpm.Stall(false);
    m_lpm.LoadCodesets(CODESET_FOLDER);
    m_lpm.Follow(R"({"replies": []})");
    m_checker.PermitNone(Now());
    m_keys.m_allowContinuous = false;
    SetReady(true);
    Wait(kRestMs);
    Release();
    Wait(kRestMs);
}

void KeyRun::PressAsOneHand()
{
    DelayAnswers(Draw(40));
    if (Draw(8) == 0) {
        PressAnyOnce();
    } else {
        PressAny();
        Wait(20 + Draw(Draw(2) == 0 ? 150 : 2000));
        Release();
    }
    Wait(20 + Draw(Draw(2) == 0 ? 150 : 1000));
}

void KeyRun::ActAtRandom()
{
    static constexpr struct {
        std::uint32_t weight;
        void (KeyRun::*act)();
    } kActs[] = {
        {30, &KeyRun::PressAny},        {25, &KeyRun::Release},
        {10, &KeyRun::PressAnyOnce},    {5, &KeyRun::Flood},
        {5, &KeyRun::StandStill},       {4, &KeyRun::ChangeLpm},
        {6, &KeyRun::ChangePermission}, {5, &KeyRun::ChangeState},
    };
    auto drawn = Draw(100);
    for (const auto& [weight, act] : kActs) {
        if (drawn < weight) {
            (this->*act)();
            break;
        }
        drawn -= weight;
    }
    if (drawn >= 90) {
        // Late by up to twice the key delay, or lost.
        DelayAnswers(Draw(3) == 0 ? 0 : Draw(450));
    }
    static constexpr std::uint32_t kGaps[] = {30, 30, 300, 300, 2000};
    Wait(Draw(kGaps[Draw(5)]));
}

/// Mostly a digit. Power is never held, and volume, one key in sixteen, has no code.
std::uint32_t KeyRun::DrawKey()
{
    switch (Draw(16)) {
        case 0:
            return IpcProtocol::ORLU_TV_POWER;
        case 1:
            return IpcProtocol::ORLU_VOLUME_UP;
        default:
            return IpcProtocol::ORLU_NUMBER_0 + Draw(10);
    }
}

void KeyRun::Press(std::uint32_t key)
{
    m_keys.sendContinuousKey(kCodeset, key, m_answer, false);
    m_runtime.RunUntilIdle();
}

void KeyRun::Release()
{
    m_keys.sendEndKey(kCodeset, m_answer, false);
    m_runtime.RunUntilIdle();
}

void KeyRun::PressOnce(std::uint32_t key)
{
    m_keys.sendSingleKey(kCodeset, key, m_answer);
    m_runtime.RunUntilIdle();
}

void KeyRun::Flood()
{
    const auto gap = Draw(16);
    for (auto count = Draw(60); count > 0; --count) {
        Draw(8) == 0 ? Release() : PressAny();
        Wait(gap);
    }
}

void KeyRun::StandStill()
{
    const auto ms = Draw(3000);
    IL::BreakThread(
        [this, ms] {
            m_keys.EndBurst();
            m_runtime.Advance(ms);
        },
        m_task.get());
    Wait(0);
}

void KeyRun::ChangeLpm()
{
    m_lpm.Disturb(Draw(4), Draw(100));
    if (m_lpm.IsThere()) {
        m_lpm.LoadCodesets(CODESET_FOLDER);
    }
}

/// A sync begins or ends: the path of the end press may not be that of its press.
void KeyRun::ChangeState()
{
    SetReady(Draw(2) == 0);
}

void KeyRun::SetReady(bool isReady)
{
    m_codesets.SetSendKeyState(isReady ? TrellanService::SendKeyReady
                                       : TrellanService::SendKeySyncPending);
}

void KeyRun::ChangePermission()
{
    m_keys.m_allowContinuous = Draw(2) == 0;
    m_keys.m_allowContinuous ? m_checker.PermitAll() : m_checker.PermitNone(Now());
}

void KeyRun::DelayAnswers(std::uint32_t ms)
{
    m_lpm.Follow(
        ms == 0 && m_presser == Presser::kRandom
            ? R"({"replies": [{"command": "0x00", "times": 2, "silent": true}]})"
            : fmt::format(R"({{"replies": [{{"command": "0x00", "times": 5, "delayMs": {}}}]}})",
                          ms));
}

}  // namespace Simulation
