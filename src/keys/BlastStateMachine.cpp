// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "keys/KeyLog.h"
#include "keys/KeyTables.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

constexpr std::uint8_t kContinuous = 0;
constexpr std::uint8_t kFirstBurst = 0xFF;

}  // namespace

void Trellan_ServiceKeyHandler::HandleBlastState(BlastEvent event, std::string codeset,
                                                 std::uint32_t orluKey)
{
    // Every event counts as a tick, so messages about a held key shorten burst and pause.
    m_elapsed += m_tick;
    if (!Step(event, std::move(codeset), orluKey)) {
        return;  // a tick that is armed still comes, and finds `BlastIdle`
    }
    if (m_elapsed == 0) {
        // A state that begins late lasts its whole time: the ticks missed before it do not count.
        m_timer->Stop();
    }
    m_timer->SetTimeouts(m_tick, 0);
    m_timer->Start([this] { HandleBlastState(BlastTick, "", kInvalidUEIKey); });
}

// Whether the timer is to be armed again.
bool Trellan_ServiceKeyHandler::Step(BlastEvent event, std::string codeset, std::uint32_t orluKey)
{
    switch (m_blastState) {
        case BlastIdle:
            return StepIdle(event, std::move(codeset), orluKey);
        case BlastSending:
            return StepSending(event);
        case BlastEndWaitHeld:
        case BlastEndWaitReleased:
            StepEndWait(event);
            return true;
        case BlastDelayHeld:
            StepDelayHeld(event);
            return true;
        case BlastDelayReleased:
            return StepDelayReleased();
    }
    return false;
}

void Trellan_ServiceKeyHandler::EndBurst()
{
    if (m_blastState == BlastSending && !MayBlastContinuously(m_codeset)) {
        m_blasterProxy->SendEndKey(m_quietCallback);
        m_blasterProxy->Flush();
    }
}

void Trellan_ServiceKeyHandler::Enter(BlastState state)
{
    m_blastState = state;
    m_elapsed = 0;
}

bool Trellan_ServiceKeyHandler::StepIdle(BlastEvent event, std::string codeset,
                                         std::uint32_t orluKey)
{
    if (event != BlastPress) {
        return false;
    }
    // With flag 0 the blaster repeats until the end key; 255 marks the first of several bursts.
    const bool continuous = MayBlastContinuously(codeset);
    kKeyLog.Put(3, continuous ? "Sending continuous key" : "Sending key in safe blast mode");
    sendKey(codeset, orluKey, continuous ? kContinuous : kFirstBurst, m_quietCallback);
    m_key = orluKey;
    m_codeset = std::move(codeset);
    Enter(BlastSending);
    return true;
}

bool Trellan_ServiceKeyHandler::StepSending(BlastEvent event)
{
    // Asked anew each time: a whitelist that comes during a press counts at once.
    const bool continuous = MayBlastContinuously(m_codeset);
    if (event == BlastRelease) {
        // A key without pauses needs none behind it either, so the answer is not awaited.
        m_blasterProxy->SendEndKey(continuous ? m_quietCallback : m_endCallback);
        Enter(continuous ? BlastIdle : BlastEndWaitReleased);
        return !continuous;
    }
    if (!continuous && TimeIsUp(m_maxBlastTime)) {
        m_blasterProxy->SendEndKey(m_endCallback);
        // The pause counts from the answer, because only then the blaster is known to be off.
        Enter(BlastEndWaitHeld);
    }
    return true;
}

void Trellan_ServiceKeyHandler::StepEndWait(BlastEvent event)
{
    const bool held = m_blastState == BlastEndWaitHeld;
    if (held && event == BlastRelease) {
        Enter(BlastEndWaitReleased);
    } else if (event == BlastEndDone) {
        Enter(held ? BlastDelayHeld : BlastDelayReleased);
    } else if (TimeIsUp(m_keyDelay)) {
        Enter(BlastDelayReleased);  // the answer is lost: no further burst
    }
}

void Trellan_ServiceKeyHandler::StepDelayHeld(BlastEvent event)
{
    if (event == BlastRelease) {
        m_blastState = BlastDelayReleased;  // only the rest of the pause remains
    } else if (TimeIsUp(m_keyDelay)) {
        // Flag 0 as every burst but the first; no answer comes back for it.
        sendKey(m_codeset, m_key, kContinuous, m_quietCallback);
        Enter(BlastSending);
    }
}

bool Trellan_ServiceKeyHandler::StepDelayReleased()
{
    if (!TimeIsUp(m_keyDelay)) {
        return true;
    }
    Enter(BlastIdle);
    return false;
}

}  // namespace TrellanService
