// SPDX-License-Identifier: Apache-2.0

#include "blaster/Trellan_ServiceBlasterProxy.h"
#include "keys/KeyLog.h"
#include "keys/KeyTables.h"
#include "keys/Trellan_ServiceKeyHandler.h"

namespace TrellanService {

namespace {

// Key flags of the blaster. Both send until the end key; `kFirstBurst` announces that further
// bursts may follow.
constexpr std::uint8_t kContinuous = 0;
constexpr std::uint8_t kFirstBurst = 0xFF;

}  // namespace

void Trellan_ServiceKeyHandler::HandleBlastState(BlastEvent event, std::string codeset,
                                                 std::uint32_t orluKey)
{
    // Each event counts as a tick, a press or a release too. An extra event can therefore shorten a
    // burst or a pause, but never lengthen a burst.
    m_elapsed += m_tick;
    if (!Step(event, std::move(codeset), orluKey)) {
        return;  // a tick that is armed still comes; `StepIdle` ignores it
    }
    if (m_elapsed == 0) {
        // `Stop` makes the timer count from now. Without it, ticks that are overdue would follow at
        // once, and a pause that begins late would be too short.
        m_timer->Stop();
    }
    m_timer->SetTimeouts(m_tick, 0);
    m_timer->Start([this] { HandleBlastState(BlastTick, "", kInvalidUEIKey); });
}

// True if the timer must be armed again.
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
        // The task is about to block and runs no tick meanwhile. `Flush` is needed because the
        // router writes at the end of the wake-up, which is after the wait. The state stays: once
        // the burst's time is up, another end frame goes out, whose reply starts the pause.
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
    const bool continuous = MayBlastContinuously(codeset);
    kKeyLog.Put(3, continuous ? "Sending continuous key" : "Sending key in safe blast mode");
    // The reply is not needed: the length of a burst is counted from here, not from the reply.
    sendKey(codeset, orluKey, continuous ? kContinuous : kFirstBurst, m_quietCallback);
    m_key = orluKey;
    m_codeset = std::move(codeset);
    Enter(BlastSending);
    return true;
}

bool Trellan_ServiceKeyHandler::StepSending(BlastEvent event)
{
    // Asked anew at each step, so that a whitelist that arrives during a press counts at once.
    const bool continuous = MayBlastContinuously(m_codeset);
    if (event == BlastRelease) {
        // A safe key needs no pause, so the reply to its end key is not waited for.
        m_blasterProxy->SendEndKey(continuous ? m_quietCallback : m_endCallback);
        Enter(continuous ? BlastIdle : BlastEndWaitReleased);
        return !continuous;
    }
    // A press in this state is dropped: it is no more than a tick.
    if (!continuous && TimeIsUp(m_maxBlastTime)) {
        m_blasterProxy->SendEndKey(m_endCallback);
        Enter(BlastEndWaitHeld);
    }
    return true;
}

void Trellan_ServiceKeyHandler::StepEndWait(BlastEvent event)
{
    const bool held = m_blastState == BlastEndWaitHeld;
    if (held && event == BlastRelease) {
        Enter(BlastEndWaitReleased);
        // The pause begins with the reply, not with the request: the blaster may be on until it has
        // handled the end frame.
    } else if (event == BlastEndDone) {
        Enter(held ? BlastDelayHeld : BlastDelayReleased);
    } else if (TimeIsUp(m_keyDelay)) {
        Enter(BlastDelayReleased);  // no reply: the blaster may still be on, so no further burst
    }
}

void Trellan_ServiceKeyHandler::StepDelayHeld(BlastEvent event)
{
    if (event == BlastRelease) {
        m_blastState = BlastDelayReleased;  // not `Enter`, which would begin the pause anew
    } else if (TimeIsUp(m_keyDelay)) {
        // Flag 0 continues the press; this frame asks for no reply.
        sendKey(m_codeset, m_key, kContinuous, m_quietCallback);
        Enter(BlastSending);
    }
}

bool Trellan_ServiceKeyHandler::StepDelayReleased()
{
    // A press in this pause is dropped, so that quick presses cannot leave out the key delay.
    if (!TimeIsUp(m_keyDelay)) {
        return true;
    }
    Enter(BlastIdle);
    return false;
}

}  // namespace TrellanService
