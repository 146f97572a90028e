// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "orlu/Callback.h"
#include "orlu/Timer.h"

namespace TrellanService {

class Trellan_ServiceBlasterProxy;
class Trellan_ServiceCodesetHandler;

enum BlastEvent { BlastPress, BlastRelease, BlastEndDone, BlastTick };

enum BlastState {
    BlastIdle,             ///< No key in progress. The timer is not armed again.
    BlastSending,          ///< The blaster is sending the key.
    BlastEndWaitHeld,      ///< Burst ended, key held: waiting for the reply to the end key.
    BlastDelayHeld,        ///< The pause between two bursts.
    BlastEndWaitReleased,  ///< Burst ended, key released: waiting for the same reply.
    BlastDelayReleased,    ///< The last pause. A press is dropped until it is over.
};

/// How a key is held in safe blast mode, in milliseconds.
struct KeyTiming {
    std::uint32_t keyDelay;      ///< Pause between two bursts.
    std::uint32_t maxBlastTime;  ///< Length of a burst.
};

/// Turns key presses into infrared or CEC. A held infrared key is sent without pause only if the
/// product or its code set is known to be safe for that; otherwise in bursts, each ended after the
/// maximum blast time and followed by the key delay ("safe blast mode").
///
/// On the server task; lives until the process ends. A callback is called at most once: with the
/// blaster's reply for a single press, with "CEC key sent" for CEC, else with an empty string.
class Trellan_ServiceKeyHandler {
public:
    using StringCallback = AsyncCallback<std::string>;

    static Trellan_ServiceKeyHandler& getInstance();

    /// None of the three is owned; all must outlive the handler.
    Trellan_ServiceKeyHandler(Trellan_ServiceBlasterProxy* blasterProxy,
                              const Trellan_ServiceCodesetHandler& codesets,
                              NotifyTargetTaskIF* task);
    ~Trellan_ServiceKeyHandler();
    Trellan_ServiceKeyHandler(const Trellan_ServiceKeyHandler&) = delete;
    Trellan_ServiceKeyHandler& operator=(const Trellan_ServiceKeyHandler&) = delete;

    /// One press without a release. By infrared only: otherwise `callback` gets an empty string and
    /// nothing is sent. A code set without a device number gets no call.
    void sendSingleKey(std::string codeset, std::uint32_t orluKey, const StringCallback& callback);

    /// A press that `sendEndKey` ends. It goes by infrared if there is a code set and the blaster
    /// is in step with the source list, or if `forceBlast` is set; else by CEC. An infrared press
    /// is dropped while an earlier one is not over; it is answered all the same.
    void sendContinuousKey(std::string codeset, std::uint32_t orluKey,
                           const StringCallback& callback, bool forceBlast);
    void sendEndKey(std::string codeset, const StringCallback& callback, bool forceBlast);

    /// An event of a key. A press comes with its code set and key, every other event with an empty
    /// text and 255.
    void HandleBlastState(BlastEvent event, std::string codeset, std::uint32_t orluKey);

    /// Call this before the task blocks. A key that the blaster is sending and that must not be
    /// sent without pause gets its end frame now. The state stays as it is, so another end frame
    /// follows later, which the blaster accepts.
    void EndBurst();

    /// The UEI key that `orluKey` stands for in a code set, 255 if there is none.
    std::uint32_t TranslateOrluToUEI(std::uint32_t orluKey, const std::string& codeset) const;

    KeyTiming GetKeyDelay() const { return {m_keyDelay, m_maxBlastTime}; }
    /// Both in milliseconds; no limit is checked here.
    void SetKeyDelay(std::uint32_t keyDelay, std::uint32_t maxBlastTime);

    /// The last 50 keys that went to the blaster proxy, oldest first. Each line ends in a line
    /// feed.
    std::deque<std::string> GetKeyHistory() const;
    void ClearKeyHistory() { m_keyHistory.clear(); }

private:
    /// An entry of the history; `GetKeyHistory` makes the text.
    struct SentKey {
        std::string codeset;
        std::uint32_t orluKey;
        std::uint32_t ueiKey;
        std::uint8_t flag;
    };

    void sendKey(const std::string& codeset, std::uint32_t orluKey, std::uint8_t flag,
                 const StringCallback& callback);
    void AddToHistory(SentKey key);
    bool GoesByInfrared(std::string_view codeset) const;
    bool MayBlastContinuously(std::string_view codeset) const;

    void Enter(BlastState state);
    bool TimeIsUp(std::uint32_t limit) const { return m_elapsed >= limit; }
    bool Step(BlastEvent event, std::string codeset, std::uint32_t orluKey);
    bool StepIdle(BlastEvent event, std::string codeset, std::uint32_t orluKey);
    bool StepSending(BlastEvent event);
    void StepEndWait(BlastEvent event);
    void StepDelayHeld(BlastEvent event);
    bool StepDelayReleased();

    Trellan_ServiceBlasterProxy* m_blasterProxy;
    BlastState m_blastState = BlastIdle;
    std::uint32_t m_elapsed = 0;  // milliseconds in this state
    std::shared_ptr<APTimer> m_timer;
    std::uint32_t m_key = 255;
    std::string m_codeset;
    std::uint32_t m_tick = 10;

public:
    /// Continuous blasting is allowed for every code set.
    bool m_allowContinuous = false;

private:
    std::uint32_t m_maxBlastTime = 120;
    std::uint32_t m_keyDelay = 200;
    std::deque<SentKey> m_keyHistory;
    const Trellan_ServiceCodesetHandler& m_codesets;
    StringCallback m_endCallback;
    StringCallback m_quietCallback;
};

}  // namespace TrellanService
